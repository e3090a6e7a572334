// SPDX-FileCopyrightText: 2026 the spotwell developers
// SPDX-License-Identifier: MIT

#include "cluster/Supervision.h"

#include "tests/cluster/ClusterSessionFixture.h"

#include <array>

namespace spotwell
{

namespace
{

const QString dataGivenUp = QStringLiteral("Waited 30 seconds for data, giving up.");
const QString loginTimedOut = QStringLiteral("Waited 120 seconds for login, giving up.");
const QString reconnecting = QStringLiteral("Attempting Reconnect with dxc.example.org");
const QString loggedLineFeed = QStringLiteral("DXClusterController:sendTelnet:[1]characters:\n");

/// A cluster session with both watchdogs, ticking each second as soon as it is told to.
struct SupervisionTest : ClusterSessionFixture {
    /// Begins the two timers' seconds.
    void startTicking()
    {
        mainQueue.every(Seconds{1}, [this] { supervision.loginTimeoutTimer(); });
        mainQueue.every(Seconds{1}, [this] { supervision.reconnectTimer(); });
    }
    /// One tick of each, `span` from now.
    void tickAfter(Seconds span)
    {
        clock.advance(span);
        supervision.loginTimeoutTimer();
        supervision.reconnectTimer();
    }
    /// A connection on which the login was sent, and nothing was heard since.
    FakeConnection& loggedIn()
    {
        FakeConnection& node = openCompleted();
        node.receive("login:");
        treat();
        mainQueue.advance(Seconds{1});
        node.receive("Welcome\n");
        treat();
        node.written.clear();
        host.console.clear();
        log.lines.clear();
        return node;
    }
    /// Sends more at once than the flood rule lets pass.
    void flood(FakeConnection& node)
    {
        for (int i = 0; i < 6; ++i)
            node.receive(QByteArray(wholeBuffer, 'x'));
        treat();
    }
    [[nodiscard]] int lineFeedsLogged() const { return static_cast<int>(log.lines.count(loggedLineFeed)); }

