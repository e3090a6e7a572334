// SPDX-FileCopyrightText: 2026 the spotwell developers
// SPDX-License-Identifier: MIT

#include "tests/integration/support/NodeFaultFixture.h"

#include <csignal>

namespace spotwell
{
namespace
{

using namespace std::chrono_literals;

/// The machine sleeps for thirteen minutes, in which a silent node would have been left.
class NodeSleepTest : public NodeFaultFixture
{
protected:
    void fallAsleep()
    {
        openConnected();
        logIn();
        passSpot();
        clock.stopAtWait();
        ASSERT_TRUE(program->waitUntilStopped());
    }
    void wakeUp()
    {
        clock.step(13min);
        program->signal(SIGCONT);
    }
};

TEST_F(NodeSleepTest, whatTheNodeSaidMeanwhileIsHandedOn)
{
    fallAsleep();
    QByteArray lines;
    for (int number = 101; number <= 110; ++number)
        lines += spotLine(number) + "\r\n";
    say(lines);
    wakeUp();
    for (int number = 101; number <= 110; ++number) {
        EXPECT_EQ(next(*logger, QStringLiteral("signal")), notificationOf(spotLine(number)));
        see({QStringLiteral("teln ") + QString::fromUtf8(spotLine(number))});
    }
    EXPECT_TRUE(staysQuiet());
    passSpot();
    EXPECT_EQ(node.heard(), "N0CALL\n");
    endInOrder();
}

TEST_F(NodeSleepTest, aNodeThatHasGoneSilentlyIsLeftAndMetAgain)
{
    fallAsleep();
    wakeUp();
    seeLeftForSilence(QStringLiteral("13.0"));
    endInOrder();
}

TEST_F(NodeSleepTest, aNodeThatHasResetTheConnectionIsMetAgainAtOnce)
{
    fallAsleep();
    node.reset();
    wakeUp();
    const QString error = QStringLiteral("NSStreamEventErrorOccurred:[Connection reset by peer]");
    see({QStringLiteral("closeTelnetConnection"), error});
    read({error, QStringLiteral("closeTelnetConnection")});
    comeBackByItself();
    endInOrder();
}

TEST_F(NodeSleepTest, aNodeThatHasEndedTheConnectionIsMetAgainAMinuteLater)
{
    fallAsleep();
    say("Good night\r\n");
    node.shutdownWrite();
    wakeUp();
    seeInAnyOrder({QStringLiteral("teln Good night"), QStringLiteral("closeTelnetConnection")});
    read({QStringLiteral("NSStreamEventEndEncountered"), quitEntry, QStringLiteral("closeTelnetConnection")});
    comeBack();
    endInOrder();
}

} // namespace
} // namespace spotwell
