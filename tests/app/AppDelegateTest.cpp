// SPDX-FileCopyrightText: 2026 the spotwell developers
// SPDX-License-Identifier: MIT

#include "tests/app/FakeProgram.h"

#include <QEvent>
#include <gtest/gtest.h>

namespace spotwell
{

namespace
{

/// Counts how often a widget is told its tooltip, the same one included.
class ToolTipCounter final : public QObject
{
public:
    int changes = 0;

    bool eventFilter(QObject*, QEvent* event) override
    {
        changes += event->type() == QEvent::ToolTipChange ? 1 : 0;
        return false;
    }
};

const QByteArray spotLine = "DX de N0CALL:    21205.0  X1X          CQ                             1428Z";

struct AppDelegateTest : testing::Test {
    AppDelegateTest()
    {
        program.defaults.strings[QStringLiteral("dxcluster")] = QStringLiteral("dxc.example.org");
        program.defaults.strings[QStringLiteral("callsign")] = QStringLiteral("N0CALL");
        program.launch();
        program.log.lines.clear();
    }
    FakeConnection& connect()
    {
        window.connected->click();
        FakeConnection& node = program.sockets.last();
        node.inputEvent(StreamEvent::openCompleted);
        node.outputEvent(StreamEvent::openCompleted);
        return node;
    }

