// SPDX-FileCopyrightText: 2026 the spotwell developers
// SPDX-License-Identifier: MIT

#include "platform/linux/bus/BusScriptRunner.h"
#include "tests/support/Sanitizers.h"
#include "tests/tools/bridge/program/BridgeFixture.h"
#include "tests/tools/bridge/program/TelnetClient.h"

#include <csignal>

namespace spotwell::bridge
{

namespace
{

using namespace Qt::Literals::StringLiterals;
using namespace std::chrono_literals;

using BusTroubleTest = BridgeFixture;

/// How long the process takes to end once it is told to.
std::chrono::steady_clock::duration ending(ChildProcess& process)
{
    const auto begin = std::chrono::steady_clock::now();
    process.signal(SIGTERM);
    EXPECT_EQ(process.wait(), 0);
    return std::chrono::steady_clock::now() - begin;
}

TEST_F(BusTroubleTest, NeedsABusAtTheStart)
{
    bus.kill();
    EXPECT_EQ(start({"--telnet", "0"}), "spotwell-bridge: no session bus: No such file or directory");
    EXPECT_EQ(nextLine(), "");
    EXPECT_EQ(bridge->wait(), 1);
}

TEST_F(BusTroubleTest, SaysWhenNothingTellsWhereTheBusIs)
{
    bridge.emplace(std::vector<std::string>{"env", "-u", "DBUS_SESSION_BUS_ADDRESS", "-u", "XDG_RUNTIME_DIR",
                                            SPOTWELL_BRIDGE, "--print"},
                   std::vector<std::string>{}, true);
    EXPECT_EQ(nextLine(),
              "spotwell-bridge: no session bus: neither DBUS_SESSION_BUS_ADDRESS nor XDG_RUNTIME_DIR "
              "is set");
    EXPECT_EQ(nextLine(), "");
    EXPECT_EQ(bridge->wait(), 1);
}

TEST_F(BusTroubleTest, ABusThatRefusesTheNameEndsIt)
{
    const PrivateBus denying(true, "<deny own='com.tarnbrooksoftware.Application.Logwright'/>");
    bridge.emplace(command({"--print"}), std::vector{denying.environment()}, true);
    EXPECT_EQ(nextLine(), "spotwell-bridge: the session bus refuses the name "
                          "com.tarnbrooksoftware.Application.Logwright");
    EXPECT_EQ(nextLine(), "");
    EXPECT_EQ(bridge->wait(), 1);
}

TEST_F(BusTroubleTest, SurvivesTheBus)
{
    startNode({"--print"});
    EXPECT_EQ(nextLine(), ready + asLogwright + ",\"telnet\":\"127.0.0.1:" + std::to_string(port) + "\"}");
    TelnetClient client(port);
    ASSERT_TRUE(client.logIn());
    for (const QString& call : {u"A1A"_s, u"B1B"_s}) {
        bus.kill();
        EXPECT_EQ(nextWord(), "spotwell-bridge: the session bus is gone");
        bus.start();
        EXPECT_EQ(nextWord(), "spotwell-bridge: the session bus is back");
        // Its name, its properties, the notifications and the command: everything is there anew.
        EXPECT_TRUE(waitUntil([this] { return applications.runningApplications().size() == 1; }));
        BusScriptRunner runner(sessionBus, applications, log);
        EXPECT_EQ(runner.run(u"Tell application \"Logwright\"\nprocessSpot \"DX de\"\nend tell\n"_s),
                  std::nullopt);
        EXPECT_NE(nextWord().find("\"command\":\"processSpot\""), std::string::npos);
        EXPECT_TRUE(waitUntil([this, &call] {
            post(clusterSpot(call));
            return bridge->readLine(100ms).has_value();
        }));
        EXPECT_TRUE(client.hears(clusterSpot(call).toStdString() + "\r\n"));
    }
}

TEST_F(BusTroubleTest, OwesNothingOverALostBus)
{
    start({"--print", "--script-delay", "1000", "--count", "1"});
    BusScriptRunner runner(sessionBus, applications, log);
    std::thread killer([this] {
        EXPECT_NE(nextLine().find("\"command\":\"processSpot\""), std::string::npos);
        bus.kill();
    });
    EXPECT_NE(runner.run(u"Tell application \"Logwright\"\nprocessSpot \"DX de\"\nend tell\n"_s),
              std::nullopt);
    killer.join();
    EXPECT_EQ(nextLine(), "spotwell-bridge: the session bus is gone");
    // Nobody can be answered any more, so its count is full.
    EXPECT_EQ(bridge->wait(), 0);
}

TEST_F(BusTroubleTest, AHungBusFreezesNothing)
{
    startNode();
    EXPECT_EQ(nextLine(), "spotwell-bridge: receiving spots");
    bus.stop();
    TelnetClient client(port);
    EXPECT_TRUE(client.logIn());
    client.say("sh/dx");
    EXPECT_TRUE(client.hears("There are no spots yet.\r\n"));
    EXPECT_LT(ending(*bridge), 1s * slowness);
    EXPECT_TRUE(client.hearsEnd());
    bus.resume();
}

TEST_F(BusTroubleTest, ABusThatHangsAtTheStartIsWaitedForWithAWord)
{
    bus.stop();
    startNode();
    EXPECT_EQ(nextLine(), "spotwell-bridge: the session bus does not answer yet");
    TelnetClient client(port);
    EXPECT_TRUE(client.logIn());
    bus.resume();
    EXPECT_EQ(nextWord(), "spotwell-bridge: receiving spots");
    post(clusterSpot(u"A1A"_s));
    EXPECT_TRUE(client.hears(clusterSpot(u"A1A"_s).toStdString() + "\r\n"));

    bus.stop();
    bridge.reset();
    startNode();
    EXPECT_LT(ending(*bridge), 1s * slowness) << "also while it waits";
    bus.resume();
}

TEST_F(BusTroubleTest, TriesOnceASecond)
{
    start();
    const auto begin = std::chrono::steady_clock::now();
    bus.kill();
    EXPECT_NE(nextLine(), "");
    EXPECT_EQ(nextLine(), "spotwell-bridge: the session bus is gone");
    bus.start();
    EXPECT_EQ(nextLine(), "spotwell-bridge: the session bus is back");
    EXPECT_GE(std::chrono::steady_clock::now() - begin, 900ms);
}

} // namespace

} // namespace spotwell::bridge