    Supervision supervision{host, session, clock, log};
};

} // namespace

TEST_F(SupervisionTest, ANodeThatSaysNothingIsDroppedAfterThirtySeconds)
{
    host.reconnect = false;
    openCompleted();
    tickAfter(Seconds{30});
    EXPECT_TRUE(session.hasStreams()) << "at exactly 30 s nothing happens";
    EXPECT_TRUE(host.console.isEmpty());
    EXPECT_TRUE(log.lines.isEmpty());
    tickAfter(Seconds{1});
    EXPECT_FALSE(session.hasStreams());
    EXPECT_EQ(host.console, (QStringList{QStringLiteral("closeTelnetConnection"), dataGivenUp}));
    EXPECT_EQ(log.lines, (QStringList{QStringLiteral("DXClusterController:loginTimeoutTimer:") + dataGivenUp,
                                      QStringLiteral("DXClusterController:sendTelnet:[5]characters:quit\n"),
                                      QStringLiteral("closeTelnetConnection")}));
    EXPECT_FALSE(host.connected);
    log.lines.clear();
    host.console.clear();
    tickAfter(Seconds{1000});
    EXPECT_TRUE(log.lines.isEmpty() && host.console.isEmpty()) << "without a connection there is no watch";
}

TEST_F(SupervisionTest, ANodeThatNeverAsksIsDroppedAfterTwoMinutes)
{
    host.reconnect = false;
    openCompleted().receive("Welcome\n");
    treat();
    host.console.clear();
    log.lines.clear();
    tickAfter(Seconds{120});
    EXPECT_TRUE(session.hasStreams()) << "at exactly 120 s nothing happens";
    tickAfter(Seconds{1});
    EXPECT_FALSE(session.hasStreams());
    EXPECT_EQ(host.console, (QStringList{QStringLiteral("closeTelnetConnection"), loginTimedOut}));
    EXPECT_EQ(log.lines.first(), QStringLiteral("DXClusterController:loginTimeoutTimer:") + loginTimedOut);
}

TEST_F(SupervisionTest, TheWatchdogCountsFromTheStartOfTheSession)
{
    host.reconnect = false;
    FakeConnection& node = openCompleted();
    clock.advance(Seconds{119});
    node.receive("still busy\n");
    treat();
    tickAfter(Seconds{1.5});
    EXPECT_FALSE(session.hasStreams()) << "data does not put off the login's time";
}

TEST_F(SupervisionTest, ALoginEndsTheWatch)
{
    loggedIn();
    host.reconnect = false;
    tickAfter(Seconds{599});
    tickAfter(Seconds{100000});
    EXPECT_TRUE(session.hasStreams()) << "and with reconnect off nobody minds the silence";
    EXPECT_TRUE(log.lines.isEmpty());
}

TEST_F(SupervisionTest, TheWholeSequenceOfASilentNode)
{
    FakeConnection& node = loggedIn();
    const TimePoint lastHeard = clock.now();
    clock.advance(Seconds{0.5}); // ticks fall between the node's seconds
    startTicking();

    mainQueue.advance(Seconds{599.4});
    EXPECT_TRUE(node.written.isEmpty());
    mainQueue.advance(Seconds{0.7}); // 600.6 s; the tick came at 600.5
    EXPECT_EQ(node.written, QByteArray("\n"));
    mainQueue.advance(Seconds{60}); // 660.6 s: the tick of 660.5 found exactly 60 s
    EXPECT_EQ(node.written, QByteArray("\n"));
    mainQueue.advance(Seconds{1});
    EXPECT_EQ(node.written, QByteArray("\n\n"));
    EXPECT_EQ(log.lines, QStringList(2, loggedLineFeed)) << "nothing beyond what sending logs";
    EXPECT_TRUE(host.console.isEmpty());
    mainQueue.advance(lastHeard + std::chrono::milliseconds(719900) - clock.now());
    EXPECT_TRUE(session.hasStreams());
    EXPECT_EQ(node.written, QByteArray("\n\n"));

    log.lines.clear();
    mainQueue.advance(Seconds{0.7}); // 720.6 s
    EXPECT_FALSE(session.hasStreams()) << "not opened again in the same tick";
    EXPECT_EQ(node.written, QByteArray("\n\nquit\n"));
    EXPECT_EQ(host.console, (QStringList{QStringLiteral("Nothing heard from dxc.example.org in 12.0 minutes"),
                                         QStringLiteral("closeTelnetConnection")}));
    EXPECT_EQ(log.lines, (QStringList{QStringLiteral("Nothing heard from dxc.example.org in 12.0 minutes"),
                                      QStringLiteral("DXClusterController:sendTelnet:[5]characters:quit\n"),
                                      QStringLiteral("closeTelnetConnection")}));
    EXPECT_EQ(sockets.connections.size(), 1U);

    host.console.clear();
    log.lines.clear();
    mainQueue.advance(Seconds{1});
    EXPECT_EQ(sockets.connections.size(), 2U) << "the next tick reconnects at once";
    EXPECT_EQ(host.console, (QStringList{reconnecting, QStringLiteral("openTelnetConnection")}));
    EXPECT_EQ(log.lines.first(), reconnecting);
    EXPECT_TRUE(host.connected);
}

TEST_F(SupervisionTest, AWordFromTheNodeEndsTheSilence)
{
    FakeConnection& node = loggedIn();
    startTicking();
    mainQueue.advance(Seconds{601});
    EXPECT_EQ(node.written, QByteArray("\n"));
    mainQueue.advance(Seconds{29});
    node.receive("prompt\n");
    treat();
    mainQueue.advance(Seconds{600});
    EXPECT_EQ(node.written, QByteArray("\n"));
    mainQueue.advance(Seconds{1});
    EXPECT_EQ(node.written, QByteArray("\n\n"));
    EXPECT_TRUE(session.hasStreams());
    EXPECT_EQ(lineFeedsLogged(), 2);
}

TEST_F(SupervisionTest, ALateTickTellsTheMinutesAsTheyAre)
{
    struct Row {
        double idle;
        const char* minutes;
    };
    const std::array rows{Row{720.5, "12.0"}, Row{726, "12.1"}, Row{735, "12.2"}, Row{3599, "60.0"},
                          Row{86400, "1440.0"}};
    for (const Row& row : rows) {
        loggedIn();
        tickAfter(Seconds{row.idle});
        EXPECT_EQ(host.console.value(0), QStringLiteral("Nothing heard from dxc.example.org in %1 minutes")
                                             .arg(QLatin1String(row.minutes)));
    }
}

TEST_F(SupervisionTest, TheMessagesNameTheFieldsHost)
{
    loggedIn();
    host.dxcluster = QStringLiteral("other.example.org");
    tickAfter(Seconds{721});
    EXPECT_EQ(host.console.first(), QStringLiteral("Nothing heard from other.example.org in 12.0 minutes"));
    host.console.clear();
    tickAfter(Seconds{1});
    EXPECT_EQ(host.console.first(), QStringLiteral("Attempting Reconnect with other.example.org"));
    EXPECT_EQ(sockets.last().host, QStringLiteral("other.example.org"));
}

TEST_F(SupervisionTest, TheReconnectBoxSwitchesTheSupervisorAndNothingElse)
{
    FakeConnection& node = loggedIn();
    host.reconnect = false;
    tickAfter(Seconds{650});
    tickAfter(Seconds{100});
    EXPECT_TRUE(node.written.isEmpty());
    EXPECT_TRUE(session.hasStreams());
    host.reconnect = true;
    tickAfter(Seconds{1});
    EXPECT_FALSE(session.hasStreams());
    host.reconnect = false;
    tickAfter(Seconds{1});
    EXPECT_EQ(sockets.connections.size(), 1U);
    host.reconnect = true;
    tickAfter(Seconds{1});
    EXPECT_EQ(sockets.connections.size(), 2U);
}

TEST_F(SupervisionTest, WithoutAnyConnectionTheFirstTickTries)
{
    host.dxcluster.clear();
    tickAfter(Seconds{1});
    EXPECT_EQ(sockets.connections.size(), 1U) << "even with an empty host";
    EXPECT_EQ(host.console, (QStringList{QStringLiteral("Attempting Reconnect with "),
                                         QStringLiteral("openTelnetConnection")}));
    EXPECT_EQ(log.lines.first(), QStringLiteral("Attempting Reconnect with "));
}

TEST_F(SupervisionTest, AnOpenThatFailsIsTriedAgainOnceAMinute)
{
    sockets.makeInput = false;
    startTicking();
    mainQueue.advance(Seconds{1});
    EXPECT_EQ(host.console.count(reconnecting), 1);
    mainQueue.advance(Seconds{60});
    EXPECT_EQ(host.console.count(reconnecting), 1) << "exactly 60 s are not more than 60 s";
    mainQueue.advance(Seconds{1});
    EXPECT_EQ(host.console.count(reconnecting), 2);
    mainQueue.advance(Seconds{61 * 10});
    EXPECT_EQ(host.console.count(reconnecting), 12);
}

TEST_F(SupervisionTest, ADisconnectByTheUserIsUndoneAfterAMinuteWithoutData)
{
    FakeConnection& node = loggedIn();
    tickAfter(Seconds{30});
    session.closeTelnetConnection();
    tickAfter(Seconds{30});
    EXPECT_EQ(sockets.connections.size(), 1U) << "60 s since the last data";
    tickAfter(Seconds{1});
    EXPECT_EQ(sockets.connections.size(), 2U);
    EXPECT_TRUE(host.connected);
    // The silence before counts, too.
    node.written.clear();
    clock.advance(Seconds{100});
    session.closeTelnetConnection();
    tickAfter(Seconds{1});
    EXPECT_EQ(sockets.connections.size(), 3U);
}

TEST_F(SupervisionTest, AConnectionTheWatchdogDroppedComesBack)
{
    openCompleted();
    startTicking();
    mainQueue.advance(Seconds{31});
    EXPECT_FALSE(session.hasStreams());
    mainQueue.advance(Seconds{29});
    EXPECT_EQ(sockets.connections.size(), 1U) << "60 s since the open, when no data came";
    mainQueue.advance(Seconds{1});
    EXPECT_EQ(sockets.connections.size(), 2U);
}

TEST_F(SupervisionTest, AFloodSwitchesTheSupervisorOff)
{
    flood(loggedIn());
    ASSERT_FALSE(session.hasStreams());
    startTicking();
    mainQueue.advance(Seconds{4000});
    EXPECT_EQ(sockets.connections.size(), 1U);
}

TEST_F(SupervisionTest, AFloodLeavesTheWatchdogAlone)
{
    flood(loggedIn());
    openCompleted();
    tickAfter(Seconds{31});
    EXPECT_FALSE(host.reconnect);
    EXPECT_EQ(host.console.last(), dataGivenUp);
}

TEST_F(SupervisionTest, WhatIsShownAndLoggedHasItsOrder)
{
    QStringList journal;
    host.note = [&](const QString& entry) { journal.append(entry); };
    log.note = host.note;
    const QString silence = QStringLiteral("Nothing heard from dxc.example.org in 12.0 minutes");

    loggedIn();
    journal.clear();
    tickAfter(Seconds{721});
    ASSERT_GE(journal.size(), 5);
    EXPECT_EQ(journal.mid(0, 3),
              (QStringList{QStringLiteral("console ") + silence, QStringLiteral("log ") + silence,
                           QStringLiteral("thread check")}))
        << "and then the connection is closed";
    journal.clear();
    tickAfter(Seconds{1});
    EXPECT_EQ(journal.mid(0, 4),
              (QStringList{QStringLiteral("console ") + reconnecting, QStringLiteral("log ") + reconnecting,
                           QStringLiteral("log openTelnetConnection"),
                           QStringLiteral("console openTelnetConnection")}));
    journal.clear();
    tickAfter(Seconds{31});
    EXPECT_EQ(journal.first(), QStringLiteral("log DXClusterController:loginTimeoutTimer:") + dataGivenUp);
    EXPECT_EQ(journal.last(), QStringLiteral("console ") + dataGivenUp);
}

TEST_F(SupervisionTest, ALineFeedThatFindsNoSpaceCountsAsSent)
{
    FakeConnection& node = loggedIn();
    node.spaceAvailable = false;
    tickAfter(Seconds{601});
    node.spaceAvailable = true;
    tickAfter(Seconds{60});
    EXPECT_TRUE(node.written.isEmpty());
    tickAfter(Seconds{1});
    EXPECT_EQ(node.written, QByteArray("\n"));
}

TEST_F(SupervisionTest, ANewConnectionGetsItsLineFeedsAsTheFirstOneDid)
{
    loggedIn();
    tickAfter(Seconds{601});
    tickAfter(Seconds{61});
    EXPECT_EQ(lineFeedsLogged(), 2);
    tickAfter(Seconds{60});
    ASSERT_FALSE(session.hasStreams());
    tickAfter(Seconds{1});
    ASSERT_TRUE(session.hasStreams());
    log.lines.clear();
    sockets.last().receive("login:");
    treat();
    mainQueue.advance(Seconds{1});
    log.lines.clear();
    tickAfter(Seconds{600});
    EXPECT_EQ(lineFeedsLogged(), 1) << "the first of the new connection";
}

} // namespace spotwell
