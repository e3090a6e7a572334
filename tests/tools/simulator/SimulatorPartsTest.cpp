// SPDX-FileCopyrightText: 2026 the spotwell developers
// SPDX-License-Identifier: MIT

#include "tools/spotwell-simulator/Cursor.h"
#include "tools/spotwell-simulator/Inbox.h"
#include "tools/spotwell-simulator/Pace.h"
#include "tools/spotwell-simulator/Report.h"

#include <QJsonDocument>
#include <QJsonObject>
#include <gtest/gtest.h>

namespace spotwell::simulator
{
namespace
{

using namespace std::chrono_literals;
using Match = Inbox::Match;

TEST(Pace, givesEveryItemItsOwnMoment)
{
    const struct {
        double rate;
        double elapsed;
        qint64 due;
    } cases
        []{
            {10, -1, 1},    {10, 0, 1},    {10, 0.099, 1},    {10, 0.1, 2},
            {10, 0.199, 2}, {10, 0.3, 4},  {1000, 60, 60001}, {1000, 0.001, 2},
            {0.5, 1.9, 1},  {0.5, 2.0, 2}, {200, 5.0, 1001}, // after a long pause all that is late is due
                                                             // together
        };
    for (const auto& c : cases)
        EXPECT_EQ(Pace{c.rate}.dueCount(Seconds{c.elapsed}), c.due) << c.rate << " at " << c.elapsed;
}

TEST(Pace, doesNotDrift)
{
    for (const double rate : {3.0, 7.0, 10.0, 200.0, 999.9}) {
        const Pace pace{rate};
        for (qint64 index = 1; index < 100'000; index += 997) {
            EXPECT_EQ(pace.dueCount(pace.dueAt(index)), index + 1) << rate;
            EXPECT_EQ(pace.dueCount(pace.dueAt(index) - Seconds{1e-6}), index) << rate;
        }
        EXPECT_DOUBLE_EQ(pace.dueAt(1'000'000).count(), 1'000'000 / rate);
    }
}

TEST(Inbox, comparesInOrder)
{
    const Moment start{};
    Inbox inbox;
    EXPECT_EQ(inbox.compare("ab").match, Match::waiting);
    inbox.add("a", start + 1s);
    EXPECT_EQ(inbox.compare("ab").match, Match::waiting);
    EXPECT_EQ(inbox.compare("b").match, Match::different);
    inbox.add({}, start + 2s);
    inbox.add("b\nc", start + 3s);
    const Inbox::Comparison found = inbox.compare("ab");
    EXPECT_EQ(found.match, Match::matched);
    EXPECT_EQ(found.length, 2);
    EXPECT_EQ(found.at, start + 3s);
    EXPECT_EQ(inbox.compare("a").at, start + 1s);
    EXPECT_EQ(inbox.compare("ac").match, Match::different);

    EXPECT_EQ(inbox.compareLine().length, 3);
    inbox.take(3);
    EXPECT_EQ(inbox.bytes(), "c");
    EXPECT_EQ(inbox.compareLine().match, Match::waiting);
    inbox.add("\n", start + 4s);
    EXPECT_EQ(inbox.compare("c").at, start + 3s);
    EXPECT_EQ(inbox.compareLine().at, start + 4s);
    inbox.clear();
    EXPECT_TRUE(inbox.isEmpty());
}

TEST(Cursor, goesInAndOutOfRepetitions)
{
    const auto parsed = parseScenario(
        "send \"1\"\nrepeat 2\nsend \"2\"\nrepeat 2\nsend \"3\"\nend\nend\nsend \"4\"\n", u"test"_qs);
    const Scenario& scenario = std::get<Scenario>(parsed);
    Cursor cursor{scenario.session(1)};
    QByteArray way;
    while (const Statement* statement = cursor.current()) {
        if (const auto* repeat = std::get_if<Repeat>(&statement->what)) {
            cursor.enter(*repeat);
            continue;
        }
        way += std::get<Send>(statement->what).bytes;
        cursor.next(true);
    }
    EXPECT_EQ(way, "12332334");
}

TEST(Cursor, endsRepetitionsWithTheirRound)
{
    const auto parsed =
        parseScenario("repeat forever\nsend \"1\"\nsend \"2\"\nend\nsend \"3\"\n", u"test"_qs);
    Cursor cursor{std::get<Scenario>(parsed).session(1)};
    cursor.enter(std::get<Repeat>(cursor.current()->what));
    for (int round = 0; round < 5; ++round) {
        EXPECT_EQ(std::get<Send>(cursor.current()->what).bytes, "1");
        cursor.next(true);
        EXPECT_EQ(std::get<Send>(cursor.current()->what).bytes, "2");
        cursor.next(round < 4);
    }
    EXPECT_EQ(std::get<Send>(cursor.current()->what).bytes, "3");
}

TEST(Event, isOneLineOfJson)
{
    const Event event = Event{"check", Moment{12'345'678us}}
                            .with("what", QStringLiteral("a \"b\" \\ \n é \U0001F4E1"))
                            .with("count", qint64{-7})
                            .with("after", Seconds{0.9});
    EXPECT_EQ(event.line(), "{\"event\":\"check\",\"t\":12.345678,"
                            "\"what\":\"a \\\"b\\\" \\\\ \\u000a \\u00e9 \\ud83d\\udce1\","
                            "\"count\":-7,\"after\":0.900000}\n");
    const QJsonObject object = QJsonDocument::fromJson(event.line()).object();
    EXPECT_EQ(object[u"what"_qs].toString(), u"a \"b\" \\ \n é \U0001F4E1"_qs);
}

} // namespace
} // namespace spotwell::simulator
