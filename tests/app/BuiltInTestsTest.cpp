// SPDX-FileCopyrightText: 2026 the spotwell developers
// SPDX-License-Identifier: MIT

#include "app/BuiltInTests.h"

#include "platform/linux/IcuTextConverter.h"
#include "tests/app/FakeProgram.h"

#include <gtest/gtest.h>

namespace spotwell
{

namespace
{

const QString testLine =
    QStringLiteral("DX de N0CALL:    21205.0  X1X          up\"Tks so Much\"GL Team!!       1428Z JN34");

} // namespace

TEST(BuiltInTests, TheLineHasEightyCharacters)
{
    FakeLog log;
    const QString line = builtInTestLine(IcuTextConverter(), log);
    EXPECT_EQ(line, testLine);
    EXPECT_EQ(line.size(), 80);
    EXPECT_TRUE(log.lines.isEmpty());
}

TEST(BuiltInTests, TheLineReachesAnOlderLoggerWithFullStops)
{
    FakeProgram program;
    program.launch();
    program.applications.add(loggerName(), QStringLiteral("6.44"));
    program.delegate.testSendSpotLine();
    EXPECT_EQ(program.scripts.scripts,
              QStringList{QStringLiteral(
                  "Tell application \"Logwright\"\nprocessSpot \"DX de N0CALL:    21205.0  X1X     "
                  "     up.Tks so Much.GL Team!!       1428Z JN34\"\nend tell\n")});
}

TEST(BuiltInTests, TheLineReachesANewerLoggerAsItIs)
{
    FakeProgram program;
    program.launch();
    program.applications.add(loggerName(), QStringLiteral("6.45"));
    program.delegate.testSendSpotLine();
    ASSERT_EQ(program.center.posted.size(), 1U);
    EXPECT_EQ(program.center.posted[0].userInfo,
              (UserInfo{{QStringLiteral("line"), testLine}, {QStringLiteral("source"), QString()}}))
        << "before any connection there is no source";
    program.window.dxcluster->setText(QStringLiteral("dxc.example.org"));
    program.window.connected->click();
    program.delegate.testSendSpotLine();
    EXPECT_EQ(program.center.posted.back().userInfo[1].second,
              UserInfoValue(QStringLiteral("dxc.example.org")));
}

TEST(BuiltInTests, TheSpotIsShownAndPosted)
{
    FakeProgram program;
    program.launch();
    program.delegate.testSendSpot();
    EXPECT_EQ(
        program.console().last(),
        QStringLiteral("test DX de N0CALL     21205.0  X1X          Tks so Much GL Team!!!!!!!!!!! 0905Z"));
    ASSERT_EQ(program.center.posted.size(), 1U);
    EXPECT_EQ(program.center.posted[0].name, QStringLiteral("com.tarnbrooksoftware.spotwell_spot"));
    EXPECT_EQ(program.center.posted[0].userInfo,
              (UserInfo{{QStringLiteral("combinedCallsign"), QStringLiteral("X1X")},
                        {QStringLiteral("timestamp"), program.clock.time},
                        {QStringLiteral("megahertz"), 21.205},
                        {QStringLiteral("comments"), QStringLiteral("Tks so Much GL Team!!!!!!!!!!!!!")},
                        {QStringLiteral("source"), QStringLiteral("Test")},
                        {QStringLiteral("dxde_call"), QStringLiteral("N0CALL")}}));
}

} // namespace spotwell
