// SPDX-FileCopyrightText: 2026 the spotwell developers
// SPDX-License-Identifier: MIT

#include "tests/app/FakeProgram.h"

#include <QRegularExpression>
#include <gtest/gtest.h>

namespace spotwell
{

namespace
{

/// The program with a journal of what it asks of its platform, in one order.
struct OrderTest : testing::Test {
    OrderTest()
    {
        program.defaults.strings[QStringLiteral("dxcluster")] = QStringLiteral("dxc.example.org");
        program.defaults.strings[QStringLiteral("callsign")] = QStringLiteral("N0CALL");
        program.defaults.strings[QStringLiteral("port")] = QStringLiteral("7300");
        program.applications.add(loggerName(), QStringLiteral("6.45"));
    }
    void launch()
    {
        program.launch();
        program.keepJournal();
    }

    FakeProgram program;
    MainWindow& window = program.window;
};

QStringList entries(const QString& verb, std::initializer_list<const char*> names)
{
    QStringList list;
    for (const char* name : names)
        list.append(verb + QLatin1String(name));
    return list;
}

QStringList allSettingsWritten()
{
    return entries(QStringLiteral("write "),
                   {"dxcluster", "password", "port", "callsign", "reconnect", "wsprnet", "dxsummit", "pota",
                    "skimmers", "dxsexclusive", "dark"});
}

} // namespace

TEST_F(OrderTest, TheStepsOfStartUp)
{
    program.defaults.booleans[QStringLiteral("reconnect")] = true;
    program.defaults.booleans[QStringLiteral("dark")] = true;
    program.keepJournal();
    QStringList expected{
        QStringLiteral("URL session"),
        QStringLiteral("log applicationDidFinishLaunching: created: ") + program.logDirectory,
        QStringLiteral("reopen standard error"), QStringLiteral("log applicationDidFinishLaunching:v1.2.3")};
    expected += entries(QStringLiteral("queue com.tarnbrooksoftware.spotwell_"),
                        {"queue", "telnet_buffer_queue", "wsprnet_background_queue",
                         "dxsummit_background_queue", "pota_background_queue"});
    expected +=
        entries(QStringLiteral("read "), {"dxcluster", "password", "port", "callsign", "reconnect", "wsprnet",
                                          "dxsummit", "pota", "skimmers", "dxsexclusive", "dark"});
    expected += QStringLiteral("look for applications");
    expected += QStringLiteral("log appIsRunning:Logwright Version 6.45 is running");
    expected += QStringLiteral("every 5 s");
    expected += QStringList(5, QStringLiteral("every 1 s"));
    expected += QStringLiteral("log openTelnetConnection");
    expected += QStringLiteral("streams to dxc.example.org");
    expected += QStringLiteral("log Node:dxc.example.org Opened on Port:7300 istream status:[1] ostream "
                               "status:[1]");
    expected += QStringLiteral("ask for the contrast");
    program.launch();
    EXPECT_EQ(program.journal, expected);
}

TEST_F(OrderTest, TheTimersOfASecond)
{
    program.defaults.booleans[QStringLiteral("reconnect")] = true;
    for (const char* feed : {"wsprnet", "dxsummit", "pota"})
        program.defaults.booleans[QLatin1String(feed)] = true;
    launch();
    // The first tick comes late: the silent node is given up, and there was no word for more than a minute.
    program.clock.advance(Seconds{100});
    program.mainQueue.advance(Seconds{0});
    QStringList first = program.journal.mid(
        0, program.journal.indexOf(QRegularExpression(QStringLiteral("^work for .*pota.*$"))) + 1);
    first.removeIf([](const QString& entry) { return entry.startsWith(QLatin1String("log Node:")); });
    EXPECT_EQ(
        first,
        (QStringList{QStringLiteral("log DXClusterController:loginTimeoutTimer:Waited 30 seconds for "
                                    "data, giving up."),
                     QStringLiteral("log DXClusterController:sendTelnet:[5]characters:quit\n"),
                     QStringLiteral("log closeTelnetConnection"),
                     QStringLiteral("log Attempting Reconnect with dxc.example.org"),
                     QStringLiteral("log openTelnetConnection"), QStringLiteral("streams to dxc.example.org"),
                     QStringLiteral("work for com.tarnbrooksoftware.spotwell_wsprnet_background_queue"),
                     QStringLiteral("work for com.tarnbrooksoftware.spotwell_dxsummit_background_queue"),
                     QStringLiteral("work for com.tarnbrooksoftware.spotwell_pota_background_queue")}));
}

TEST_F(OrderTest, TheWindowIsDressedBeforeTheLoggerIsLookedFor)
{
    program.defaults.booleans[QStringLiteral("dark")] = true;
    QColor base;
    program.applications.note = [&](const QString&) { base = window.palette().color(QPalette::Base); };
    program.launch();
    EXPECT_EQ(base, darkAppearnace().palette.color(QPalette::Base));
}

TEST_F(OrderTest, EndingSavesBeforeItCloses)
{
    launch();
    window.connected->click();
    program.sockets.last().inputEvent(StreamEvent::openCompleted);
    program.journal.clear();
    program.delegate.applicationWillTerminate();
    QStringList expected = allSettingsWritten();
    expected += QStringLiteral("log DXClusterController:sendTelnet:[5]characters:quit\n");
    expected += QStringLiteral("log closeTelnetConnection");
    EXPECT_EQ(program.journal, expected);
}

TEST_F(OrderTest, TheDarkBoxDressesTheWindowBeforeItSaves)
{
    launch();
    QList<QColor> bases;
    program.defaults.note = [&](const QString&) { bases.append(window.palette().color(QPalette::Base)); };
    window.darkCheckBox->click();
    EXPECT_EQ(bases, QList<QColor>(11, darkAppearnace().palette.color(QPalette::Base)));
    bases.clear();
    window.darkCheckBox->click();
    EXPECT_EQ(bases, QList<QColor>(11, lightAppearnace().palette.color(QPalette::Base)));
}

TEST_F(OrderTest, AFeedsBoxFreesItsOptionBeforeItSaves)
{
    launch();
    const std::pair<QAbstractButton*, QAbstractButton*> pairs[] = {
        {window.dxsummitCheckBox, window.dxsExclusiveCheckBox},
        {window.potaCheckBox, window.skimmersCheckBox}};
    for (const auto& [feed, option] : pairs) {
        QList<bool> enabled;
        program.defaults.note = [&, box = option](const QString&) { enabled.append(box->isEnabled()); };
        feed->click();
        EXPECT_EQ(enabled, QList<bool>(11, true));
        enabled.clear();
        feed->click();
        EXPECT_EQ(enabled, QList<bool>(11, false));
    }
}

TEST_F(OrderTest, PressingOffWithoutAConnectionClosesAllTheSame)
{
    launch();
    // The toggle may be on without a connection: a login that comes late sets it.
    window.connected->setChecked(true);
    window.connected->click();
    EXPECT_EQ(program.journal, (QStringList{QStringLiteral("log connectedPressed:[0]"),
                                            QStringLiteral("log closeTelnetConnection")}));
    EXPECT_EQ(program.console().last(), QStringLiteral("closeTelnetConnection"));
    EXPECT_FALSE(window.connected->isChecked());
}

} // namespace spotwell
