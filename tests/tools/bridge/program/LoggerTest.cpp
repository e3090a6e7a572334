// SPDX-FileCopyrightText: 2026 the spotwell developers
// SPDX-License-Identifier: MIT

#include "platform/linux/bus/BusScriptRunner.h"
#include "tests/support/bus/BusPeer.h"
#include "tests/tools/bridge/program/BridgeFixture.h"

#include <QRegularExpression>

#include <csignal>

namespace spotwell::bridge
{

namespace
{

using namespace Qt::Literals::StringLiterals;
using namespace std::chrono_literals;

const QString script = u"Tell application \"Logwright\"\nprocessSpot \"DX de\"\nend tell\n"_s;
const QString busName = u"com.tarnbrooksoftware.Application.Logwright"_s;

class LoggerTest : public BridgeFixture
{
protected:
    /// The next line of JSON, with the time it was received taken off.
    QString nextReport()
    {
        static const QRegularExpression received(
            u",\"received\":\"\\d{4}-\\d\\d-\\d\\dT\\d\\d:\\d\\d:\\d\\d\\.\\d{6}Z\"\\}$"_s);
        return QString::fromStdString(nextLine()).replace(received, u"}"_s);
    }
};

TEST_F(LoggerTest, ShowsItself)
{
    EXPECT_EQ(start(), ready + asLogwright + "}");
    auto list = applications.runningApplications();
    ASSERT_EQ(list.size(), 1U);
    EXPECT_EQ(list[0].displayName, u"Logwright"_s);
    EXPECT_EQ(list[0].information->shortVersion, u"6.45"_s);

    bridge.reset();
    EXPECT_TRUE(waitUntil([this] { return applications.runningApplications().empty(); }));
    EXPECT_EQ(start({"--no-version", "--display-name", "My Log"}), ready + "\"displayName\":\"My Log\"}");
    list = applications.runningApplications();
    ASSERT_EQ(list.size(), 1U);
    EXPECT_EQ(list[0].displayName, u"My Log"_s);
    EXPECT_FALSE(list[0].information->shortVersion);

    bridge.reset();
    EXPECT_TRUE(waitUntil([this] { return applications.runningApplications().empty(); }));
    EXPECT_EQ(start({"--logger-version", "6.44"}),
              ready + "\"displayName\":\"Logwright\",\"version\":\"6.44\"}");
    EXPECT_EQ(applications.runningApplications().at(0).information->shortVersion, u"6.44"_s);
}

TEST_F(LoggerTest, SaysWhenItHandsNothingOn)
{
    start();
    EXPECT_EQ(nextLine(), "spotwell-bridge: hands nothing on; spotwell-bridge --help shows how it does");
}

TEST_F(LoggerTest, PrintsBothNotifications)
{
    start({"--print", "--count", "2"});
    center.post(u"com.tarnbrooksoftware.other"_s, u"string object"_s, {});
    center.post(u"com.tarnbrooksoftware.spotwell_line"_s, u"string object"_s,
                {{u"line"_s, u"DX de \"x\""_s}, {u"source"_s, u"node"_s}});
    center.post(u"com.tarnbrooksoftware.spotwell_spot"_s, u"string object"_s,
                {{u"timestamp"_s, TimePoint{std::chrono::microseconds{1801645507123456}}},
                 {u"megahertz"_s, 14.074},
                 {u"dxde_call"_s, u""_s}});
    post(u"one too many"_s);
    EXPECT_EQ(nextReport(),
              u"{\"notification\":\"com.tarnbrooksoftware.spotwell_line\",\"object\":\"string object\","
              "\"userInfo\":{\"line\":\"DX de \\\"x\\\"\",\"source\":\"node\"}}"_s);
    EXPECT_EQ(nextReport(), u"{\"notification\":\"com.tarnbrooksoftware.spotwell_spot\",\"object\":\"string "
                            "object\",\"userInfo\":{\"timestamp\":\"2027-02-03T09:05:07.123456Z\","
                            "\"megahertz\":14.074,\"dxde_call\":\"\"}}"_s);
    EXPECT_EQ(nextReport(), QString());
    EXPECT_EQ(bridge->wait(), 0);
}

TEST_F(LoggerTest, LeavesOutNotificationsOfAnotherShape)
{
    start({"--print", "--count", "1"});
    const auto emitBadly = [this](const std::vector<std::string>& arguments) {
        std::vector<std::string> emitter{"busctl",
                                         "--user",
                                         "emit",
                                         "/com/tarnbrooksoftware/DistributedNotifications",
                                         "com.tarnbrooksoftware.DistributedNotifications",
                                         "Posted"};
        emitter.insert(emitter.end(), arguments.begin(), arguments.end());
        EXPECT_EQ(ChildProcess(emitter, {bus.environment()}).wait(), 0);
    };
    const std::string name = "com.tarnbrooksoftware.spotwell_line";
    emitBadly({"s", name});
    emitBadly({"ssa{ss}", name, "string object", "1", "line", "x"});
    const UserInfo tooMany(1001, {u"key"_s, u"value"_s});
    center.post(u"com.tarnbrooksoftware.spotwell_line"_s, u"string object"_s, tooMany);
    // On a busy machine in more than one second.
    static const QRegularExpression leftOut(
        u"^spotwell-bridge: a notification of another shape was left out(?: \\((\\d+) more\\))?$"_s);
    int told = 0;
    while (told < 3) {
        const QString line = QString::fromStdString(nextLine());
        const auto match = leftOut.match(line);
        ASSERT_TRUE(match.hasMatch()) << line.toStdString();
        told += match.captured(1).isEmpty() ? 1 : match.captured(1).toInt();
    }
    EXPECT_EQ(told, 3);
    emitBadly({"ssa{sv}", name, "string object", "2", "line", "s", "x", "odd", "i", "5"});
    EXPECT_EQ(nextReport(), u"{\"notification\":\"com.tarnbrooksoftware.spotwell_line\",\"object\":\"string "
                            "object\",\"userInfo\":{\"line\":\"x\",\"odd\":null}}"_s);
    EXPECT_EQ(bridge->wait(), 0);
}

TEST_F(LoggerTest, RunsTheCommand)
{
    start({"--print"});
    BusScriptRunner runner(sessionBus, applications, log);
    EXPECT_EQ(runner.run(script), std::nullopt);
    EXPECT_EQ(nextReport(), u"{\"command\":\"processSpot\",\"text\":\"DX de\"}"_s);
}

TEST_F(LoggerTest, RefusesTheCommandLate)
{
    start({"--print", "--script-error", "not \"now\"", "--script-delay", "0.3", "--count", "1"});
    BusScriptRunner runner(sessionBus, applications, log);
    const auto begin = std::chrono::steady_clock::now();
    EXPECT_EQ(runner.run(script), u"not \"now\""_s);
    EXPECT_GE(std::chrono::steady_clock::now() - begin, 300ms);
    EXPECT_EQ(bridge->wait(), 0);
}

TEST_F(LoggerTest, RefusesTheCommandWithoutAWord)
{
    start({"--script-error", ""});
    BusScriptRunner runner(sessionBus, applications, log);
    EXPECT_EQ(runner.run(script), u"com.tarnbrooksoftware.Scripting.Error.Failed"_s);
}

TEST_F(LoggerTest, AnswersWhatItHoldsBackWhenItEnds)
{
    start({"--print", "--script-delay", "1000"});
    BusScriptRunner runner(sessionBus, applications, log);
    std::thread ending([this] {
        EXPECT_EQ(nextReport(), u"{\"command\":\"processSpot\",\"text\":\"DX de\"}"_s);
        bridge->signal(SIGTERM);
    });
    EXPECT_EQ(runner.run(script), u"The logger is ending."_s);
    ending.join();
    EXPECT_EQ(bridge->wait(), 0);
}

TEST_F(LoggerTest, EndsAsAsked)
{
    for (const int number : {SIGTERM, SIGINT, SIGHUP}) {
        start();
        bridge->signal(number);
        EXPECT_EQ(bridge->wait(), 0);
    }
    start({"--seconds", "0.05"});
    EXPECT_EQ(bridge->wait(), 0);
}

TEST_F(LoggerTest, TwoDoNoHarm)
{
    start({"--print"});
    ChildProcess second(command({"--print"}), {bus.environment()}, true);
    EXPECT_EQ(second.readLine(), "spotwell-bridge: another logger has the name "
                                 "com.tarnbrooksoftware.Application.Logwright, waiting for it");
    EXPECT_EQ(second.readLine(), ready + asLogwright + ",\"queued\":true}");
    EXPECT_EQ(applications.runningApplications().size(), 1U);
    post(u"one"_s);
    EXPECT_NE(nextLine().find("\"line\":\"one\""), std::string::npos);
    EXPECT_NE(second.readLine().value_or("").find("\"line\":\"one\""), std::string::npos);

    bridge->signal(SIGTERM);
    EXPECT_EQ(bridge->wait(), 0);
    EXPECT_EQ(second.readLine(),
              "spotwell-bridge: the name com.tarnbrooksoftware.Application.Logwright is free now and taken");
    EXPECT_EQ(applications.runningApplications().size(), 1U);
    BusScriptRunner runner(sessionBus, applications, log);
    EXPECT_EQ(runner.run(script), std::nullopt);
    EXPECT_NE(second.readLine().value_or("").find("\"command\":\"processSpot\""), std::string::npos);
}

TEST_F(LoggerTest, GivesWayToALoggerThatTakesTheName)
{
    start({"--print"});
    BusPeer logger(bus);
    logger.command({u"own"_s, busName});
    EXPECT_EQ(nextLine(), "spotwell-bridge: another logger has the name "
                          "com.tarnbrooksoftware.Application.Logwright, waiting for it");
    logger.command({u"release"_s, busName});
    EXPECT_EQ(nextLine(),
              "spotwell-bridge: the name com.tarnbrooksoftware.Application.Logwright is free now and taken");
}

TEST_F(LoggerTest, ExplainsItself)
{
    EXPECT_EQ(start({"--help"}).rfind("Usage: ", 0), 0U);
    EXPECT_EQ(bridge->wait(), 0);
    EXPECT_EQ(start({"--version"}), "spotwell-bridge " SPOTWELL_VERSION);
    EXPECT_EQ(bridge->wait(), 0);
    EXPECT_EQ(start({"--count", "0"}), "spotwell-bridge: --count takes a whole number above 0.");
    EXPECT_EQ(nextLine(), "");
    EXPECT_EQ(bridge->wait(), 2);
}

} // namespace

} // namespace spotwell::bridge
