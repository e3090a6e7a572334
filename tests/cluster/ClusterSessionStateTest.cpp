// SPDX-FileCopyrightText: 2026 the spotwell developers
// SPDX-License-Identifier: MIT

#include "platform/linux/PosixSocketStreams.h"
#include "tests/cluster/ClusterSessionFixture.h"

#include <limits>

namespace spotwell
{

using ClusterSessionStateTest = ClusterSessionFixture;

TEST_F(ClusterSessionStateTest, BeforeTheFirstConnectionThereIsNothing)
{
    EXPECT_FALSE(session.isLoggedIn());
    EXPECT_EQ(session.bytesReceived(), 0);
    EXPECT_EQ(session.sessionStartupTime(), distantPast);
    EXPECT_EQ(session.lastRecievedMessageTime(), distantPast);
    EXPECT_TRUE(session.telnetHostName().isEmpty());
}

TEST_F(ClusterSessionStateTest, OpeningResetsTheCountersAndTheLogin)
{
    openCompleted().receive("login:");
    treat();
    mainQueue.advance(Seconds{1});
    ASSERT_TRUE(session.isLoggedIn());
    ASSERT_EQ(session.bytesReceived(), 6);
    const TimePoint firstTime = session.sessionStartupTime();
    clock.advance(Seconds{100});
    session.closeTelnetConnection();
    EXPECT_TRUE(session.isLoggedIn()) << "closing resets nothing";
    EXPECT_EQ(session.bytesReceived(), 6);
    EXPECT_EQ(session.sessionStartupTime(), firstTime);
    clock.advance(Seconds{100});
    open();
    EXPECT_FALSE(session.isLoggedIn());
    EXPECT_EQ(session.bytesReceived(), 0);
    EXPECT_EQ(session.sessionStartupTime(), clock.now());
    EXPECT_EQ(session.lastRecievedMessageTime(), clock.now());
}

TEST_F(ClusterSessionStateTest, AnOpenThatFailsCountsAsTriedOnly)
{
    openCompleted().receive("login:");
    treat();
    mainQueue.advance(Seconds{1});
    session.closeTelnetConnection();
    const TimePoint firstTime = session.sessionStartupTime();
    sockets.makeOutput = false;
    host.dxcluster = QStringLiteral("other.example.org");
    clock.advance(Seconds{100});
    open();
    EXPECT_EQ(session.telnetHostName(), QStringLiteral("other.example.org"));
    EXPECT_EQ(session.bytesReceived(), 0);
    EXPECT_EQ(session.lastRecievedMessageTime(), clock.now());
    EXPECT_EQ(session.sessionStartupTime(), firstTime) << "no streams, no session";
    EXPECT_TRUE(session.isLoggedIn());
}

TEST_F(ClusterSessionStateTest, AReadCountsItsBytesAndNotesItsTime)
{
    FakeConnection& node = openCompleted();
    const TimePoint opened = clock.now();
    clock.advance(Seconds{3});
    node.receive("Welcome\r\n");
    EXPECT_EQ(session.bytesReceived(), 9);
    EXPECT_EQ(session.lastRecievedMessageTime(), clock.now());
    clock.advance(Seconds{3});
    node.receive(QByteArray("\0\xc3\xa9", 3));
    EXPECT_EQ(session.bytesReceived(), 12) << "bytes as they are, decoded or not";
    EXPECT_EQ(session.lastRecievedMessageTime(), clock.now());
    EXPECT_EQ(session.sessionStartupTime(), opened);
    EXPECT_FALSE(session.isLoggedIn());
}

TEST_F(ClusterSessionStateTest, AFailedReadNotesNoTime)
{
    for (const std::ptrdiff_t result : {-1, 0}) {
        FakeConnection& node = openCompleted();
        node.receive("Welcome\r\n");
        const TimePoint heardAt = clock.now();
        clock.advance(Seconds{3});
        node.readError = result;
        node.inputEvent(StreamEvent::hasBytesAvailable);
        EXPECT_EQ(session.bytesReceived(), 9) << result;
        EXPECT_EQ(session.lastRecievedMessageTime(), heardAt) << result;
    }
}

TEST_F(ClusterSessionStateTest, TheSixthFullReadCountsAsWell)
{
    FakeConnection& node = openCompleted();
    for (int i = 0; i < 6; ++i) {
        clock.advance(Seconds{1});
        node.receive(QByteArray(wholeBuffer, 'x'));
    }
    EXPECT_FALSE(host.connected);
    EXPECT_EQ(session.bytesReceived(), 6 * wholeBuffer);
    EXPECT_EQ(session.lastRecievedMessageTime(), clock.now());
}

TEST_F(ClusterSessionStateTest, TheCountIsOf32Bits)
{
#ifdef __SANITIZE_THREAD__
    GTEST_SKIP() << "two thousand million bytes on one thread";
#endif
    FakeConnection& node = openCompleted();
    // Begins with a NUL, so that there is nothing to decode.
    const QByteArray chunk(wholeBuffer - 1, '\0');
    std::int64_t sent = 0;
    while (sent <= std::numeric_limits<std::int32_t>::max()) {
        node.receive(chunk);
        treat();
        sent += chunk.size();
    }
    EXPECT_EQ(session.bytesReceived(), static_cast<std::int32_t>(sent - (std::int64_t{1} << 32)));
    EXPECT_LT(session.bytesReceived(), 0);
}

TEST_F(ClusterSessionStateTest, EitherStreamArmsThePrompts)
{
    for (const bool byInput : {true, false}) {
        ClusterSession fresh(host, sockets, mainQueue, clock, converter, log);
        fresh.openTelnetConnection();
        FakeConnection& node = sockets.last();
        EXPECT_FALSE(fresh.promptsAreArmed());
        if (byInput)
            node.inputEvent(StreamEvent::openCompleted);
        else
            node.outputEvent(StreamEvent::openCompleted);
        EXPECT_TRUE(fresh.promptsAreArmed()) << byInput;
        node.receive("login:");
        treat();
        mainQueue.advance(Seconds{1});
        EXPECT_EQ(node.written, QByteArray("N0CALL\n")) << byInput;
    }
}

TEST_F(ClusterSessionStateTest, TheThreadCheckComesFirstInClosing)
{
    openCompleted();
    QStringList journal;
    const Note note = [&](const QString& entry) { journal.append(entry); };
    host.note = note;
    log.note = note;
    session.closeTelnetConnection();
    EXPECT_EQ(journal,
              (QStringList{QStringLiteral("thread check"),
                           QStringLiteral("log DXClusterController:sendTelnet:[5]characters:quit\n"),
                           QStringLiteral("log closeTelnetConnection"),
                           QStringLiteral("console closeTelnetConnection"), QStringLiteral("connected 0")}));
}

TEST_F(ClusterSessionStateTest, APortIsShownAsA32BitNumber)
{
    host.port = QStringLiteral("-1");
    EXPECT_EQ(open().port, 4294967295U);
    EXPECT_EQ(log.lines.last(),
              QStringLiteral("Node:dxc.example.org Opened on Port:-1 istream status:[1] ostream status:[1]"));
}

TEST_F(ClusterSessionStateTest, APortThatTcpDoesNotHaveReachesNoServer)
{
    PosixSocketStreams real;
    for (const char* port : {"65536", "-1"}) {
        host.port = QLatin1String(port);
        host.connected = true;
        host.console.clear();
        log.lines.clear();
        ClusterSession onSockets(host, real, mainQueue, clock, converter, log);
        onSockets.openTelnetConnection();
        EXPECT_EQ(log.lines,
                  (QStringList{QStringLiteral("openTelnetConnection"),
                               QStringLiteral("Unable to reach server DXCluster Node:dxc.example.org on "
                                              "Port:") +
                                   QLatin1String(port)}));
        EXPECT_EQ(host.console, QStringList{QStringLiteral("openTelnetConnection")});
        EXPECT_FALSE(host.connected);
    }
}

TEST_F(ClusterSessionStateTest, ASpotsLengthIsOfCharactersNotBytes)
{
    FakeConnection& node = openCompleted();
    const QString begin = QStringLiteral("DX de N0CALL: caf\u00e9 \u20ac ");
    const QString spot = begin.leftJustified(75, u'.');
    ASSERT_GE(spot.left(74).toUtf8().size(), 75);
    node.receive(spot.left(74).toUtf8() + "\n");
    EXPECT_EQ(heard(), QStringList{spot.left(74)});
    EXPECT_TRUE(host.spots.isEmpty());
    node.receive(spot.toUtf8() + "\n");
    treat();
    EXPECT_EQ(host.spots, QStringList{spot});
}

} // namespace spotwell
