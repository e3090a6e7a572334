// SPDX-FileCopyrightText: 2026 the spotwell developers
// SPDX-License-Identifier: MIT

#include "tests/integration/support/ProgramFixture.h"

namespace spotwell
{
namespace
{

using namespace std::chrono_literals;

/// Faults of the session bus, seen from the node: it is answered in time, and its lines find their way again.
class NodeDuringBusFaultTest : public ProgramFixture
{
protected:
    qsizetype countAboutTheBus() const
    {
        return entries().filter(QStringLiteral("bus"), Qt::CaseInsensitive).size();
    }
    /// The node asks for callsign and password and gets both in time.
    void login()
    {
        const Moment asked = say("login: ");
        const auto answered = hears("N0CALL\n");
        ASSERT_TRUE(answered);
        EXPECT_GE(*answered - asked, 1s);
        EXPECT_LT(*answered - asked, 1s + 1s * slowness);
        const Moment askedAgain = say("password: ");
        const auto answeredAgain = hears("N0CALL\nsecret\n");
        ASSERT_TRUE(answeredAgain);
        EXPECT_GE(*answeredAgain - askedAgain, 2s);
        EXPECT_LT(*answeredAgain - askedAgain, 2s + 1s * slowness);
    }
};

TEST_F(NodeDuringBusFaultTest, worksWithoutABus)
{
    bus.kill();
    startConnected();
    login();
    say(spotLine(1) + "\n" + spotLine(2) + "\n");
    EXPECT_TRUE(logs(QStringLiteral("Logwright is not running"), 2));
    end();
    EXPECT_EQ(countAboutTheBus(), 1);
    EXPECT_TRUE(hears("N0CALL\nsecret\nquit\n"));
}

TEST_F(NodeDuringBusFaultTest, usesABusThatComesBack)
{
    auto logger = makeLogger(QStringLiteral("6.45"));
    startConnected();
    // It asks a logger who he is once the bus has accepted it.
    ASSERT_FALSE(next(*logger, QStringLiteral("GetAll")).isEmpty());
    bus.kill();
    say(spotLine(1) + "\n");
    ASSERT_TRUE(logs(QStringLiteral("Logwright is not running")));
    bus.start();
    logger = makeLogger(QStringLiteral("6.45"));
    int number = 1;
    ASSERT_TRUE(waitUntil([&] {
        say(spotLine(++number) + "\n");
        return logger->count(QStringLiteral("signal")) > 0;
    }));
    EXPECT_EQ(entries().filter(QStringLiteral("SessionBus: the session bus is gone")).size(), 1);
    EXPECT_EQ(countOfEntries(QStringLiteral("SessionBus: the session bus is back")), 1);
}

TEST_F(NodeDuringBusFaultTest, answersPromptsWhileTheBusHangs)
{
    const auto logger = makeLogger(QStringLiteral("6.45"));
    startConnected();
    say(spotLine(1) + "\n");
    ASSERT_EQ(next(*logger, QStringLiteral("signal")), notificationOf(spotLine(1)));
    bus.stop();
    QByteArray spots;
    for (int number = 0; number < 20; ++number)
        spots += spotLine(number) + "\r\n";
    say(spots);
    login();
    bus.resume();
}

} // namespace
} // namespace spotwell