    FakeProgram program;
    MainWindow& window = program.window;
};

} // namespace

TEST_F(AppDelegateTest, ASpotTravelsFromTheNodeToTheLogger)
{
    program.applications.add(loggerName(), QStringLiteral("6.45"));
    FakeConnection& node = connect();
    node.receive("Welcome\r\nlogin: ");
    program.runQueues();
    program.mainQueue.advance(Seconds{1});
    EXPECT_EQ(node.written, QByteArray("N0CALL\n"));
    node.receive(spotLine + "\r\n" + spotLine.chopped(1) + "\r\n");
    program.runQueues();
    ASSERT_EQ(program.center.posted.size(), 1U);
    EXPECT_EQ(program.center.posted[0].name, QStringLiteral("com.tarnbrooksoftware.spotwell_line"));
    EXPECT_EQ(program.center.posted[0].userInfo,
              (UserInfo{{QStringLiteral("line"), QString::fromLatin1(spotLine)},
                        {QStringLiteral("source"), QStringLiteral("dxc.example.org")}}));
    EXPECT_EQ(
        program.console(),
        (QStringList{QStringLiteral("Auto Connect is disabled"), QStringLiteral("openTelnetConnection"),
                     QStringLiteral("teln Welcome"), QStringLiteral("teln login: "),
                     QStringLiteral("loging in"), QStringLiteral("teln ") + QString::fromLatin1(spotLine),
                     QStringLiteral("teln ") + QString::fromLatin1(spotLine.chopped(1))}));
    EXPECT_FALSE(window.lgwtRunningButton->icon().isNull()) << "the line's finding is shown, too";
}

TEST_F(AppDelegateTest, WhatTheNodeSaidComesBeforeItsGoodbye)
{
    FakeConnection& node = connect();
    node.receive("bye\r\n");
    program.runQueues();
    // Within a frame, so that the line waits for its turn.
    node.receive("now\r\n");
    program.queue("telnet_buffer_queue").runPending();
    EXPECT_EQ(program.console().last(), QStringLiteral("teln bye"));
    node.inputEvent(StreamEvent::endEncountered);
    EXPECT_EQ(program.console().mid(program.console().size() - 3),
              (QStringList{QStringLiteral("teln bye"), QStringLiteral("teln now"),
                           QStringLiteral("closeTelnetConnection")}));
    program.mainQueue.advance(Seconds{0.06});
    EXPECT_EQ(program.console().last(), QStringLiteral("closeTelnetConnection"));
}

TEST_F(AppDelegateTest, AnsweringThePasswordFollowsTheField)
{
    FakeConnection& node = connect();
    node.receive("password: ");
    window.password->setText(QStringLiteral("too late"));
    program.queue("telnet_buffer_queue").runPending();
    program.mainQueue.advance(Seconds{2});
    EXPECT_EQ(node.written, QByteArray("too late\n")) << "the field is read when the line is treated";
    window.password->clear();
    node.receive("password: ");
    program.runQueues();
    program.mainQueue.advance(Seconds{2});
    EXPECT_EQ(node.written, QByteArray("too late\n"));
}

TEST_F(AppDelegateTest, TheToggleOpensAndCloses)
{
    FakeConnection& node = connect();
    EXPECT_EQ(program.log.lines.first(), QStringLiteral("connectedPressed:[1]"));
    EXPECT_TRUE(window.connected->isChecked());
    program.log.lines.clear();
    window.connected->click();
    EXPECT_EQ(program.log.lines,
              (QStringList{QStringLiteral("connectedPressed:[0]"),
                           QStringLiteral("DXClusterController:sendTelnet:[5]characters:quit\n"),
                           QStringLiteral("closeTelnetConnection")}));
    EXPECT_EQ(node.written, QByteArray("quit\n"));
    EXPECT_FALSE(window.connected->isChecked());
    EXPECT_TRUE(program.defaults.written.isEmpty()) << "the toggle saves nothing";
}

TEST_F(AppDelegateTest, AFailedOpenSwitchesTheToggleOffAgain)
{
    window.port->setText(QStringLiteral("70000"));
    program.sockets.makeInput = false;
    window.connected->click();
    EXPECT_FALSE(window.connected->isChecked());
    EXPECT_EQ(program.log.lines.last(),
              QStringLiteral("Unable to reach server DXCluster Node:dxc.example.org on Port:70000"));
}

TEST_F(AppDelegateTest, TheFloodRuleSwitchesReconnectOff)
{
    window.reconnectCheckBox->setChecked(true);
    FakeConnection& node = connect();
    for (int i = 0; i < 6; ++i) {
        node.receive(QByteArray(16383, 'x'));
        program.runQueues();
    }
    EXPECT_FALSE(window.reconnectCheckBox->isChecked());
    EXPECT_FALSE(window.connected->isChecked());
}

TEST_F(AppDelegateTest, EachBoxSavesAllElevenSettings)
{
    for (QAbstractButton* box : std::initializer_list<QAbstractButton*>{
             window.wsprnetCheckBox, window.dxsummitCheckBox, window.potaCheckBox, window.skimmersCheckBox,
             window.dxsExclusiveCheckBox, window.darkCheckBox}) {
        program.defaults.written.clear();
        window.dxcluster->setText(box->objectName());
        EXPECT_TRUE(program.defaults.written.isEmpty()) << "typing saves nothing";
        box->click();
        EXPECT_EQ(program.defaults.written.size(), 11) << box->objectName().toStdString();
        EXPECT_EQ(program.defaults.strings[QStringLiteral("dxcluster")], box->objectName());
        EXPECT_TRUE(box->isChecked());
    }
    for (const char* key : {"wsprnet", "dxsummit", "pota", "skimmers", "dxsexclusive", "dark"})
        EXPECT_TRUE(program.defaults.booleans[QLatin1String(key)]) << key;
}

TEST_F(AppDelegateTest, TheReconnectBoxSavesNothing)
{
    window.reconnectCheckBox->click();
    EXPECT_TRUE(program.defaults.written.isEmpty());
    window.darkCheckBox->click();
    EXPECT_TRUE(program.defaults.booleans[QStringLiteral("reconnect")]);
}

TEST_F(AppDelegateTest, TheOptionBoxesFollowTheirFeedsAndKeepTheirState)
{
    const std::pair<QAbstractButton*, QAbstractButton*> pairs[] = {
        {window.dxsummitCheckBox, window.dxsExclusiveCheckBox},
        {window.potaCheckBox, window.skimmersCheckBox}};
    for (const auto& [feed, option] : pairs) {
        feed->click();
        EXPECT_TRUE(option->isEnabled());
        option->click();
        feed->click();
        EXPECT_FALSE(option->isEnabled());
        EXPECT_TRUE(option->isChecked());
        feed->click();
        EXPECT_TRUE(option->isEnabled());
        EXPECT_TRUE(option->isChecked());
    }
}

TEST_F(AppDelegateTest, TheDarkBoxChangesTheWindow)
{
    window.darkCheckBox->click();
    EXPECT_EQ(window.palette().color(QPalette::Base), darkAppearnace().palette.color(QPalette::Base));
    window.darkCheckBox->click();
    EXPECT_EQ(window.palette().color(QPalette::Base), lightAppearnace().palette.color(QPalette::Base));
}

TEST_F(AppDelegateTest, TheBulbFollowsTheLoggerEveryFiveSeconds)
{
    const int reads = program.applications.reads;
    program.mainQueue.advance(Seconds{4.999});
    EXPECT_TRUE(window.lgwtRunningButton->icon().isNull());
    program.mainQueue.advance(Seconds{0.001});
    EXPECT_EQ(program.applications.reads, reads + 1);
    const qint64 grey = window.lgwtRunningButton->icon().cacheKey();
    EXPECT_FALSE(window.lgwtRunningButton->icon().isNull());
    program.applications.add(loggerName(), QStringLiteral("7"));
    program.mainQueue.advance(Seconds{5});
    const qint64 green = window.lgwtRunningButton->icon().cacheKey();
    EXPECT_NE(green, grey);
    EXPECT_EQ(window.lgwtRunningButton->toolTip(), QStringLiteral("Logwright is running"));
    program.applications.applications.clear();
    program.mainQueue.advance(Seconds{5});
    EXPECT_EQ(window.lgwtRunningButton->icon().cacheKey(), grey);
    EXPECT_EQ(window.lgwtRunningButton->toolTip(), QStringLiteral("Logwright is not running"));
    EXPECT_TRUE(program.log.lines.isEmpty()) << "the ticks log nothing";
}

TEST_F(AppDelegateTest, ALineWhoseFindingIsShownAlreadyLeavesTheBulbAlone)
{
    program.applications.add(loggerName(), QStringLiteral("6.45"));
    ToolTipCounter counter;
    window.lgwtRunningButton->installEventFilter(&counter);
    FakeConnection& node = connect();
    node.receive(spotLine + "\r\n");
    program.runQueues();
    EXPECT_EQ(counter.changes, 1);
    node.receive(spotLine + "\r\n" + spotLine + "\r\n");
    program.runQueues();
    EXPECT_EQ(counter.changes, 1);
    program.mainQueue.advance(Seconds{5});
    EXPECT_EQ(counter.changes, 2) << "a tick sets it all the same";
    program.applications.applications.clear();
    node.receive(spotLine + "\r\n");
    program.runQueues();
    EXPECT_EQ(counter.changes, 3);
}

TEST_F(AppDelegateTest, ShowsTheLogFileInItsFolder)
{
    window.showDebugLogButton->click();
    ASSERT_EQ(program.fileViewer.shown.size(), 1U);
    EXPECT_EQ(program.fileViewer.shown[0].first, program.process.reopened[0]);
    EXPECT_EQ(program.fileViewer.shown[0].second, program.logDirectory);
}

TEST_F(AppDelegateTest, EndingSavesAndSaysGoodbye)
{
    FakeConnection& node = connect();
    window.dxcluster->setText(QStringLiteral("other.example.org"));
    program.delegate.applicationWillTerminate();
    EXPECT_EQ(program.defaults.written.size(), 11);
    EXPECT_EQ(program.defaults.strings[QStringLiteral("dxcluster")], QStringLiteral("other.example.org"));
    EXPECT_EQ(node.written, QByteArray("quit\n"));
    EXPECT_EQ(program.log.lines.last(), QStringLiteral("closeTelnetConnection"));
    EXPECT_EQ(program.console().last(), QStringLiteral("closeTelnetConnection"));
}

TEST_F(AppDelegateTest, AppendingToNoConsoleDoesNothing)
{
    const QStringList before = program.console();
    program.delegate.appendText(QStringLiteral("lost"), nullptr);
    EXPECT_EQ(program.console(), before);
}

TEST_F(AppDelegateTest, ASlowLoggerDelaysOnlyTheLinesBehind)
{
    program.applications.add(loggerName(), QStringLiteral("6.44"));
    FakeConnection& node = connect();
    for (int i = 0; i < 40; ++i) {
        node.receive(spotLine + "\n");
        program.queue("telnet_buffer_queue").runPending();
        program.mainQueue.runPending();
    }
    EXPECT_FALSE(node.held) << "lines that wait for the logger do not hold the node";
    EXPECT_EQ(program.queue("queue").pendingCount(), 40U);
    program.runQueues();
    EXPECT_EQ(program.scripts.scripts.size(), 40);
}

} // namespace spotwell
