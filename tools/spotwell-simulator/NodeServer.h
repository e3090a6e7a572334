// SPDX-FileCopyrightText: 2026 the spotwell developers
// SPDX-License-Identifier: MIT

#pragma once

#include "tools/spotwell-simulator/Server.h"

namespace spotwell::simulator
{

/// A cluster node: plays a session to each connection.
class NodeServer final : public Server
{
public:
    NodeServer(Scenario scenario, const Clock& clock, const Report& report, std::function<void()> progressed,
               ConnectionLimits limits = {});

    [[nodiscard]] bool allPlayed() const override;

private:
    std::unique_ptr<Connection> makeConnection(int descriptor, int number,
                                               std::function<void()> over) override;
};

} // namespace spotwell::simulator
