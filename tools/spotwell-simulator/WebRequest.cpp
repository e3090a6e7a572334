// SPDX-FileCopyrightText: 2026 the spotwell developers
// SPDX-License-Identifier: MIT

#include "tools/spotwell-simulator/WebRequest.h"

#include <QList>

#include <algorithm>

namespace spotwell::simulator
{
namespace
{

bool isToken(QByteArrayView text)
{
    static constexpr QByteArrayView others = "!#$%&'*+-.^_`|~";
    return !text.isEmpty() && std::all_of(text.begin(), text.end(), [](char character) {
        return (character >= 'a' && character <= 'z') || (character >= 'A' && character <= 'Z') ||
               (character >= '0' && character <= '9') || others.contains(character);
    });
}

bool isVisible(QByteArrayView text)
{
    return !text.isEmpty() && std::all_of(text.begin(), text.end(), [](char character) {
        return character > 0x20 && character < 0x7F;
    });
}

/// Where the head ends, the empty line included; -1 while it does not.
qsizetype endOfHead(const QByteArray& bytes, qsizetype start)
{
    for (qsizetype feed = bytes.indexOf('\n', start); feed >= 0; feed = bytes.indexOf('\n', feed + 1)) {
        const QByteArrayView rest = QByteArrayView{bytes}.sliced(feed + 1);
        if (rest.startsWith("\r\n"))
            return feed + 3;
        if (rest.startsWith('\n'))
            return feed + 2;
    }
    return -1;
}

QString readRequestLine(const QByteArray& line, WebRequest& request)
{
    const QList<QByteArray> words = line.split(' ');
    if (words.size() != 3 || !isToken(words[0]) || !isVisible(words[1]))
        return QStringLiteral("the request line is not a method, a target and a version");
    if (words[2] != "HTTP/1.1" && words[2] != "HTTP/1.0")
        return QStringLiteral("the version is neither HTTP/1.1 nor HTTP/1.0");
    request.method = words[0];
    request.target = words[1];
    request.minorVersion = words[2].endsWith('1') ? 1 : 0;
    return {};
}

QString readHead(const QByteArray& head, WebRequest& request)
{
    QList<QByteArray> lines = head.split('\n');
    for (QByteArray& line : lines) {
        if (line.endsWith('\r'))
            line.chop(1);
    }
    QString fault = readRequestLine(lines.takeFirst(), request);
    for (const QByteArray& line : lines) {
        if (!fault.isNull() || line.isEmpty())
            break;
        const qsizetype colon = line.indexOf(':');
        if (!isToken(QByteArrayView{line}.first(std::max<qsizetype>(colon, 0))))
            fault = QStringLiteral("a header line has no name");
        else
            request.headers.emplace_back(line.left(colon), line.mid(colon + 1).trimmed());
    }
    return fault;
}

/// The length of the body that the head announces; sets `fault` when it cannot be known.
qsizetype bodyLength(const WebRequest& request, QString& fault)
{
    if (request.header("Transfer-Encoding"))
        fault = QStringLiteral("the length of its body is not announced");
    const auto text = request.header("Content-Length");
    if (!text || !fault.isNull())
        return 0;
    bool valid = false;
    const uint length = text->toUInt(&valid);
    if (!valid)
        fault = QStringLiteral("its Content-Length is no number");
    else if (length > WebRequest::longestBody)
        fault = QStringLiteral("its body has more than %1 bytes").arg(WebRequest::longestBody);
    return length;
}

} // namespace

std::optional<QByteArray> WebRequest::header(const QByteArray& name) const
{
    const auto found = std::find_if(headers.begin(), headers.end(), [&](const auto& candidate) {
        return candidate.first.compare(name, Qt::CaseInsensitive) == 0;
    });
    return found == headers.end() ? std::nullopt : std::optional{found->second};
}

bool WebRequest::keepsAlive() const
{
    return minorVersion == 1 && header("Connection").value_or(QByteArray{}).toLower() != "close";
}

ReadRequest readRequest(const QByteArray& bytes)
{
    // Empty lines in front of a request are nothing (RFC 9112, 2.2).
    qsizetype start = 0;
    while (start < bytes.size() && (bytes[start] == '\r' || bytes[start] == '\n'))
        ++start;
    const qsizetype end = endOfHead(bytes, start);
    if ((end < 0 ? bytes.size() : end) > WebRequest::longestHead)
        return {std::nullopt, QStringLiteral("its head has more than %1 bytes").arg(WebRequest::longestHead)};
    if (end < 0)
        return {};
    WebRequest request;
    QString fault = readHead(bytes.mid(start, end - start), request);
    if (fault.isNull() && request.minorVersion == 1 && !request.header("Host"))
        fault = QStringLiteral("it names no host");
    const qsizetype body = fault.isNull() ? bodyLength(request, fault) : 0;
    if (!fault.isNull())
        return {std::nullopt, fault};
    request.size = end + body;
    if (bytes.size() < request.size)
        return {};
    return {std::move(request), {}};
}

} // namespace spotwell::simulator
