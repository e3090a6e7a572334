// SPDX-FileCopyrightText: 2026 the spotwell developers
// SPDX-License-Identifier: MIT

#include "tests/app/FakeProgram.h"

#include <QFileInfo>
#include <gtest/gtest.h>

namespace spotwell
{

namespace
{

struct StartUpTest : testing::Test {
    FakeProgram program;

    void setTexts(const char* host, const char* callsign)
    {
        program.defaults.strings[QStringLiteral("dxcluster")] = QString::fromLatin1(host);
        program.defaults.strings[QStringLiteral("callsign")] = QString::fromLatin1(callsign);
    }
};

} // namespace

TEST_F(StartUpTest, NothingHappensBeforeIt)
{
    EXPECT_EQ(program.urlSession, nullptr);
    EXPECT_TRUE(program.queues.empty());
    EXPECT_EQ(program.mainQueue.timerCount(), 0U);
    EXPECT_TRUE(program.log.lines.isEmpty());
    EXPECT_EQ(program.applications.reads, 0);
    EXPECT_FALSE(QFileInfo::exists(program.logDirectory));
    EXPECT_EQ(program.delegate.tb_medium_timeout_session(), nullptr);
}

TEST_F(StartUpTest, AFirstRunHasEverythingOff)
{
    program.launch();
    const MainWindow& window = program.window;
    for (const QLineEdit* field : {window.dxcluster, window.port, window.callsign, window.password})
        EXPECT_TRUE(field->text().isEmpty());
    for (const QAbstractButton* box : std::initializer_list<const QAbstractButton*>{
             window.reconnectCheckBox, window.wsprnetCheckBox, window.dxsummitCheckBox, window.potaCheckBox,
             window.skimmersCheckBox, window.dxsExclusiveCheckBox, window.darkCheckBox, window.connected})
        EXPECT_FALSE(box->isChecked());
    EXPECT_FALSE(window.skimmersCheckBox->isEnabled());
    EXPECT_FALSE(window.dxsExclusiveCheckBox->isEnabled());
    EXPECT_EQ(window.palette().color(QPalette::Base), lightAppearnace().palette.color(QPalette::Base));
    EXPECT_EQ(program.console(), QStringList{QStringLiteral("Auto Connect is disabled")});
    EXPECT_TRUE(program.sockets.connections.empty());
    EXPECT_EQ(program.mainQueue.timerCount(), 6U);
    EXPECT_TRUE(program.defaults.written.isEmpty());
    EXPECT_TRUE(window.lgwtRunningButton->icon().isNull()) << "no bulb before the first finding";
}

TEST_F(StartUpTest, LogsItsStepsAroundTheRedirection)
{
    program.applications.add(loggerName(), QStringLiteral("6.45"));
    program.launch();
    EXPECT_EQ(program.log.lines,
              (QStringList{QStringLiteral("applicationDidFinishLaunching: created: ") + program.logDirectory,
                           QStringLiteral("applicationDidFinishLaunching:v1.2.3"),
                           QStringLiteral("appIsRunning:Logwright Version 6.45 is running")}));
    EXPECT_EQ(program.process.reopened.size(), 1);
    EXPECT_TRUE(program.process.reopened[0].startsWith(program.logDirectory + QStringLiteral("/2027")));
    EXPECT_TRUE(program.process.reopened[0].endsWith(QStringLiteral(" spotwell.txt")));
    EXPECT_TRUE(QFileInfo(program.logDirectory).isDir());
    EXPECT_EQ(program.applications.reads, 1);
}

TEST_F(StartUpTest, ADirectoryThatCannotBeMadeStopsNothing)
{
    QFile inTheWay(program.directory.filePath(QStringLiteral("state")));
    ASSERT_TRUE(inTheWay.open(QIODevice::WriteOnly));
    program.launch();
    EXPECT_TRUE(program.log.lines.first().startsWith(
        QStringLiteral("applicationDidFinishLaunching: error creating: ") + program.logDirectory +
        QStringLiteral(" - ")));
    EXPECT_EQ(program.process.reopened.size(), 1);
    EXPECT_EQ(program.console(), QStringList{QStringLiteral("Auto Connect is disabled")});
    EXPECT_EQ(program.mainQueue.timerCount(), 6U);
}

TEST_F(StartUpTest, BuildsTheUrlSession)
{
    program.launch();
    ASSERT_NE(program.urlSession, nullptr);
    EXPECT_EQ(program.delegate.tb_medium_timeout_session(), program.urlSession);
    const UrlSessionConfiguration& configuration = program.urlSession->configuration;
    EXPECT_EQ(configuration.requestCachePolicy,
              UrlSessionConfiguration::CachePolicy::reloadIgnoringLocalCacheData);
    EXPECT_EQ(static_cast<int>(configuration.requestCachePolicy), 1);
    EXPECT_EQ(configuration.timeoutIntervalForRequest, Seconds{30.0});
    EXPECT_EQ(configuration.timeoutIntervalForResource, Seconds{45.0});
}

TEST_F(StartUpTest, MakesTheFiveQueuesInOrder)
{
    program.launch();
    QStringList labels;
    for (const FakeSerialQueue* queue : program.queues)
        labels.append(queue->label());
    EXPECT_EQ(labels, (QStringList{QStringLiteral("com.tarnbrooksoftware.spotwell_queue"),
                                   QStringLiteral("com.tarnbrooksoftware.spotwell_telnet_buffer_queue"),
                                   QStringLiteral("com.tarnbrooksoftware.spotwell_wsprnet_background_queue"),
                                   QStringLiteral("com.tarnbrooksoftware.spotwell_dxsummit_background_queue"),
                                   QStringLiteral("com.tarnbrooksoftware.spotwell_pota_background_queue")}));
}

TEST_F(StartUpTest, SchedulesSixTimers)
{
    program.launch();
    EXPECT_EQ(program.mainQueue.intervals, (std::vector{Seconds{5.0}, Seconds{1.0}, Seconds{1.0},
                                                        Seconds{1.0}, Seconds{1.0}, Seconds{1.0}}));
    program.mainQueue.advance(Seconds{3600});
    EXPECT_EQ(program.mainQueue.timerCount(), 6U) << "for the life of the process";
}

TEST_F(StartUpTest, ReadsTheSettingsIntoTheControls)
{
    setTexts("dxc.example.org", "N0CALL");
    program.defaults.strings[QStringLiteral("port")] = QStringLiteral("7300");
    program.defaults.strings[QStringLiteral("password")] = QStringLiteral("secret");
    for (const char* key : {"wsprnet", "dxsummit", "skimmers", "dxsexclusive", "dark"})
        program.defaults.booleans[QLatin1String(key)] = true;
    program.launch();
    const MainWindow& window = program.window;
    EXPECT_EQ(window.dxcluster->text(), QStringLiteral("dxc.example.org"));
    EXPECT_EQ(window.port->text(), QStringLiteral("7300"));
    EXPECT_EQ(window.callsign->text(), QStringLiteral("N0CALL"));
    EXPECT_EQ(window.password->text(), QStringLiteral("secret"));
    EXPECT_FALSE(window.reconnectCheckBox->isChecked());
    EXPECT_TRUE(window.wsprnetCheckBox->isChecked());
    EXPECT_TRUE(window.dxsummitCheckBox->isChecked());
    EXPECT_TRUE(window.dxsExclusiveCheckBox->isChecked());
    EXPECT_TRUE(window.dxsExclusiveCheckBox->isEnabled());
    EXPECT_FALSE(window.potaCheckBox->isChecked());
    EXPECT_TRUE(window.skimmersCheckBox->isChecked()) << "on, but not to be used while POTA is off";
    EXPECT_FALSE(window.skimmersCheckBox->isEnabled());
    EXPECT_TRUE(window.darkCheckBox->isChecked());
    EXPECT_EQ(window.palette().color(QPalette::Base), darkAppearnace().palette.color(QPalette::Base));
    EXPECT_TRUE(program.defaults.written.isEmpty()) << "reading saves nothing";
}

TEST_F(StartUpTest, EnablesThePotaOptionWithItsFeed)
{
    program.defaults.booleans[QStringLiteral("pota")] = true;
    program.launch();
    EXPECT_TRUE(program.window.skimmersCheckBox->isEnabled());
    EXPECT_FALSE(program.window.skimmersCheckBox->isChecked());
    EXPECT_FALSE(program.window.dxsExclusiveCheckBox->isEnabled());
}

TEST_F(StartUpTest, ConnectsWithHostAndCallsign)
{
    setTexts("dxc.example.org", "N0CALL");
    program.defaults.booleans[QStringLiteral("reconnect")] = true;
    program.launch();
    ASSERT_EQ(program.sockets.connections.size(), 1U);
    EXPECT_EQ(program.sockets.last().host, QStringLiteral("dxc.example.org"));
    EXPECT_EQ(program.sockets.last().port, 23U) << "the port is not asked for";
    EXPECT_TRUE(program.window.connected->isChecked());
    EXPECT_EQ(program.console(), QStringList{QStringLiteral("openTelnetConnection")});
}

TEST_F(StartUpTest, SaysNothingWhereHostOrCallsignAreMissing)
{
    const std::pair<const char*, const char*> rows[] = {{"", "N0CALL"}, {"dxc.example.org", ""}, {"", ""}};
    for (const auto& [host, callsign] : rows) {
        FakeProgram other;
        other.defaults.strings[QStringLiteral("dxcluster")] = QString::fromLatin1(host);
        other.defaults.strings[QStringLiteral("callsign")] = QString::fromLatin1(callsign);
        other.defaults.booleans[QStringLiteral("reconnect")] = true;
        other.launch();
        EXPECT_TRUE(other.sockets.connections.empty());
        EXPECT_FALSE(other.window.connected->isChecked());
        EXPECT_TRUE(other.console().isEmpty());
    }
}

TEST_F(StartUpTest, DoesNotConnectWithReconnectOff)
{
    setTexts("dxc.example.org", "N0CALL");
    program.launch();
    EXPECT_TRUE(program.sockets.connections.empty());
    EXPECT_EQ(program.console(), QStringList{QStringLiteral("Auto Connect is disabled")});
}

} // namespace spotwell
