// SPDX-FileCopyrightText: 2026 the spotwell developers
// SPDX-License-Identifier: MIT

#pragma once

#include "tools/spotwell-simulator/Server.h"
#include "tools/spotwell-simulator/WebSession.h"

#include <QSslConfiguration>

#include <optional>

namespace spotwell::simulator
{

/// A web service: gives an answer to each request.
class WebServer final : public Server
{
public:
    /// With `identity`, a certificate and its key, it speaks TLS.
    WebServer(Scenario scenario, const Clock& clock, const Report& report, std::function<void()> progressed,
              std::optional<QSslConfiguration> identity = std::nullopt, ConnectionLimits limits = {});

    [[nodiscard]] bool allPlayed() const override;

private:
    std::unique_ptr<Connection> makeConnection(int descriptor, int number,
                                               std::function<void()> over) override;

    const std::optional<QSslConfiguration> identity_;
    WebService service_;
};

} // namespace spotwell::simulator
