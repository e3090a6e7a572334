// SPDX-FileCopyrightText: 2026 the spotwell developers
// SPDX-License-Identifier: MIT

#include "tests/integration/support/ProgramFixture.h"
#include "tests/integration/support/RunningSimulator.h"

namespace spotwell
{
namespace
{

const QString notRunning = QStringLiteral("Logwright is not running");

class DeliveryTest : public ProgramFixture
{
protected:
    void startWithLogger(const QString& version)
    {
        logger = makeLogger(version);
        startConnected();
        ASSERT_TRUE(logs(QStringLiteral("appIsRunning:Logwright Version %1 is running").arg(version)));
    }
    static QStringList callOf(const QByteArray& text)
    {
        return {QStringLiteral("call"), QStringLiteral("com.tarnbrooksoftware.Scripting"),
                QStringLiteral("processSpot"), QStringLiteral("s"), QString::fromUtf8(text)};
    }

    std::unique_ptr<BusPeer> logger;
};

TEST_F(DeliveryTest, postsLinesOfSeventyFiveCharactersInOrder)
{
    startWithLogger(QStringLiteral("6.45"));
    say(spotLine(1) + "\r\n" + spotLine(2, 74) + "\r\n" + spotLine(3, 76) + "\r\n" +
        spotLine(4).replace("DX de", "dx de") + "\r\n To ALL: " + spotLine(5) + "\r\n" + spotLine(6) +
        "\r\n");
    EXPECT_EQ(logger->next().value(0), QStringLiteral("GetAll"));
    for (const QByteArray& line : {spotLine(1), spotLine(3, 76), spotLine(6)})
        EXPECT_EQ(logger->next(), notificationOf(line));
    EXPECT_EQ(logger->count(QStringLiteral("signal")), 0);
    EXPECT_EQ(countOfEntries(notRunning), 0);
}

TEST_F(DeliveryTest, losesNothingOfTwoHundredLinesASecond)
{
    logger = makeLogger(QStringLiteral("6.45"));
    RunningSimulator simulator(
        {QStringLiteral("--set"), QStringLiteral("count=600"), QStringLiteral("contest")});
    home.writeSettings(settingsFor(simulator.port()));
    start();
    for (int number = 1; number <= 600; ++number) {
        const QStringList seen = next(*logger, QStringLiteral("signal"));
        ASSERT_EQ(seen.size(), 9) << "line " << number;
        const QString line = seen[7].mid(13);
        EXPECT_EQ(line.size(), 75);
        EXPECT_EQ(line.mid(39, 8), QStringLiteral("#%1").arg(number, 7, 10, QLatin1Char('0')));
    }
    EXPECT_EQ(logger->count(QStringLiteral("signal")), 0);
}

TEST_F(DeliveryTest, asksAnOlderLoggerToProcessTheEscapedLine)
{
    startWithLogger(QStringLiteral("6.44"));
    say(spotLine(1).replace("CQ up 2", "a\\b'c\"d") + "\n" + spotLine(2) + "\n");
    EXPECT_EQ(next(*logger, QStringLiteral("call")), callOf(spotLine(1).replace("CQ up 2", "a.b.c.d")));
    EXPECT_EQ(next(*logger, QStringLiteral("call")), callOf(spotLine(2)));
    EXPECT_EQ(logger->count(QStringLiteral("signal")), 0);
}

TEST_F(DeliveryTest, postsTheLineUnescapedToANewerLogger)
{
    startWithLogger(QStringLiteral("6.45"));
    const QByteArray line = spotLine(1).replace("CQ up 2", "a\\b'c\"d");
    say(line + "\n");
    EXPECT_EQ(next(*logger, QStringLiteral("signal")), notificationOf(line));
    EXPECT_EQ(logger->count(QStringLiteral("call")), 0);
}

TEST_F(DeliveryTest, saysWhenALoggerRefusesAScript)
{
    startWithLogger(QStringLiteral("6.44"));
    logger->command({QStringLiteral("fail"), QStringLiteral("com.tarnbrooksoftware.Error.Refused"),
                     QStringLiteral("No log is open, 100% sure.")});
    say(spotLine(1) + "\n");
    EXPECT_TRUE(logs(QStringLiteral("AppleScript Error:No log is open, 100% sure.")));
    logger->command({QStringLiteral("fail"), QString()});
    say(spotLine(2) + "\n");
    EXPECT_EQ(next(*logger, QStringLiteral("call")), callOf(spotLine(1)));
    EXPECT_EQ(next(*logger, QStringLiteral("call")), callOf(spotLine(2)));
}

TEST_F(DeliveryTest, seesALoggerComeAndGoAtTheNextLine)
{
    startConnected();
    say(spotLine(1) + "\n");
    ASSERT_TRUE(logs(notRunning));
    logger = makeLogger(QStringLiteral("7"));
    say(spotLine(2) + "\n");
    EXPECT_EQ(next(*logger, QStringLiteral("signal")), notificationOf(spotLine(2)));
    logger->command({QStringLiteral("release"), loggerBusName});
    say(spotLine(3) + "\n");
    EXPECT_TRUE(logs(notRunning, 2));
    logger->command({QStringLiteral("own"), loggerBusName});
    say(spotLine(4) + "\n");
    EXPECT_EQ(next(*logger, QStringLiteral("signal")), notificationOf(spotLine(4)));
    logger->kill();
    logger = makeLogger(QStringLiteral("6.44"));
    say(spotLine(5) + "\n");
    EXPECT_EQ(next(*logger, QStringLiteral("call")), callOf(spotLine(5)));
    EXPECT_EQ(countOfEntries(notRunning), 2);
}

} // namespace
} // namespace spotwell
