// SPDX-FileCopyrightText: 2026 the spotwell developers
// SPDX-License-Identifier: MIT

#include "tools/spotwell-simulator/NodeServer.h"

#include "tools/spotwell-simulator/NodeSession.h"
#include "tools/spotwell-simulator/PlainSocket.h"

#include <utility>

namespace spotwell::simulator
{

NodeServer::NodeServer(Scenario scenario, const Clock& clock, const Report& report,
                       std::function<void()> progressed, ConnectionLimits limits)
    : Server(std::move(scenario), clock, report, std::move(progressed), limits)
{
}

bool NodeServer::allPlayed() const
{
    return static_cast<std::size_t>(endedConnections()) >= scenario().sessions.size();
}

std::unique_ptr<Connection> NodeServer::makeConnection(int descriptor, int number, std::function<void()> over)
{
    return std::make_unique<NodeSession>(std::make_unique<PlainSocket>(descriptor), number, setting(),
                                         std::move(over));
}

} // namespace spotwell::simulator
