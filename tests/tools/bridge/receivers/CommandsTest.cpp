// SPDX-FileCopyrightText: 2026 the spotwell developers
// SPDX-License-Identifier: MIT

#include "tests/tools/bridge/receivers/InterfaceDocument.h"
#include "tests/tools/bridge/receivers/LoggerFixture.h"

#include <QDir>
#include <QFile>
#include <QRegularExpression>
#include <QTemporaryDir>

#include <optional>

namespace spotwell
{

namespace
{

using namespace Qt::Literals::StringLiterals;

const std::string testLine =
    "DX de N0CALL:    21205.0  X1X          Tks so Much                   1428Z JN34";

/// The commands of docs/logger-interface.md do what it says.
class CommandsTest : public LoggerFixture
{
protected:
    /// The document's commands for trying things, in order.
    static QStringList trials() { return commands(codeBlocks(u"Trying it"_s).join(u'\n')); }
    /// The one that begins so.
    static QString trial(const QString& beginning)
    {
        const QStringList found =
            trials().filter(QRegularExpression(u'^' + QRegularExpression::escape(beginning)));
        EXPECT_EQ(found.size(), 1) << beginning.toStdString();
        return found.value(0);
    }
    static QString receiverCommand(qsizetype block, qsizetype index)
    {
        return commands(codeBlocks(u"Receivers to start from"_s).value(block)).value(index);
    }
    /// Starts a logger and reads its first line.
    std::string startLogger(const QString& command, const QString& directory = u"/"_s)
    {
        logger = start(command, directory);
        return logger->readLine().value_or("");
    }
    /// The logger's next line; the bridge's without the time it was received.
    std::string nextLine()
    {
        static const QRegularExpression received(u",\"received\":\"[-0-9T:.]{26}Z\"\\}$"_s);
        QString line = QString::fromStdString(logger->readLine().value_or("nothing came"));
        return line.replace(received, u"}"_s).toStdString();
    }
    /// The lines of a monitor up to the first that ends so, its own included.
    static QStringList linesUpTo(ChildProcess& monitor, const QString& ending)
    {
        QStringList result;
        while (const auto line = monitor.readLine()) {
            result << QString::fromStdString(*line);
            if (result.last().endsWith(ending))
                break;
        }
        return result;
    }

    std::unique_ptr<ChildProcess> logger;
};

TEST_F(CommandsTest, AreAllTried)
{
    const QStringList tried{
        u"spotwell-bridge --print"_s,
        u"spotwell-bridge --print --logger-version 6.44"_s,
        u"spotwell-bridge --print --no-version --script-error \"No.\""_s,
        u"spotwell-bridge --help"_s,
        u"gdbus emit"_s,
        u"busctl --user emit"_s,
        u"busctl --user call"_s,
        u"busctl --user introspect"_s,
        u"gdbus call"_s,
        u"dbus-monitor"_s,
    };
    const QStringList present = trials();
    ASSERT_EQ(present.size(), tried.size());
    for (qsizetype index = 0; index < tried.size(); ++index)
        EXPECT_TRUE(present[index].startsWith(tried[index])) << present[index].toStdString();
    const QStringList receivers = codeBlocks(u"Receivers to start from"_s);
    ASSERT_EQ(receivers.size(), 3);
    EXPECT_EQ(commands(receivers[0]).size(), 3);
    EXPECT_EQ(commands(receivers[1]), (QStringList{u"./receiver.py"_s, u"./receiver.py 6.44"_s}));
    EXPECT_EQ(commands(receivers[2]).size(), 1);
}

TEST_F(CommandsTest, ReachABridgeThatPrints)
{
    EXPECT_EQ(startLogger(trials().value(0)),
              R"({"ready":true,"name":"com.tarnbrooksoftware.Application.Logwright",)"
              R"("displayName":"Logwright","version":"6.45"})");
    EXPECT_EQ(run(trial(u"gdbus emit"_s)), "");
    EXPECT_EQ(nextLine(), R"({"notification":"com.tarnbrooksoftware.spotwell_line","object":"string object",)"
                          R"("userInfo":{"line":")" +
                              testLine + R"(","source":"node"}})");
    EXPECT_EQ(run(trial(u"busctl --user emit"_s)), "");
    EXPECT_EQ(nextLine(), R"({"notification":"com.tarnbrooksoftware.spotwell_spot","object":"string object",)"
                          R"("userInfo":{"combinedCallsign":"X1X","timestamp":"2027-02-03T09:05:07.123456Z",)"
                          R"("megahertz":14.074,"dxde_call":"N0CALL"}})");
    EXPECT_EQ(run(trial(u"busctl --user call"_s)), "");
    EXPECT_EQ(nextLine(), R"({"command":"processSpot","text":"DX de N0CALL:    21205.0  X1X"})");
}

TEST_F(CommandsTest, MakeABridgeThatTakesTheCommand)
{
    EXPECT_EQ(startLogger(trials().value(1)),
              R"({"ready":true,"name":"com.tarnbrooksoftware.Application.Logwright",)"
              R"("displayName":"Logwright","version":"6.44"})");
    deliver(u"DX de \"x\""_s);
    EXPECT_EQ(nextLine(), R"({"command":"processSpot","text":"DX de .x."})");
    EXPECT_EQ(console, QStringList{});
}

