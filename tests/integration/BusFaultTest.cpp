// SPDX-FileCopyrightText: 2026 the spotwell developers
// SPDX-License-Identifier: MIT

#include "tests/integration/support/ProgramFixture.h"
#include "tests/integration/support/WindowPing.h"

namespace spotwell
{
namespace
{

using namespace std::chrono_literals;

const QString loggerIsNotRunning = QStringLiteral("Logwright is not running");

/// Faults of the session bus, with somebody who watches whether the window answers.
class BusFaultTest : public ProgramFixture
{
protected:
    void startWithLogger()
    {
        logger = makeLogger(QStringLiteral("6.45"));
        startConnected();
        ASSERT_TRUE(ping.answers());
        say(spotLine(1) + "\n");
        ASSERT_EQ(next(*logger, QStringLiteral("signal")), notificationOf(spotLine(1)));
        ping.forget();
    }
    /// Sends new lines, one at a time, until the logger has one of them.
    bool isDeliveredAgain()
    {
        return waitUntil(
            [this] {
                say(spotLine(++number) + "\n");
                return logger->count(QStringLiteral("signal")) > 0;
            },
            60s);
    }
    bool logsSome(const QString& text)
    {
        return ping.answersWhile([&] { return countOfEntries(text) > 0; });
    }
    qsizetype countOf(const QString& part) const { return entries().filter(part).size(); }
    /// Before it goes on: a bus that comes back slowly is a hung one again.
    void expectOneWordOfTheHungBus() const
    {
        EXPECT_EQ(countOfEntries(QStringLiteral("runningApplications: the session bus does not answer")), 1);
    }

    WindowPing ping;
    std::unique_ptr<BusPeer> logger;
    int number = 100;
};

TEST_F(BusFaultTest, aBusThatIsAbsentAtTheStartIsUsedWhenItComes)
{
    bus.kill();
    startConnected();
    ASSERT_TRUE(ping.answers());
    say(spotLine(1) + "\n");
    EXPECT_TRUE(logsSome(loggerIsNotRunning));
    bus.start();
    logger = makeLogger(QStringLiteral("6.45"));
    EXPECT_TRUE(isDeliveredAgain());
    EXPECT_EQ(countOf(QStringLiteral("SessionBus: the session bus accepts no connection: ")) +
                  countOf(QStringLiteral("SessionBus: no session bus: ")),
              1);
    EXPECT_EQ(countOfEntries(QStringLiteral("SessionBus: the session bus is back")), 1);
}

TEST_F(BusFaultTest, aBusThatIsGoneForGoodCostsTheLinesOnly)
{
    startWithLogger();
    bus.kill();
    for (int lost = 2; lost <= 4; ++lost) {
        say(spotLine(lost) + "\n");
        EXPECT_TRUE(ping.answersWhile([&] { return countOfEntries(loggerIsNotRunning) >= lost - 1; }));
    }
    say("login: ");
    EXPECT_TRUE(hears("N0CALL\n"));
    EXPECT_EQ(countOf(QStringLiteral("SessionBus: the session bus is gone: ")), 1);
}

TEST_F(BusFaultTest, aBusThatIsRestartedManyTimesIsUsedEachTime)
{
    startWithLogger();
    for (int restarts = 1; restarts <= 3; ++restarts) {
        bus.kill();
        logger.reset();
        say(spotLine(++number) + "\n");
        EXPECT_TRUE(ping.answersWhile(
            [&] { return countOf(QStringLiteral("SessionBus: the session bus is gone: ")) == restarts; }));
        bus.start();
        logger = makeLogger(QStringLiteral("6.45"));
        ASSERT_TRUE(isDeliveredAgain());
        ASSERT_TRUE(logs(QStringLiteral("SessionBus: the session bus is back"), restarts));
    }
}

TEST_F(BusFaultTest, aBusThatHangsBeforeTheStartHoldsTheWindowForAMomentOnly)
{
    bus.stop();
    startConnected();
    ASSERT_TRUE(ping.answers());
    say(spotLine(1) + "\n");
    EXPECT_TRUE(logsSome(loggerIsNotRunning));
    expectOneWordOfTheHungBus();
    bus.resume();
    logger = makeLogger(QStringLiteral("6.45"));
    EXPECT_TRUE(isDeliveredAgain());
    EXPECT_TRUE(program->standardError().contains(
        "LinuxPlatform: the session bus does not answer; the window goes without it"));
}

TEST_F(BusFaultTest, aBusThatHangsBeforeTheFirstLineIsWaitedForByNobodyAtTheWindow)
{
    logger = makeLogger(QStringLiteral("6.45"));
    startConnected();
    ASSERT_TRUE(ping.answers());
    bus.stop();
    ping.forget();
    say(spotLine(1) + "\n");
    EXPECT_TRUE(logsSome(loggerIsNotRunning));
    EXPECT_TRUE(ping.answers());
    expectOneWordOfTheHungBus();
    bus.resume();
    EXPECT_TRUE(isDeliveredAgain());
}

TEST_F(BusFaultTest, aBusThatHangsUnderLoadCostsTheLinesOfThatTime)
{
    startWithLogger();
    bus.stop();
    const auto lost = [this] { return countOfEntries(loggerIsNotRunning); };
    constexpr int lines = 200;
    for (int line = 0; line < lines; ++line)
        say(spotLine(++number) + "\n");
    // Over a look for the bulb, which comes every five seconds.
    const auto later = std::chrono::steady_clock::now() + 6s;
    EXPECT_TRUE(
        ping.answersWhile([&] { return lost() == lines && std::chrono::steady_clock::now() >= later; }));
    expectOneWordOfTheHungBus();
    bus.resume();
    EXPECT_TRUE(isDeliveredAgain());
    EXPECT_EQ(countOf(QStringLiteral("SessionBus: ")), 0);
}

TEST_F(BusFaultTest, aBusThatHangsDoesNotHoldTheEnd)
{
    startWithLogger();
    bus.stop();
    for (int line = 0; line < 50; ++line)
        say(spotLine(++number) + "\n");
    EXPECT_TRUE(ping.answers());
    endAtOnce();
    bus.resume();
}

} // namespace
} // namespace spotwell
