#include "platform/linux/BusNotificationCenter.h"
#include "platform/linux/BusRunningApplications.h"
#include "platform/linux/BusScriptRunner.h"
#include "tests/platform/bus/PrivateBus.h"
#include "tests/platform/bus/SharedLog.h"

#include <QRegularExpression>
#include <gtest/gtest.h>

#include <csignal>
#include <optional>

namespace spotwell
{

namespace
{

using namespace Qt::Literals::StringLiterals;
using namespace std::chrono_literals;

const QString script = u"Tell application \"Logwright\"\nprocessSpot \"DX de\"\nend tell\n"_s;
const std::string ready = "{\"ready\":true,\"name\":\"com.tarnbrooksoftware.Application.Logwright\",";

class BridgeTest : public testing::Test
{
protected:
    /// Starts the bridge and reads its first line.
    std::string start(std::vector<std::string> options = {})
    {
        options.insert(options.begin(), SPOTWELL_BRIDGE);
        bridge.emplace(options, std::vector{bus.environment()}, true);
        return bridge->readLine().value_or("");
    }
    /// The next line, with the time it was received taken off.
    QString nextLine()
    {
        static const QRegularExpression received(
            u",\"received\":\"\\d{4}-\\d\\d-\\d\\dT\\d\\d:\\d\\d:\\d\\d\\.\\d{6}Z\"\\}$"_s);
        QString line = QString::fromStdString(bridge->readLine().value_or(""));
        return line.replace(received, u"}"_s);
    }

    PrivateBus bus;
    SharedLog log;
    SessionBus sessionBus{log, bus.address()};
    BusRunningApplications applications{sessionBus, log, 20s, {}};
    std::optional<ChildProcess> bridge;
};

TEST_F(BridgeTest, ShowsItself)
{
    EXPECT_EQ(start(), ready + "\"displayName\":\"Logwright\",\"version\":\"6.45\"}");
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

TEST_F(BridgeTest, PrintsBothNotifications)
{
    start({"--print", "--count", "2"});
    BusNotificationCenter center(sessionBus, log);
    center.post(u"com.tarnbrooksoftware.other"_s, u"string object"_s, {});
    center.post(u"com.tarnbrooksoftware.spotwell_line"_s, u"string object"_s,
                {{u"line"_s, u"DX de \"x\""_s}, {u"source"_s, u"node"_s}});
    center.post(u"com.tarnbrooksoftware.spotwell_spot"_s, u"string object"_s,
                {{u"timestamp"_s, TimePoint{std::chrono::microseconds{1801645507123456}}},
                 {u"megahertz"_s, 14.074},
                 {u"dxde_call"_s, u""_s}});
    EXPECT_EQ(nextLine(),
              u"{\"notification\":\"com.tarnbrooksoftware.spotwell_line\",\"object\":\"string object\","
              "\"userInfo\":{\"line\":\"DX de \\\"x\\\"\",\"source\":\"node\"}}"_s);
    EXPECT_EQ(
        nextLine(),
        u"{\"notification\":\"com.tarnbrooksoftware.spotwell_spot\",\"object\":\"string object\","
        "\"userInfo\":{\"timestamp\":\"2027-02-03T09:05:07.123456Z\",\"megahertz\":14.074,\"dxde_call\":\"\"}}"_s);
    EXPECT_EQ(bridge->wait(), 0);
}

TEST_F(BridgeTest, RunsTheCommand)
{
    start({"--print"});
    BusScriptRunner runner(sessionBus, applications, log);
    EXPECT_EQ(runner.run(script), std::nullopt);
    EXPECT_EQ(nextLine(), u"{\"command\":\"processSpot\",\"text\":\"DX de\"}"_s);
}

TEST_F(BridgeTest, RefusesTheCommandLate)
{
    start({"--print", "--script-error", "not \"now\"", "--script-delay", "0.3", "--count", "1"});
    BusScriptRunner runner(sessionBus, applications, log);
    const auto begin = std::chrono::steady_clock::now();
    EXPECT_EQ(runner.run(script), u"not \"now\""_s);
    EXPECT_GE(std::chrono::steady_clock::now() - begin, 300ms);
    EXPECT_EQ(bridge->wait(), 0);
}

TEST_F(BridgeTest, RefusesTheCommandWithoutAWord)
{
    start({"--script-error", ""});
    BusScriptRunner runner(sessionBus, applications, log);
    EXPECT_EQ(runner.run(script), u"com.tarnbrooksoftware.Scripting.Error.Failed"_s);
}

TEST_F(BridgeTest, EndsAsAsked)
{
    for (const int number : {SIGTERM, SIGINT}) {
        start();
        bridge->signal(number);
        EXPECT_EQ(bridge->wait(), 0);
    }
    start({"--seconds", "0.05"});
    EXPECT_EQ(bridge->wait(), 0);
}

TEST_F(BridgeTest, SaysWhyItCannotRun)
{
    start();
    ChildProcess second({SPOTWELL_BRIDGE}, {bus.environment()}, true);
    EXPECT_EQ(second.readLine(),
              "spotwell-bridge: another logger runs already (the bus name is taken): File exists");
    EXPECT_EQ(second.wait(), 1);

    bus.kill();
    EXPECT_EQ(bridge->readLine(), "spotwell-bridge: the session bus is gone");
    EXPECT_EQ(bridge->wait(), 1);
    EXPECT_EQ(start(), "spotwell-bridge: no session bus: No such file or directory");
    EXPECT_EQ(bridge->wait(), 1);
}

TEST_F(BridgeTest, ExplainsItsOptions)
{
    EXPECT_EQ(start({"--help"}).rfind("Usage: ", 0), 0U);
    EXPECT_EQ(bridge->wait(), 0);
    const struct {
        std::vector<std::string> options;
        std::string complaint;
    } table[] = {
        {{"--nonsense"}, "Unknown option 'nonsense'."},
        {{"more"}, "Unexpected argument 'more'."},
        {{"--count", "0"}, "--count takes a whole number above 0."},
        {{"--count", "x"}, "--count takes a whole number above 0."},
        {{"--seconds", "-1"}, "--seconds takes a number of seconds."},
        {{"--script-delay", "nan"}, "--script-delay takes a number of seconds."},
        {{"--no-version", "--logger-version", "7"}, "--logger-version and --no-version exclude each other."},
    };
    for (const auto& row : table) {
        EXPECT_EQ(start(row.options), "spotwell-bridge: " + row.complaint);
        EXPECT_EQ(bridge->wait(), 2);
    }
}

} // namespace

} // namespace spotwell
