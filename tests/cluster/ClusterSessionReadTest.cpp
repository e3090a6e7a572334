// SPDX-FileCopyrightText: 2026 the spotwell developers
// SPDX-License-Identifier: MIT

#include "tests/cluster/ClusterSessionFixture.h"

namespace spotwell
{

namespace
{

QString overrun(int count)
{
    return QStringLiteral(
               "DXClusterController:NSStreamEventHasBytesAvailable:bytesReadFromStream:16383, buffer overrun "
               "count:%1")
        .arg(count);
}

} // namespace

using ClusterSessionReadTest = ClusterSessionFixture;

TEST_F(ClusterSessionReadTest, AReadOfNothingCloses)
{
    FakeConnection& node = openCompleted();
    node.inputEvent(StreamEvent::hasBytesAvailable);
    EXPECT_EQ(log.lines.first(), QStringLiteral("NSStreamEventHasBytesAvailable:bytesReadFromStream:[0]"));
    EXPECT_EQ(log.lines.last(), QStringLiteral("closeTelnetConnection"));
    EXPECT_EQ(node.written, QByteArray("quit\n"));
    EXPECT_EQ(host.buffer.pendingCount(), 0U);
}

TEST_F(ClusterSessionReadTest, AFailedReadIsOnlyLogged)
{
    FakeConnection& node = openCompleted();
    node.readError = -1;
    node.inputEvent(StreamEvent::hasBytesAvailable);
    EXPECT_EQ(log.lines,
              QStringList{QStringLiteral("NSStreamEventHasBytesAvailable:bytesReadFromStream:[-1]")});
    EXPECT_TRUE(host.connected);
    node.receive("still here\n");
    EXPECT_EQ(heard(), QStringList{QStringLiteral("still here")});
}

TEST_F(ClusterSessionReadTest, CutsWhatItReadsIntoLines)
{
    FakeConnection& node = openCompleted();
    node.receive("Hello\r\r\n\aWorld\x1b[1m\r\n\nlogin: ");
    EXPECT_EQ(host.buffer.pendingCount(), 1U) << "one batch a read";
    EXPECT_TRUE(host.console.isEmpty()) << "treated on the buffer queue";
    EXPECT_EQ(heard(), (QStringList{QStringLiteral("Hello"), QStringLiteral("World\x1b[1m"),
                                    QStringLiteral("login: ")}));
    EXPECT_TRUE(log.lines.isEmpty());
}

TEST_F(ClusterSessionReadTest, ALineCutByAReadIsTwo)
{
    FakeConnection& node = openCompleted();
    const QByteArray line = QByteArray("DX de N0CALL:").leftJustified(80, '.');
    node.receive(line.first(40));
    node.receive(line.mid(40) + "\n");
    EXPECT_EQ(heard(), (QStringList{QString::fromLatin1(line.first(40)), QString::fromLatin1(line.mid(40))}));
    EXPECT_TRUE(host.spots.isEmpty());
}

TEST_F(ClusterSessionReadTest, ANulCutsTheText)
{
    FakeConnection& node = openCompleted();
    node.receive(QByteArray("before\nhalf\0 and gone\nafter\n", 28));
    node.receive(QByteArray("\0gone", 5));
    node.receive("next\n");
    EXPECT_EQ(heard(),
              (QStringList{QStringLiteral("before"), QStringLiteral("half"), QStringLiteral("next")}));
    EXPECT_TRUE(log.lines.isEmpty());
}

TEST_F(ClusterSessionReadTest, ReadsWhatAnotherNodeMightSend)
{
    FakeConnection& node = openCompleted();
    node.receive("caf\xc3\xa9\n");
    node.receive("caf\xe9\n");
    EXPECT_EQ(heard(), QStringList(2, QStringLiteral("caf\u00e9")));
}

TEST_F(ClusterSessionReadTest, AnOldChunkLeavesNoTraceInTheNext)
{
    FakeConnection& node = openCompleted();
    node.receive("a long line that stays in the buffer\n");
    node.receive("short");
    EXPECT_EQ(heard().last(), QStringLiteral("short"));
}

TEST_F(ClusterSessionReadTest, OnlyAFullBufferCountsAsOverrun)
{
    FakeConnection& node = openCompleted();
    node.receive(QByteArray(wholeBuffer - 1, 'x'));
    EXPECT_TRUE(log.lines.isEmpty());
    node.receive(QByteArray(wholeBuffer, 'x'));
    EXPECT_EQ(log.lines, QStringList{overrun(1)});
    // One byte more than a read takes: the rest comes with the next.
    node.receive(QByteArray(wholeBuffer + 1, 'y'));
    EXPECT_EQ(log.lines, (QStringList{overrun(1), overrun(2)}));
    node.inputEvent(StreamEvent::hasBytesAvailable);
    const QStringList lines = heard();
    ASSERT_EQ(lines.size(), 4);
    EXPECT_EQ(lines[2].size(), wholeBuffer);
    EXPECT_EQ(lines[3], QStringLiteral("y"));
}

TEST_F(ClusterSessionReadTest, TheSixthFullReadOfAConnectionEndsIt)
{
    FakeConnection& node = openCompleted();
    const QByteArray chunk = QByteArray("DX de N0CALL: ").leftJustified(99, '.') + "\n";
    const QByteArray full = chunk.repeated(164).first(wholeBuffer);
    for (int i = 0; i < 5; ++i) {
        node.receive(full);
        node.receive("in between\n");
        treat();
    }
    EXPECT_TRUE(host.connected);
    EXPECT_TRUE(host.reconnect);
    const auto spots = host.spots.size();
    log.lines.clear();
    host.console.clear();
    node.receive(full);
    EXPECT_EQ(
        log.lines,
        (QStringList{overrun(6), QStringLiteral("NSStreamEventHasBytesAvailable: Spot Flood, Disconnecting"),
                     QStringLiteral("DXClusterController:sendTelnet:[5]characters:quit\n"),
                     QStringLiteral("closeTelnetConnection")}));
    EXPECT_FALSE(host.reconnect);
    EXPECT_FALSE(host.connected);
    treat();
    EXPECT_EQ(host.spots.size(), spots + 164) << "the last chunk is still delivered";
}

TEST_F(ClusterSessionReadTest, OpeningAgainForgetsTheOverruns)
{
    for (int round = 0; round < 3; ++round) {
        FakeConnection& node = openCompleted();
        for (int i = 1; i <= 5; ++i) {
            node.receive(QByteArray(wholeBuffer, 'x'));
            EXPECT_EQ(log.lines.last(), overrun(i));
            treat();
        }
        EXPECT_TRUE(host.connected);
        session.closeTelnetConnection();
    }
    EXPECT_TRUE(host.reconnect);
}

TEST_F(ClusterSessionReadTest, AFastNodeIsHeldUntilItsReadsAreTreated)
{
    FakeConnection& node = openCompleted();
    for (int i = 0; i < 15; ++i)
        node.receive("line\n");
    EXPECT_FALSE(node.held);
    node.receive("line\n");
    EXPECT_TRUE(node.held);
    host.buffer.runOne();
    EXPECT_TRUE(node.held) << "the stream belongs to the main thread";
    mainQueue.runPending();
    EXPECT_FALSE(node.held);
    node.receive("line\n");
    EXPECT_TRUE(node.held);
    host.buffer.runPending();
    mainQueue.runPending();
    EXPECT_FALSE(node.held);
    EXPECT_EQ(heard().size(), 17);
}

TEST_F(ClusterSessionReadTest, ANewConnectionIsHeldTooWhileOldReadsWait)
{
    FakeConnection& first = openCompleted();
    for (int i = 0; i < 16; ++i)
        first.receive("line\n");
    session.closeTelnetConnection();
    FakeConnection& second = open();
    EXPECT_TRUE(second.held);
    treat();
    EXPECT_FALSE(second.held);
}

} // namespace spotwell
