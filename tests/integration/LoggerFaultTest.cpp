// SPDX-FileCopyrightText: 2026 the spotwell developers
// SPDX-License-Identifier: MIT

#include "tests/integration/support/ProgramFixture.h"
#include "tests/integration/support/WindowPing.h"

namespace spotwell
{
namespace
{

using namespace std::chrono_literals;

/// A logger that is not as it should be, with somebody who watches whether the window answers.
class LoggerFaultTest : public ProgramFixture
{
protected:
    static QStringList field(const char* command, const QString& first, const QString& second)
    {
        return {QString::fromLatin1(command), first, second};
    }
    static QStringList scriptOf(const QByteArray& line)
    {
        return {QStringLiteral("call"), QStringLiteral("com.tarnbrooksoftware.Scripting"),
                QStringLiteral("processSpot"), QStringLiteral("s"), QString::fromUtf8(line)};
    }
    qsizetype countOf(const QString& part) const { return entries().filter(part).size(); }
    bool saysThatItIsNotRunning(qsizetype times = 1)
    {
        return ping.answersWhile(
            [&] { return countOfEntries(QStringLiteral("Logwright is not running")) >= times; });
    }

    const QString displayName = QStringLiteral("DisplayName");
    const QString version = QStringLiteral("Version");
    WindowPing ping;
    std::unique_ptr<BusPeer> logger;
};

TEST_F(LoggerFaultTest, withAVersionThatIsNoTextIsAnOldOne)
{
    logger = makeLogger(QStringLiteral("6.45"));
    logger->command(field("number", version, QStringLiteral("6.45")));
    startConnected();
    ASSERT_TRUE(logs(QStringLiteral("appIsRunning:Logwright Version (null) is running")));
    say(spotLine(1) + "\n");
    EXPECT_EQ(next(*logger, QStringLiteral("call")), scriptOf(spotLine(1)));
    EXPECT_TRUE(ping.answers());
}

TEST_F(LoggerFaultTest, withANameThatIsNoTextDoesNotRun)
{
    logger = makeLogger(QStringLiteral("6.45"));
    logger->command(field("number", displayName, QStringLiteral("1")));
    startConnected();
    for (int line = 1; line <= 3; ++line)
        say(spotLine(line) + "\n");
    EXPECT_TRUE(saysThatItIsNotRunning(3));
    EXPECT_EQ(countOfEntries(QStringLiteral("runningApplications: ") + loggerBusName +
                             QStringLiteral(" cannot be read: it gives no DisplayName")),
              1);
}

TEST_F(LoggerFaultTest, withHugeTextsCostsNothing)
{
    const QString huge(2'000'000, QLatin1Char('0'));
    logger = makeLogger(QStringLiteral("6.45"));
    logger->command(field("text", version, QStringLiteral("6.45") + huge));
    logger->command(field("text", QStringLiteral("Other"), huge));
    startConnected();
    ASSERT_TRUE(ping.answers());
    ASSERT_TRUE(waitUntil([this] {
        say(spotLine(1) + "\n");
        return logger->count(QStringLiteral("signal")) > 0;
    }));
    EXPECT_TRUE(ping.answers());
    EXPECT_LT(home.log().size(), 100'000);
}

TEST_F(LoggerFaultTest, withAHugeNameDoesNotRun)
{
    logger = makeLogger(QStringLiteral("6.45"));
    logger->command(field("text", displayName, QString(2'000'000, QLatin1Char('x'))));
    startConnected();
    say(spotLine(1) + "\n");
    EXPECT_TRUE(saysThatItIsNotRunning());
    EXPECT_LT(home.log().size(), 100'000);
}

TEST_F(LoggerFaultTest, thatAnswersWithAnErrorIsAskedAgain)
{
    logger = makeLogger(QStringLiteral("6.45"));
    logger->command({QStringLiteral("fail"), QStringLiteral("com.example.Error"), QStringLiteral("Not now")});
    startConnected();
    say(spotLine(1) + "\n");
    EXPECT_TRUE(saysThatItIsNotRunning());
    logger->command({QStringLiteral("fail"), QString()});
    EXPECT_TRUE(ping.answersWhile([this] {
        say(spotLine(2) + "\n");
        return logger->count(QStringLiteral("signal")) > 0;
    }));
    EXPECT_EQ(countOfEntries(QStringLiteral("runningApplications: ") + loggerBusName +
                             QStringLiteral(" cannot be read: Not now")),
              1);
}

TEST_F(LoggerFaultTest, thatHangsAtTheFirstQuestionIsTakenWhenItAnswers)
{
    logger = makeLogger(QStringLiteral("6.45"));
    logger->stop();
    startConnected();
    ASSERT_TRUE(ping.answers());
    for (int line = 1; line <= 3; ++line)
        say(spotLine(line) + "\n");
    EXPECT_TRUE(saysThatItIsNotRunning(3));
    logger->resume();
    EXPECT_TRUE(ping.answersWhile([this] {
        say(spotLine(4) + "\n");
        return logger->count(QStringLiteral("signal")) > 0;
    }));
    EXPECT_EQ(countOfEntries(QStringLiteral("runningApplications: ") + loggerBusName +
                             QStringLiteral(" cannot be read: it does not answer")),
              1);
}

TEST_F(LoggerFaultTest, thatVanishesWhileItIsAskedMakesRoomForAnother)
{
    logger = makeLogger(QStringLiteral("6.45"));
    logger->stop();
    startConnected();
    say(spotLine(1) + "\n");
    EXPECT_TRUE(saysThatItIsNotRunning());
    logger->kill();
    logger = makeLogger(QStringLiteral("6.45"));
    EXPECT_TRUE(ping.answersWhile([this] {
        say(spotLine(2) + "\n");
        return logger->count(QStringLiteral("signal")) > 0;
    }));
}

TEST_F(LoggerFaultTest, thatVanishesInTheMiddleOfAScriptCostsThatLine)
{
    logger = makeLogger(QStringLiteral("6.40"));
    logger->command({QStringLiteral("hold")});
    startConnected();
    say(spotLine(1) + "\n");
    EXPECT_EQ(next(*logger, QStringLiteral("call")), scriptOf(spotLine(1)));
    say(spotLine(2) + "\n" + spotLine(3) + "\n");
    EXPECT_TRUE(ping.answers());
    logger->kill();
    EXPECT_TRUE(ping.answersWhile([this] { return countOf(QStringLiteral("AppleScript Error:")) == 1; }));
    EXPECT_TRUE(saysThatItIsNotRunning(2));
}

TEST_F(LoggerFaultTest, ofAnotherVersionIsServedAccordinglyAtTheNextLine)
{
    startConnected();
    int line = 0;
    for (const char* each : {"6.40", "6.45", "6.40"}) {
        logger = makeLogger(QString::fromLatin1(each));
        say(spotLine(++line) + "\n");
        if (QByteArray(each) == "6.45")
            EXPECT_EQ(next(*logger, QStringLiteral("signal")), notificationOf(spotLine(line)));
        else
            EXPECT_EQ(next(*logger, QStringLiteral("call")), scriptOf(spotLine(line)));
        // Its answer has left when it has answered this.
        (void)logger->count(QString());
        logger->kill();
    }
    say(spotLine(++line) + "\n");
    EXPECT_TRUE(saysThatItIsNotRunning());
    EXPECT_EQ(countOf(QStringLiteral("AppleScript Error:")), 0);
}

TEST_F(LoggerFaultTest, thatIsThereTwiceIsServedOnce)
{
    logger = makeLogger(QStringLiteral("6.40"));
    BusPeer second(bus);
    second.command(field("text", displayName, QStringLiteral("Logwright")));
    second.command(field("text", version, QStringLiteral("6.40")));
    second.command({QStringLiteral("own"), loggerBusName + QStringLiteral("Two")});
    startConnected();
    constexpr int lines = 20;
    for (int line = 1; line <= lines; ++line)
        say(spotLine(line) + "\n");
    const QString call = QStringLiteral("call");
    EXPECT_TRUE(waitUntil([&] { return logger->count(call) + second.count(call) == lines; }));
    EXPECT_TRUE(logger->count(call) == 0 || second.count(call) == 0) << "the first in the bus's list";
}

TEST_F(LoggerFaultTest, amongAThousandApplicationsIsFound)
{
    BusPeer others(bus);
    others.command(field("text", displayName, QStringLiteral("Other")));
    for (int other = 0; other < 1000; ++other)
        others.command(
            {QStringLiteral("own"), QStringLiteral("com.tarnbrooksoftware.Application.Other%1").arg(other)});
    logger = makeLogger(QStringLiteral("6.45"));
    startConnected();
    ASSERT_TRUE(ping.answers());
    ping.forget();
    constexpr int lines = 20;
    EXPECT_TRUE(ping.answersWhile([this] {
        say(spotLine(1) + "\n");
        return logger->count(QStringLiteral("signal")) > 0;
    }));
    // Those that were still under way are through when the next one has come.
    say(spotLine(2) + "\n");
    QStringList seen;
    do {
        seen = next(*logger, QStringLiteral("signal"));
    } while (seen == notificationOf(spotLine(1)));
    EXPECT_EQ(seen, notificationOf(spotLine(2)));
    for (int line = 3; line <= lines; ++line)
        say(spotLine(line) + "\n");
    EXPECT_TRUE(ping.answersWhile([this] { return logger->count(QStringLiteral("signal")) >= lines - 2; }));
}

} // namespace
} // namespace spotwell
