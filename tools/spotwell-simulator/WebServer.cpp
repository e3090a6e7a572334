// SPDX-FileCopyrightText: 2026 the spotwell developers
// SPDX-License-Identifier: MIT

#include "tools/spotwell-simulator/WebServer.h"

#include "tools/spotwell-simulator/PlainSocket.h"
#include "tools/spotwell-simulator/TlsSocket.h"

#include <utility>

namespace spotwell::simulator
{

WebServer::WebServer(Scenario scenario, const Clock& clock, const Report& report,
                     std::function<void()> progressed, std::optional<QSslConfiguration> identity,
                     ConnectionLimits limits)
    : Server(std::move(scenario), clock, report, std::move(progressed), limits),
      identity_(std::move(identity))
{
}

bool WebServer::allPlayed() const
{
    return static_cast<std::size_t>(service_.answered) >= scenario().answers.size();
}

std::unique_ptr<Connection> WebServer::makeConnection(int descriptor, int number, std::function<void()> over)
{
    std::unique_ptr<PeerSocket> socket;
    if (identity_)
        socket = std::make_unique<TlsSocket>(descriptor, *identity_);
    else
        socket = std::make_unique<PlainSocket>(descriptor);
    return std::make_unique<WebSession>(
        std::move(socket), number, setting(), service_, [this] { noteProgress(); }, std::move(over));
}

} // namespace spotwell::simulator
