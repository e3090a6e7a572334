// SPDX-FileCopyrightText: 2026 the spotwell developers
// SPDX-License-Identifier: MIT

#pragma once

#include "tests/integration/support/PrivateNetwork.h"
#include "tests/support/web/LoopbackHttpServer.h"

#include <QByteArray>

#include <chrono>
#include <map>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

namespace spotwell
{

class TlsFront;

/// All web services of a private network, over http and https.
class FeedServices
{
public:
    struct Request {
        /// All of it: "http://www.dxsummit.fi/api/v1/spots".
        std::string address;
        /// What came over the connection.
        std::string head;
        std::chrono::steady_clock::time_point time;
    };

    FeedServices();
    ~FeedServices();
    FeedServices(const FeedServices&) = delete;
    FeedServices& operator=(const FeedServices&) = delete;

    /// What requests of this address are answered with from now on. Without that an address does not exist.
    void answer(const std::string& address, LoopbackHttpServer::Handler handler);
    /// Begins to serve on these sockets, or anew; over https with this certificate for the loopbackKey, in
    /// PEM.
    void start(PrivateNetwork::Listeners listeners, const QByteArray& certificate);

    /// The requests so far: of this address, and of any.
    [[nodiscard]] std::vector<Request> requests(const std::string& address) const;
    [[nodiscard]] std::vector<Request> requests() const;
    /// How often somebody has begun to speak to the https port.
    [[nodiscard]] int handshakes() const;

private:
    [[nodiscard]] LoopbackHttpServer::Handler handlerFor(const std::string& scheme);

    mutable std::mutex mutex_;
    std::map<std::string, LoopbackHttpServer::Handler> handlers_;
    std::vector<Request> requests_;
    std::unique_ptr<LoopbackHttpServer> plain_;
    std::unique_ptr<LoopbackHttpServer> behindTls_;
    std::unique_ptr<TlsFront> front_;
};

} // namespace spotwell
