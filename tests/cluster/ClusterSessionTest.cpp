// SPDX-FileCopyrightText: 2026 the spotwell developers
// SPDX-License-Identifier: MIT

#include "tests/cluster/ClusterSessionFixture.h"

namespace spotwell
{

TEST(ClusterPort, IsTheLeadingIntegerOr23)
{
    struct Row {
        const char* text;
        std::uint32_t port;
    };
    const Row rows[] = {{"", 23},
                        {"0", 23},
                        {"telnet", 23},
                        {"7300", 7300},
                        {" 7300", 7300},
                        {"7300abc", 7300},
                        {"7300.9", 7300},
                        {"+23", 23},
                        {"65535", 65535},
                        {"65536", 65536},
                        {"-1", 4294967295U},
                        {"4294967296", 23},
                        {"4294974596", 7300},
                        {"0x17", 23},
                        {"99999999999999999999", 4294967295U}};
    for (const Row& row : rows)
        EXPECT_EQ(clusterPort(QString::fromLatin1(row.text)), row.port) << row.text;
}

using ClusterSessionTest = ClusterSessionFixture;

TEST_F(ClusterSessionTest, OpensBothStreamsInputFirst)
{
    FakeConnection& node = open();
    EXPECT_EQ(node.host, QStringLiteral("dxc.example.org"));
    EXPECT_EQ(node.port, 7300U);
    EXPECT_EQ(node.calls, (QStringList{QStringLiteral("input.setDelegate"), QStringLiteral("input.open"),
                                       QStringLiteral("output.setDelegate"), QStringLiteral("output.open")}));
    EXPECT_EQ(log.lines,
              (QStringList{QStringLiteral("openTelnetConnection"),
                           QStringLiteral("Node:dxc.example.org Opened on Port:7300 istream status:[1] "
                                          "ostream status:[1]")}));
    EXPECT_EQ(host.console, QStringList{QStringLiteral("openTelnetConnection")});
    EXPECT_TRUE(host.connected);
    EXPECT_EQ(session.telnetHostName(), QStringLiteral("dxc.example.org"));
}

TEST_F(ClusterSessionTest, AnEmptyPortIs23)
{
    host.port.clear();
    EXPECT_EQ(open().port, 23U);
    EXPECT_EQ(log.lines.last(),
              QStringLiteral("Node:dxc.example.org Opened on Port:23 istream status:[1] ostream status:[1]"));
}

TEST_F(ClusterSessionTest, SaysWhenNoStreamsCouldBeMade)
{
    for (const bool input : {false, true}) {
        sockets.makeInput = input;
        sockets.makeOutput = !input;
        host.connected = true;
        log.lines.clear();
        host.console.clear();
        open();
        EXPECT_EQ(log.lines,
                  (QStringList{QStringLiteral("openTelnetConnection"),
                               QStringLiteral("Unable to reach server DXCluster Node:dxc.example.org on "
                                              "Port:7300")}));
        EXPECT_EQ(host.console, QStringList{QStringLiteral("openTelnetConnection")});
        EXPECT_FALSE(host.connected);
        EXPECT_EQ(session.telnetHostName(), QStringLiteral("dxc.example.org"));
        EXPECT_TRUE(sockets.last().calls.isEmpty());
    }
}

TEST_F(ClusterSessionTest, SaysGoodbyeAndClosesTheOutputFirst)
{
    FakeConnection& node = openCompleted();
    node.calls.clear();
    session.closeTelnetConnection();
    EXPECT_EQ(host.threadChecks, 1);
    EXPECT_EQ(node.written, QByteArray("quit\n"));
    EXPECT_EQ(node.calls, (QStringList{QStringLiteral("write:5"), QStringLiteral("output.close"),
                                       QStringLiteral("input.close")}));
    EXPECT_EQ(log.lines, (QStringList{QStringLiteral("DXClusterController:sendTelnet:[5]characters:quit\n"),
                                      QStringLiteral("closeTelnetConnection")}));
    EXPECT_EQ(host.console, QStringList{QStringLiteral("closeTelnetConnection")});
    EXPECT_FALSE(host.connected);
    EXPECT_EQ(node.input, nullptr) << "dropped";
    EXPECT_EQ(node.output, nullptr);
}

TEST_F(ClusterSessionTest, ClosingWhatIsClosedOnlySaysSo)
{
    host.connected = true;
    session.closeTelnetConnection();
    EXPECT_EQ(host.threadChecks, 1);
    EXPECT_EQ(log.lines, QStringList{QStringLiteral("closeTelnetConnection")});
    EXPECT_EQ(host.console, QStringList{QStringLiteral("closeTelnetConnection")});
    EXPECT_FALSE(host.connected);
}

TEST_F(ClusterSessionTest, WritesTextInUtf8UpToItsFirstNul)
{
    FakeConnection& node = openCompleted();
    session.sendTelnet(QStringLiteral("\u00e9\u20ac") + QChar(u'\0') + QStringLiteral("x"));
    EXPECT_EQ(node.written, QByteArray("\xc3\xa9\xe2\x82\xac"));
    EXPECT_EQ(log.lines,
              QStringList{QStringLiteral("DXClusterController:sendTelnet:[5]characters:\u00e9\u20ac")});
}

TEST_F(ClusterSessionTest, AnEmptyTextIsLoggedButNotWritten)
{
    FakeConnection& node = openCompleted();
    node.calls.clear();
    session.sendTelnet(QString());
    EXPECT_TRUE(node.calls.isEmpty());
    EXPECT_EQ(log.lines, QStringList{QStringLiteral("DXClusterController:sendTelnet:[0]characters:")});
}

TEST_F(ClusterSessionTest, WithoutAConnectionOrSpaceTheTextIsLost)
{
    session.sendTelnet(QStringLiteral("lost\n"));
    FakeConnection& node = openCompleted();
    node.spaceAvailable = false;
    session.sendTelnet(QStringLiteral("lost\n"));
    EXPECT_TRUE(log.lines.isEmpty());
    node.spaceAvailable = true;
    session.sendTelnet(QStringLiteral("sent\n"));
    EXPECT_EQ(node.written, QByteArray("sent\n"));
}

TEST_F(ClusterSessionTest, APartialWriteIsNotCompleted)
{
    FakeConnection& node = openCompleted();
    node.writeLimit = 2;
    node.calls.clear();
    session.sendTelnet(QStringLiteral("N0CALL\n"));
    EXPECT_EQ(node.calls, QStringList{QStringLiteral("write:2")});
}

TEST_F(ClusterSessionTest, LogsSpaceAndUnknownEvents)
{
    FakeConnection& node = openCompleted();
    node.outputEvent(StreamEvent::none);
    node.outputEvent(StreamEvent::hasSpaceAvailable);
    for (const int code : {3, 5, 6, 7, 9, 15, 17, 32, -1})
        node.inputEvent(code);
    QStringList expected{QStringLiteral("NSStreamEventHasSpaceAvailable")};
    for (const int code : {3, 5, 6, 7, 9, 15, 17, 32, -1})
        expected.append(QStringLiteral("NSStreamEvent Unknown:[%1]").arg(code));
    EXPECT_EQ(log.lines, expected);
    EXPECT_TRUE(host.console.isEmpty());
    EXPECT_TRUE(host.connected);
}

TEST_F(ClusterSessionTest, BytesOnTheOutputStreamMeanNothing)
{
    FakeConnection& node = openCompleted();
    node.toRead.push_back("hello\n");
    node.outputEvent(StreamEvent::hasBytesAvailable);
    EXPECT_EQ(node.toRead.size(), 1U);
    EXPECT_TRUE(log.lines.isEmpty());
}

TEST_F(ClusterSessionTest, AnErrorClosesAndIsShown)
{
    FakeConnection& node = openCompleted();
    node.error = QStringLiteral("Connection refused");
    node.spaceAvailable = false;
    node.inputEvent(StreamEvent::errorOccurred);
    EXPECT_EQ(log.lines, (QStringList{QStringLiteral("NSStreamEventErrorOccurred:[Connection refused]"),
                                      QStringLiteral("closeTelnetConnection")}));
    EXPECT_EQ(host.console, (QStringList{QStringLiteral("closeTelnetConnection"),
                                         QStringLiteral("NSStreamEventErrorOccurred:[Connection refused]")}));
    EXPECT_FALSE(host.connected);
}

TEST_F(ClusterSessionTest, AnErrorWithoutDescriptionIsShownAsNull)
{
    FakeConnection& node = openCompleted();
    node.spaceAvailable = false;
    node.outputEvent(StreamEvent::errorOccurred);
    EXPECT_EQ(log.lines, QStringList{QStringLiteral("closeTelnetConnection")});
    EXPECT_EQ(host.console, (QStringList{QStringLiteral("closeTelnetConnection"),
                                         QStringLiteral("NSStreamEventErrorOccurred:[(null)]")}));
}

TEST_F(ClusterSessionTest, TheEndClosesAndStillSaysGoodbye)
{
    FakeConnection& node = openCompleted();
    node.inputEvent(StreamEvent::endEncountered);
    EXPECT_EQ(node.written, QByteArray("quit\n"));
    EXPECT_EQ(log.lines, (QStringList{QStringLiteral("NSStreamEventEndEncountered"),
                                      QStringLiteral("DXClusterController:sendTelnet:[5]characters:quit\n"),
                                      QStringLiteral("closeTelnetConnection")}));
    EXPECT_FALSE(host.connected);
}

TEST_F(ClusterSessionTest, PromptsAreArmedByTheFirstConnectionForGood)
{
    open();
    EXPECT_FALSE(session.promptsAreArmed());
    sockets.last().receive("login:");
    treat();
    mainQueue.advance(Seconds{5});
    EXPECT_TRUE(sockets.last().written.isEmpty());
    sockets.last().outputEvent(StreamEvent::openCompleted);
    EXPECT_TRUE(session.promptsAreArmed());
    session.closeTelnetConnection();
    EXPECT_TRUE(session.promptsAreArmed());
    open();
    EXPECT_TRUE(session.promptsAreArmed()) << "also before the second connection is made";
    sockets.last().receive("login:");
    treat();
    mainQueue.advance(Seconds{1});
    EXPECT_EQ(sockets.last().written, QByteArray("N0CALL\n"));
}

TEST_F(ClusterSessionTest, ALoginThatComesAfterTheCloseIsWrittenNowhere)
{
    FakeConnection& node = openCompleted();
    node.receive("login:");
    treat();
    session.closeTelnetConnection();
    node.written.clear();
    mainQueue.advance(Seconds{1});
    EXPECT_TRUE(node.written.isEmpty());
    EXPECT_TRUE(host.connected) << "the toggle shows the login all the same";
}

TEST_F(ClusterSessionTest, EachLineGoesOnWithTheNodeItWasHeardFrom)
{
    const QByteArray spot = QByteArray("DX de N0CALL:").leftJustified(80, '.');
    openCompleted().receive(spot);
    session.closeTelnetConnection();
    host.dxcluster = QStringLiteral("other.example.org");
    openCompleted().receive(spot);
    treat();
    EXPECT_EQ(host.nodes,
              (QStringList{QStringLiteral("dxc.example.org"), QStringLiteral("other.example.org")}));
}

} // namespace spotwell
