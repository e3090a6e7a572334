// SPDX-FileCopyrightText: 2026 the spotwell developers
// SPDX-License-Identifier: MIT

#include "tools/spotwell-simulator/StatementParser.h"

#include "tools/spotwell-simulator/StatementLine.h"

#include <utility>

namespace spotwell::simulator
{
namespace
{

constexpr Seconds defaultWithin{5.0};
constexpr Seconds defaultCut{0.05};
constexpr double mostFlood = 1e10;
constexpr double highestRate = 100'000.0;
constexpr double mostRounds = 1'000'000.0;

using What = decltype(Statement::what);

Spots parseSpots(StatementLine& line)
{
    Spots spots{};
    spots.count =
        static_cast<int>(line.number(QStringLiteral("how many spots"), 1, SpotLines::mostLines, true));
    if (line.take(u"as"))
        line.demand(QStringLiteral("fast as possible"));
    else if (line.take(u"at"))
        spots.rate = line.number(QStringLiteral("lines a second"), 0.01, highestRate, false);
    else if (!line.failed())
        line.demand(QStringLiteral("at"));
    if (line.take(u"length"))
        spots.format.length = static_cast<int>(
            line.number(QStringLiteral("characters"), SpotFormat::shortest, SpotFormat::longest, true));
    if (line.take(u"plain"))
        spots.format.comment = SpotFormat::Comment::plain;
    else if (line.take(u"stamped"))
        spots.format.comment = SpotFormat::Comment::stamped;
    return spots;
}

Flood parseFlood(StatementLine& line)
{
    Flood flood{};
    flood.bytes = static_cast<qint64>(line.number(QStringLiteral("how many bytes"), 1, mostFlood, true));
    if (line.take(u"in")) {
        line.demand(QStringLiteral("one line"));
        flood.oneLine = true;
    }
    return flood;
}

ExpectText parseExpectText(StatementLine& line, std::optional<QByteArray> bytes)
{
    ExpectText expect{std::move(bytes), std::nullopt, defaultWithin};
    if (line.take(u"after")) {
        expect.after = line.seconds();
        expect.within = *expect.after + defaultWithin;
    }
    if (line.take(u"within")) {
        expect.within = line.seconds();
        if (expect.after && expect.within <= *expect.after)
            line.fail(QStringLiteral("\"within\" has to be later than \"after\""));
    }
    return expect;
}

What parseExpect(StatementLine& line)
{
    if (line.take(u"nothing")) {
        line.demand(QStringLiteral("for"));
        return ExpectNothing{line.seconds()};
    }
    if (line.take(u"close")) {
        ExpectClose expect{defaultWithin, false};
        if (line.take(u"within"))
            expect.within = line.seconds();
        if (line.take(u"ignoring")) {
            line.demand(QStringLiteral("text"));
            expect.ignoringText = true;
        }
        return expect;
    }
    if (line.take(u"line"))
        return parseExpectText(line, std::nullopt);
    return parseExpectText(line, line.bytes());
}

StaySilent parseStaySilent(StatementLine& line)
{
    line.demand(QStringLiteral("silent"));
    StaySilent stay{};
    if (line.take(u"for"))
        stay.duration = line.seconds();
    return stay;
}

Repeat parseRepeat(StatementLine& line)
{
    Repeat repeat{};
    if (!line.take(u"forever"))
        repeat.times =
            static_cast<int>(line.number(QStringLiteral("\"forever\" or how often"), 1, mostRounds, true));
    return repeat;
}

What parseWhat(StatementLine& line)
{
    const QString command = line.keyword(QStringLiteral("a command"));
    if (command == u"send")
        return Send{line.bytes()};
    if (command == u"cut")
        return Cut{line.atEnd() ? defaultCut : line.seconds()};
    if (command == u"spots")
        return parseSpots(line);
    if (command == u"flood")
        return parseFlood(line);
    if (command == u"wait")
        return Wait{line.seconds()};
    if (command == u"expect")
        return parseExpect(line);
    if (command == u"stay")
        return parseStaySilent(line);
    if (command == u"half-close")
        return HalfClose{};
    if (command == u"close")
        return Close{};
    if (command == u"reset")
        return Reset{};
    if (command == u"repeat")
        return parseRepeat(line);
    line.fail(QStringLiteral("unknown command \"%1\"").arg(command));
    return Close{};
}

} // namespace

ParsedStatement parseStatement(const std::vector<Word>& words, int number)
{
    StatementLine line{words};
    What what = parseWhat(line);
    line.finish();
    return {{number, std::move(what)}, line.error()};
}

} // namespace spotwell::simulator
