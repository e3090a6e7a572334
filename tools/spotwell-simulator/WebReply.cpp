// SPDX-FileCopyrightText: 2026 the spotwell developers
// SPDX-License-Identifier: MIT

#include "tools/spotwell-simulator/WebReply.h"

#include "tools/spotwell-simulator/SpotLines.h"

#include <QtEndian>

#include <algorithm>
#include <array>
#include <utility>

namespace spotwell::simulator
{
namespace
{

using Steps = std::vector<WebReply::Step>;

QByteArray reasonOf(int status)
{
    constexpr std::array<std::pair<int, const char*>, 12> reasons{{{200, "OK"},
                                                                   {204, "No Content"},
                                                                   {301, "Moved Permanently"},
                                                                   {302, "Found"},
                                                                   {304, "Not Modified"},
                                                                   {307, "Temporary Redirect"},
                                                                   {400, "Bad Request"},
                                                                   {403, "Forbidden"},
                                                                   {404, "Not Found"},
                                                                   {500, "Internal Server Error"},
                                                                   {502, "Bad Gateway"},
                                                                   {503, "Service Unavailable"}}};
    const auto* const found = std::find_if(reasons.begin(), reasons.end(),
                                           [&](const auto& entry) { return entry.first == status; });
    return found == reasons.end() ? QByteArray{"Status"} : QByteArray{found->second};
}

/// What kind of text a body is, where it says so by itself.
QByteArray typeOf(const WebAnswer& answer)
{
    const bool isSaid =
        std::any_of(answer.headers.begin(), answer.headers.end(),
                    [](const QByteArray& header) { return header.toLower().startsWith("content-type:"); });
    for (const WebAnswer::Part& part : answer.parts) {
        const auto* list = std::get_if<WebList>(&part);
        if (list && !isSaid)
            return list->feed == WebFeed::wsprnet ? "text/html; charset=utf-8" : "application/json";
    }
    return {};
}

bool isPause(const WebReply::Step& step)
{
    return std::holds_alternative<WebPause>(step.what);
}

qint64 lengthOf(const WebReply::Step& step)
{
    if (const auto* bytes = std::get_if<QByteArray>(&step.what))
        return bytes->size();
    const auto* filler = std::get_if<WebFiller>(&step.what);
    return filler ? filler->bytes : 0;
}

qint64 lengthOf(const Steps& steps)
{
    qint64 sum = 0;
    for (const WebReply::Step& step : steps)
        sum += lengthOf(step);
    return sum;
}

/// The pauses and the body, nothing of it packed.
Steps plainSteps(const WebAnswer& answer, WebFeeds& feeds, TimePoint now)
{
    Steps steps;
    for (const WebAnswer::Part& part : answer.parts) {
        WebReply::Step& step = steps.emplace_back();
        if (const auto* pause = std::get_if<WebPause>(&part))
            step.what = *pause;
        else if (const auto* list = std::get_if<WebList>(&part))
            step.what = feeds.next(list->feed, list->rows, list->fresh, now);
        else if (const auto* filler = std::get_if<WebFiller>(&part))
            step.what = *filler;
        else
            step.what = std::get<QByteArray>(part);
        step.isBody = !isPause(step);
    }
    return steps;
}

/// The same with the whole body in one gzipped piece, at the place of its beginning.
Steps gzippedSteps(const Steps& plain)
{
    QByteArray body;
    Steps steps;
    std::size_t place = 0;
    for (const WebReply::Step& step : plain) {
        if (isPause(step)) {
            steps.push_back(step);
            place += body.isEmpty() ? 1 : 0;
        } else if (const auto* bytes = std::get_if<QByteArray>(&step.what)) {
            body += *bytes;
        } else {
            for (qint64 left = lengthOf(step), taken = 0; left > 0; left -= taken)
                body += fillerBytes(left, std::nullopt, &taken);
        }
    }
    steps.insert(steps.begin() + static_cast<std::ptrdiff_t>(place), {gzipped(body), true});
    return steps;
}

/// Takes the last `missing` bytes of the body away.
void cutOff(Steps& steps, qint64 missing)
{
    for (auto step = steps.rbegin(); step != steps.rend() && missing > 0; ++step) {
        const qint64 less = std::min(missing, lengthOf(*step));
        missing -= less;
        if (auto* bytes = std::get_if<QByteArray>(&step->what))
            bytes->chop(less);
        else if (auto* filler = std::get_if<WebFiller>(&step->what))
            filler->bytes -= less;
    }
}

QByteArray chunkOf(QByteArrayView bytes)
{
    return QByteArray::number(bytes.size(), 16) + "\r\n" + bytes.toByteArray() + "\r\n";
}

/// Cuts what is not filler, which is cut on its way out, into chunks (RFC 9112, 7.1).
void cutIntoChunks(Steps& steps, int chunk)
{
    for (WebReply::Step& step : steps) {
        auto* bytes = std::get_if<QByteArray>(&step.what);
        if (!bytes)
            continue;
        QByteArray framed;
        for (qsizetype start = 0; start < bytes->size(); start += chunk)
            framed += chunkOf(
                QByteArrayView{*bytes}.sliced(start, std::min<qsizetype>(chunk, bytes->size() - start)));
        *bytes = framed;
    }
}

} // namespace

WebReply makeReply(const WebAnswer& answer, const WebRequest& request, WebFeeds& feeds, TimePoint now)
{
    WebReply reply;
    Steps body = plainSteps(answer, feeds, now);
    reply.keepsOpen = answer.end == WebAnswer::End::keepAlive && answer.missing == 0 && request.keepsAlive();
    if (!answer.saysSomething()) {
        reply.steps = std::move(body);
        return reply;
    }
    reply.status = answer.status.value_or(200);
    if (answer.gzip)
        body = gzippedSteps(body);
    // HTTP/1.0 knows no chunks.
    if (request.minorVersion == 1)
        reply.chunk = answer.chunk;

    QByteArray head = "HTTP/1.1 " + QByteArray::number(reply.status) + ' ' +
                      (answer.reason.isEmpty() ? reasonOf(reply.status) : answer.reason) + "\r\n";
    if (const QByteArray type = typeOf(answer); !type.isEmpty())
        head += "Content-Type: " + type + "\r\n";
    for (const QByteArray& header : answer.headers)
        head += header + "\r\n";
    if (answer.gzip)
        head += "Content-Encoding: gzip\r\n";
    if (reply.chunk)
        head += "Transfer-Encoding: chunked\r\n";
    else if (reply.status != 204 && reply.status != 304)
        head += "Content-Length: " + QByteArray::number(lengthOf(body)) + "\r\n";
    if (!request.keepsAlive() || answer.end == WebAnswer::End::close)
        head += "Connection: close\r\n";
    head += "\r\n";

    if (answer.missing > 0)
        cutOff(body, answer.missing);
    if (reply.chunk) {
        cutIntoChunks(body, *reply.chunk);
        if (answer.missing == 0)
            body.push_back({QByteArray{"0\r\n\r\n"}, true});
    }
    if (request.method == "HEAD")
        std::erase_if(body, [](const WebReply::Step& step) { return !isPause(step); });
    // What is waited for in front of the body is waited for in front of the head.
    const auto first = std::find_if_not(body.begin(), body.end(), isPause);
    body.insert(first, {std::move(head), false});
    reply.steps = std::move(body);
    return reply;
}

QByteArray badRequestReply()
{
    return "HTTP/1.1 400 Bad Request\r\nContent-Length: 0\r\nConnection: close\r\n\r\n";
}

QByteArray fillerBytes(qint64 left, std::optional<int> chunk, qint64* taken)
{
    constexpr qint64 most = qint64{64} * 80;
    *taken = std::min({left, most, qint64{chunk.value_or(most)}});
    QByteArray bytes;
    for (int line = 1; bytes.size() < *taken; ++line)
        bytes += floodLine(line);
    bytes.truncate(*taken);
    return chunk ? chunkOf(bytes) : bytes;
}

QByteArray gzipped(const QByteArray& body)
{
    // What qCompress gives is four bytes of length, two of a zlib header, the deflated bytes and four of a
    // sum. Of nothing it makes nothing; an empty block is that deflated.
    const QByteArray packed = qCompress(body);
    const QByteArray deflated = body.isEmpty() ? QByteArray("\x03\0", 2) : packed.mid(6, packed.size() - 10);
    quint32 sum = 0xFFFFFFFF;
    std::array<quint32, 256> table;
    for (quint32 index = 0; index < table.size(); ++index) {
        quint32 value = index;
        for (int bit = 0; bit < 8; ++bit)
            value = (value & 1) != 0 ? 0xEDB88320 ^ (value >> 1) : value >> 1;
        table[index] = value;
    }
    for (const char byte : body)
        sum = table[(sum ^ static_cast<unsigned char>(byte)) & 0xFF] ^ (sum >> 8);
    std::array<quint32, 2> trailer{qToLittleEndian(~sum), qToLittleEndian(static_cast<quint32>(body.size()))};
    return QByteArray("\x1F\x8B\x08\0\0\0\0\0\0\xFF", 10) + deflated +
           QByteArray(reinterpret_cast<const char*>(trailer.data()), sizeof trailer);
}

} // namespace spotwell::simulator
