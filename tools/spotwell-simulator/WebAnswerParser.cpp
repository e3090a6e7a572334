// SPDX-FileCopyrightText: 2026 the spotwell developers
// SPDX-License-Identifier: MIT

#include "tools/spotwell-simulator/WebAnswerParser.h"

#include "tools/spotwell-simulator/StatementLine.h"

#include <QDir>
#include <QFile>
#include <QStringList>

#include <algorithm>
#include <utility>

namespace spotwell::simulator
{
namespace
{

constexpr double mostFiller = 1e10;
constexpr qint64 mostGzippedFiller = qint64{1} << 26;
constexpr double mostChunk = 65'536.0;
constexpr int defaultChunk = 4096;
constexpr double highestByteRate = 1e9;
constexpr qint64 mostFileBytes = qint64{1} << 26;

/// A name as HTTP wants it (RFC 9110, 5.1), as far as a scenario's bare words can say it.
QByteArray headerName(StatementLine& line)
{
    return line.keyword(QStringLiteral("a header's name")).toLatin1();
}

QByteArray oneLine(StatementLine& line)
{
    QByteArray text = line.bytes();
    if (text.contains('\r') || text.contains('\n') || text.contains('\0'))
        line.fail(QStringLiteral("the text has to be a single line"));
    return text;
}

void readExpect(StatementLine& line, WebAnswer& answer, int number)
{
    if (line.take(u"request")) {
        answer.checks.push_back({number, ExpectRequest{oneLine(line)}});
        return;
    }
    const bool present = !line.take(u"no");
    line.demand(QStringLiteral("header"));
    ExpectHeader expect{headerName(line), present, std::nullopt};
    if (present && !line.atEnd())
        expect.value = oneLine(line);
    answer.checks.push_back({number, std::move(expect)});
}

void readStatus(StatementLine& line, WebAnswer& answer)
{
    answer.status = static_cast<int>(line.number(QStringLiteral("a status"), 200, 599, true));
    if (!line.atEnd())
        answer.reason = oneLine(line);
}

void readHeader(StatementLine& line, WebAnswer& answer)
{
    // RFC 9112, 6 and 9: how long the body is and what becomes of the connection.
    static const QStringList own{QStringLiteral("content-length"), QStringLiteral("transfer-encoding"),
                                 QStringLiteral("content-encoding"), QStringLiteral("connection")};
    const QByteArray name = headerName(line);
    if (own.contains(QString::fromLatin1(name).toLower()))
        line.fail(QStringLiteral("the header \"%1\" comes by itself").arg(QString::fromLatin1(name)));
    answer.headers.push_back(name + ": " + oneLine(line));
}

void readRedirect(StatementLine& line, WebAnswer& answer)
{
    answer.status = 302;
    answer.headers.push_back("Location: " + oneLine(line));
}

void readBody(StatementLine& line, WebAnswer& answer, const QString& folder)
{
    if (!line.take(u"file")) {
        answer.parts.emplace_back(line.bytes());
        return;
    }
    QFile file{QDir{folder}.filePath(QString::fromUtf8(line.bytes()))};
    if (line.failed())
        return;
    if (!file.open(QIODevice::ReadOnly))
        return line.fail(QStringLiteral("%1: %2").arg(file.fileName(), file.errorString()));
    if (file.size() > mostFileBytes)
        return line.fail(QStringLiteral("%1: more than %2 bytes").arg(file.fileName()).arg(mostFileBytes));
    answer.parts.emplace_back(file.read(mostFileBytes));
}

void readList(StatementLine& line, WebAnswer& answer, WebFeed feed)
{
    const int rows =
        static_cast<int>(line.number(QStringLiteral("how many rows"), 0, WebFeeds::mostRows, true));
    int fresh = std::min(rows, std::max(1, rows / 10));
    if (line.take(u"new"))
        fresh = static_cast<int>(line.number(QStringLiteral("how many new ones"), 0, rows, true));
    answer.parts.emplace_back(WebList{feed, rows, fresh});
}

void readChunked(StatementLine& line, WebAnswer& answer)
{
    answer.chunk = line.atEnd() ? defaultChunk
                                : static_cast<int>(line.number(QStringLiteral("bytes"), 1, mostChunk, true));
}

void readStaySilent(StatementLine& line, WebAnswer& answer)
{
    answer.end = WebAnswer::End::silence;
    line.demand(QStringLiteral("silent"));
    if (line.take(u"for"))
        answer.silence = line.seconds();
}

/// What can be said only once.
void refuseSecond(StatementLine& line, const QString& command, bool said)
{
    if (said)
        line.fail(QStringLiteral("\"%1\" was said already").arg(command));
}

void readCommand(StatementLine& line, WebAnswer& answer, int number, const QString& folder)
{
    const QString command = line.keyword(QStringLiteral("a command"));
    if (line.failed())
        return;
    if (answer.end != WebAnswer::End::keepAlive)
        return line.fail(QStringLiteral("nothing can follow \"close\", \"reset\" or \"stay silent\""));
    if (command == u"expect")
        return readExpect(line, answer, number);
    if (command == u"wait") {
        answer.parts.emplace_back(WebPause{line.seconds()});
    } else if (command == u"status") {
        refuseSecond(line, QStringLiteral("status"), answer.status.has_value());
        readStatus(line, answer);
    } else if (command == u"redirect") {
        refuseSecond(line, QStringLiteral("status"), answer.status.has_value());
        readRedirect(line, answer);
    } else if (command == u"header") {
        readHeader(line, answer);
    } else if (command == u"body") {
        readBody(line, answer, folder);
    } else if (command == u"pota") {
        readList(line, answer, WebFeed::pota);
    } else if (command == u"dxsummit") {
        readList(line, answer, WebFeed::dxsummit);
    } else if (command == u"wsprnet") {
        readList(line, answer, WebFeed::wsprnet);
    } else if (command == u"filler") {
        answer.parts.emplace_back(WebFiller{
            static_cast<qint64>(line.number(QStringLiteral("how many bytes"), 1, mostFiller, true))});
    } else if (command == u"gzip") {
        refuseSecond(line, command, answer.gzip);
        answer.gzip = true;
    } else if (command == u"chunked") {
        refuseSecond(line, command, answer.chunk.has_value());
        readChunked(line, answer);
    } else if (command == u"drip") {
        refuseSecond(line, command, answer.rate.has_value());
        answer.rate = line.number(QStringLiteral("bytes a second"), 0.01, highestByteRate, false);
    } else if (command == u"truncate") {
        refuseSecond(line, command, answer.missing > 0);
        answer.missing =
            static_cast<qint64>(line.number(QStringLiteral("how many bytes"), 1, mostFiller, true));
    } else if (command == u"close") {
        answer.end = WebAnswer::End::close;
    } else if (command == u"reset") {
        answer.end = WebAnswer::End::reset;
    } else if (command == u"stay") {
        readStaySilent(line, answer);
    } else {
        line.fail(QStringLiteral("unknown command \"%1\"").arg(command));
    }
}

/// Whether a pause stands behind the body's beginning and before its end.
bool pausesInside(const WebAnswer& answer)
{
    const auto isPause = [](const WebAnswer::Part& part) { return std::holds_alternative<WebPause>(part); };
    const auto first = std::find_if_not(answer.parts.begin(), answer.parts.end(), isPause);
    const auto last = std::find_if_not(answer.parts.rbegin(), answer.parts.rend(), isPause).base();
    return first < last && std::any_of(first, last, isPause);
}

} // namespace

QString addToAnswer(WebAnswer& answer, const std::vector<Word>& words, int line, const QString& folder)
{
    StatementLine read{words};
    readCommand(read, answer, line, folder);
    read.finish();
    return read.error();
}

QString faultOf(const WebAnswer& answer)
{
    // RFC 9110, 15.3.5 and 15.4.5.
    const int status = answer.status.value_or(200);
    if ((status == 204 || status == 304) && answer.hasBody())
        return QStringLiteral("an answer with the status %1 has no body").arg(status);
    if (answer.gzip && pausesInside(answer))
        return QStringLiteral("nothing can be waited for inside of a gzipped body");
    qint64 filler = 0;
    for (const WebAnswer::Part& part : answer.parts) {
        if (const auto* more = std::get_if<WebFiller>(&part))
            filler += more->bytes;
    }
    if (answer.gzip && filler > mostGzippedFiller)
        return QStringLiteral("\"gzip\" takes %1 bytes of filler at most").arg(mostGzippedFiller);
    return {};
}

} // namespace spotwell::simulator
