// SPDX-FileCopyrightText: 2026 the spotwell developers
// SPDX-License-Identifier: MIT

#include "tests/integration/support/NodeFaultFixture.h"

#include <csignal>

namespace spotwell
{
namespace
{

using namespace std::chrono_literals;

/// How far a connection has come.
enum class Stage { connected, greeted, asked, loggedIn };

struct Break {
    const char* name;
    Stage stage;
    bool isReset;
};

void PrintTo(const Break& broken, std::ostream* out)
{
    *out << broken.name;
}

class BreakTest : public NodeFaultFixture, public testing::WithParamInterface<Break>
{
protected:
    void come(Stage stage)
    {
        openConnected();
        // The program knows of the connection, too.
        ASSERT_TRUE(logs(QStringLiteral("NSStreamEventHasSpaceAvailable")));
        if (stage == Stage::greeted) {
            say("Welcome\r\n");
            see({QStringLiteral("teln Welcome")});
        } else if (stage == Stage::loggedIn) {
            logIn();
            passSpot();
        } else if (stage == Stage::asked) {
            // The end is there with the question: the answer is due a second later.
            clock.stopAtWait();
            ASSERT_TRUE(program->waitUntilStopped());
            say("login: ");
        }
    }
    void breakOff(bool isReset)
    {
        if (isReset)
            node.reset();
        else
            node.shutdownWrite();
        program->signal(SIGCONT);
    }
};

TEST_P(BreakTest, isToldAndOverAfterAMinute)
{
    const auto [name, stage, isReset] = GetParam();
    const QString error = QStringLiteral("NSStreamEventErrorOccurred:[Connection reset by peer]");
    QStringList lines{QStringLiteral("closeTelnetConnection")};
    QStringList written = lines;
    if (isReset) {
        lines.append(error);
        written.prepend(error);
    } else {
        written = QStringList{QStringLiteral("NSStreamEventEndEncountered"), quitEntry} + written;
    }
    come(stage);
    breakOff(isReset);
    if (stage == Stage::asked) {
        // Nobody is there to hear the answer.
        lines += {QStringLiteral("loging in"), QStringLiteral("teln login: ")};
        written.append(QStringLiteral("logging in"));
        seeInAnyOrder(lines);
        seeToggle(true);
    } else {
        see(lines);
        seeToggle(false);
    }
    read(written);
    if (!isReset) {
        EXPECT_TRUE(waitUntil([this] { return node.hasEnded(); }));
        EXPECT_EQ(node.heard(), stage == Stage::loggedIn ? "N0CALL\nquit\n" : "quit\n");
    }
    comeBack();
    endInOrder();
}

INSTANTIATE_TEST_SUITE_P(Node, BreakTest,
                         testing::Values(Break{"resetBeforeAWord", Stage::connected, true},
                                         Break{"resetBeforeTheLogin", Stage::greeted, true},
                                         Break{"resetInTheLogin", Stage::asked, true},
                                         Break{"resetAfterTheLogin", Stage::loggedIn, true},
                                         Break{"endBeforeAWord", Stage::connected, false},
                                         Break{"endInTheLogin", Stage::asked, false},
                                         Break{"endAfterTheLogin", Stage::loggedIn, false}),
                         [](const auto& broken) { return broken.param.name; });

class TrickleTest : public NodeFaultFixture
{
protected:
    /// A byte, and what it is shown as; the time until the next one.
    void trickle(const QByteArray& bytes, std::chrono::seconds spacing)
    {
        for (const char byte : bytes) {
            clock.step(spacing);
            say(QByteArray(1, byte));
            see({QStringLiteral("teln ") + QLatin1Char(byte)});
        }
    }
};

TEST_F(TrickleTest, aByteASecondIsALineEachAndNoLogin)
{
    openConnected();
    trickle("login:", 1s);
    EXPECT_TRUE(staysQuiet());
    EXPECT_EQ(node.heard(), QByteArray());
    trickle("please", 12s);
    const QString message = QStringLiteral("Waited 120 seconds for login, giving up.");
    clock.step(61s);
    see({QStringLiteral("closeTelnetConnection"), message});
    read({QStringLiteral("DXClusterController:loginTimeoutTimer:") + message, quitEntry,
          QStringLiteral("closeTelnetConnection")});
    comeBackByItself();
    endInOrder();
}

TEST_F(TrickleTest, aByteASecondKeepsALoggedInConnection)
{
    openConnected();
    logIn();
    // All together longer than a silent node is kept.
    trickle("DX-de-W3XYZ", 100s);
    EXPECT_TRUE(staysQuiet());
    say("\r\n");
    passSpot();
    EXPECT_EQ(node.heard(), "N0CALL\n");
    endInOrder();
}

using NodeFaultTest = NodeFaultFixture;

TEST_F(NodeFaultTest, aFloodEndsTheConnectionForGood)
{
    openConnected();
    logIn();
    passSpot();
    const QByteArray line = "DX de W3XYZ: a line of a flood, too short to be a spot\r\n";
    const QString flood = QStringLiteral("NSStreamEventHasBytesAvailable: Spot Flood, Disconnecting");
    ASSERT_TRUE(waitUntil([&] {
        node.send(line.repeated(1000));
        return entries().contains(flood);
    }));
    EXPECT_TRUE(logs(QStringLiteral("closeTelnetConnection")));
    for (int count = 1; count <= 6; ++count) {
        EXPECT_EQ(countOfEntries(QStringLiteral("DXClusterController:NSStreamEventHasBytesAvailable:"
                                                "bytesReadFromStream:16383, buffer overrun count:%1")
                                     .arg(count)),
                  1)
            << count;
    }
    // The lines of the last reads are shown like all others; how the connection ended scrolls by.
    EXPECT_TRUE(waitUntil([&] {
        return user->console().count(QStringLiteral("teln ") + QLatin1String(line.chopped(2))) > 200;
    }));
    seeToggle(false);
    EXPECT_EQ(user->isOn(reconnectName), false);

    // Nobody comes back, however long it takes, until the user says so.
    clock.step(24h);
    node.forget();
    EXPECT_TRUE(user->press(reconnectName));
    EXPECT_TRUE(logs(QStringLiteral("Attempting Reconnect with 127.0.0.1")));
    ASSERT_TRUE(node.accept());
    say(spotLine(2) + "\r\n");
    EXPECT_EQ(next(*logger, QStringLiteral("signal")), notificationOf(spotLine(2)));
    EXPECT_EQ(countOfEntries(QStringLiteral("Attempting Reconnect with 127.0.0.1")), 1);
    EXPECT_TRUE(program->end(SIGTERM)) << "no orderly end";
    EXPECT_EQ(home.settings().value(QStringLiteral("reconnect")), QStringLiteral("true"));
}

} // namespace
} // namespace spotwell
