// SPDX-FileCopyrightText: 2026 the spotwell developers
// SPDX-License-Identifier: MIT

#pragma once

#include "platform/linux/bus/BusNotificationCenter.h"
#include "platform/linux/bus/BusRunningApplications.h"
#include "tests/fakes/SharedLog.h"
#include "tests/support/bus/PrivateBus.h"

#include <QString>
#include <gtest/gtest.h>

#include <chrono>
#include <optional>
#include <string>
#include <vector>

namespace spotwell::bridge
{

/// What the program prints when it is ready, up to its displayed name.
inline const std::string ready = "{\"ready\":true,\"name\":\"com.tarnbrooksoftware.Application.Logwright\",";
inline const std::string asLogwright = "\"displayName\":\"Logwright\",\"version\":\"6.45\"";

/// A cluster line as spotwell passes it on, told apart by its call.
inline QString clusterSpot(const QString& call)
{
    return QStringLiteral("DX de N0CALL:    14074.0  %1 cq                             1428Z")
        .arg(call.leftJustified(12));
}

/// The program as its users start it, on a bus of the test's own, with spotwell's own sending side.
class BridgeFixture : public testing::Test
{
protected:
    /// Starts the bridge, its errors mixed into its lines, and reads its first line.
    std::string start(const std::vector<std::string>& options = {})
    {
        bridge.emplace(command(options), std::vector{bus.environment()}, true);
        return bridge->readLine().value_or("");
    }
    static std::vector<std::string> command(std::vector<std::string> options)
    {
        options.insert(options.begin(), SPOTWELL_BRIDGE);
        return options;
    }
    /// Starts it with a telnet node on a free port, reads until it is ready, and keeps the port.
    void startNode(std::vector<std::string> options = {})
    {
        options.insert(options.begin(), {"--telnet", "127.0.0.1:0"});
        const std::string listening = start(options);
        const std::string said = "spotwell-bridge: listening on 127.0.0.1:";
        ASSERT_EQ(listening.rfind(said, 0), 0U) << listening;
        port = static_cast<std::uint16_t>(std::stoi(listening.substr(said.size())));
    }
    /// The next line that neither tells what arrived nor of a telnet client.
    std::string nextWord()
    {
        std::string line = nextLine();
        while (line.rfind("{\"notification\"", 0) == 0 || line.rfind("spotwell-bridge: telnet: ", 0) == 0)
            line = nextLine();
        return line;
    }
    std::string nextLine() { return bridge->readLine().value_or(""); }
    void post(const QString& line)
    {
        center.post(QStringLiteral("com.tarnbrooksoftware.spotwell_line"), QStringLiteral("string object"),
                    {{QStringLiteral("line"), line}, {QStringLiteral("source"), QStringLiteral("node")}});
    }
    void postSpot(const QString& call)
    {
        center.post(QStringLiteral("com.tarnbrooksoftware.spotwell_spot"), QStringLiteral("string object"),
                    {{QStringLiteral("combinedCallsign"), call},
                     {QStringLiteral("timestamp"), TimePoint{std::chrono::microseconds{1801645507123456}}},
                     {QStringLiteral("megahertz"), 14.074},
                     {QStringLiteral("dxde_call"), QStringLiteral("N0CALL")}});
    }

    PrivateBus bus;
    SharedLog log;
    SessionBus sessionBus{log, bus.address()};
    BusRunningApplications applications{
        sessionBus, log, {std::chrono::seconds{20}, std::chrono::seconds{20}}, {}};
    BusNotificationCenter center{sessionBus, log};
    std::optional<ChildProcess> bridge;
    std::uint16_t port = 0;
};

} // namespace spotwell::bridge