TEST_F(CommandsTest, MakeABridgeThatRefuses)
{
    EXPECT_EQ(startLogger(trials().value(2)),
              R"({"ready":true,"name":"com.tarnbrooksoftware.Application.Logwright",)"
              R"("displayName":"Logwright"})");
    deliver(u"DX de x"_s);
    EXPECT_EQ(console, QStringList{u"AppleScript Error:No."_s});
}

TEST_F(CommandsTest, ExplainTheBridge)
{
    EXPECT_EQ(run(trials().value(3)).rfind("Usage: spotwell-bridge", 0), 0U);
}

TEST_F(CommandsTest, ShowWhatALoggerExports)
{
    startLogger(u"spotwell-bridge --print"_s);
    const QString table = QString::fromStdString(run(trial(u"busctl --user introspect"_s))).simplified();
    for (const QString& row :
         {u"com.tarnbrooksoftware.Application interface - - -"_s,
          u".DisplayName property s \"Logwright\" const"_s, u".Version property s \"6.45\" const"_s,
          u"com.tarnbrooksoftware.Scripting interface - - -"_s, u".processSpot method s - -"_s})
        EXPECT_TRUE(table.contains(row)) << row.toStdString();
    EXPECT_EQ(run(trial(u"gdbus call"_s)), "({'DisplayName': <'Logwright'>, 'Version': <'6.45'>},)\n");
}

TEST_F(CommandsTest, ShowWhatPassesInWords)
{
    const auto monitor = start(trial(u"dbus-monitor"_s));
    linesUpTo(*monitor, u"member=NameLost"_s); // of its own name: it monitors from now on
    linesUpTo(*monitor, u"\""_s);
    run(trial(u"busctl --user emit"_s));
    const QStringList message = linesUpTo(*monitor, u"   ]"_s);
    EXPECT_TRUE(message.value(0).endsWith(u"path=/com/tarnbrooksoftware/DistributedNotifications; "
                                          "interface=com.tarnbrooksoftware.DistributedNotifications; "
                                          "member=Posted"_s));
    EXPECT_EQ(message.mid(1).join(u' ').simplified(),
              u"string \"com.tarnbrooksoftware.spotwell_spot\" string \"string object\" array [ "
              "dict entry( string \"combinedCallsign\" variant string \"X1X\" ) "
              "dict entry( string \"timestamp\" variant int64 1801645507123456 ) "
              "dict entry( string \"megahertz\" variant double 14.074 ) "
              "dict entry( string \"dxde_call\" variant string \"N0CALL\" ) ]"_s);
}

TEST_F(CommandsTest, ShowWhatPassesAsJson)
{
    const auto monitor = start(receiverCommand(2, 0));
    ASSERT_EQ(monitor->readLine(), "Monitoring bus message stream.");
    deliverSpot();
    const std::string message = monitor->readLine().value_or("");
    EXPECT_EQ(
        message.substr(std::min(message.find("\"payload\""), message.size())),
        R"("payload":{"type":"ssa{sv}","data":["com.tarnbrooksoftware.spotwell_spot","string object",{)"
        R"("combinedCallsign":{"type":"s","data":"X1X/P"},"mode":{"type":"s","data":"FT8"},)"
        R"("timestamp":{"type":"x","data":1801645507000450},)"
        R"("megahertz":{"type":"d","data":1.407450000000000045475e+01},)"
        R"("comments":{"type":"s","data":"“Grüße” \\ 日本 📻"},"source":{"type":"s","data":"POTA"},)"
        R"("grid":{"type":"s","data":"JN34ab"},)"
        R"("latitude":{"type":"d","data":-3.385678399999999754755e+01},)"
        R"("longitude":{"type":"d","data":1.512152969999999925221e+02},)"
        R"("dxde_call":{"type":"s","data":""},)"
        R"("de_latitude":{"type":"d","data":1.000000000000000055511e-01},)"
        R"("de_longitude":{"type":"d","data":-7.250000000000000000000e+00},"pota_ref":{"type":"s","data":"DE-0001"}}]}})");
}

TEST_F(CommandsTest, BuildTheReceiverAnywhere)
{
    const QTemporaryDir directory;
    const QDir sources(QStringLiteral(EXAMPLES "/qtdbus-receiver"));
    for (const QString& file : sources.entryList(QDir::Files))
        ASSERT_TRUE(QFile::copy(sources.filePath(file), directory.filePath(file)));
    // The tools of this build: others need not be there.
    run(u"env " GENERATOR_AND_COMPILER " "_s + receiverCommand(0, 0), directory.path());
    run(receiverCommand(0, 1), directory.path());
    EXPECT_EQ(startLogger(receiverCommand(0, 2), directory.path()),
              R"({"ready":{"name":"com.tarnbrooksoftware.Application.QtReceiver"}})");
}

TEST_F(CommandsTest, StartThePythonReceiver)
{
    const QString directory = QStringLiteral(EXAMPLES "/python-receiver");
    EXPECT_EQ(startLogger(receiverCommand(1, 0), directory),
              R"({"ready":{"name":"com.tarnbrooksoftware.Application.PythonReceiver"}})");
    EXPECT_EQ(applications.runningApplications().at(0).information->shortVersion, u"6.45"_s);
    logger.reset();
    ASSERT_TRUE(waitUntil([this] { return applications.runningApplications().empty(); }));
    startLogger(receiverCommand(1, 1), directory);
    EXPECT_EQ(applications.runningApplications().at(0).information->shortVersion, u"6.44"_s);
}

} // namespace

} // namespace spotwell
