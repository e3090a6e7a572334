// SPDX-FileCopyrightText: 2026 the spotwell developers
// SPDX-License-Identifier: MIT

#pragma once

#include "tests/support/web/UrlTransfers.h"

#include <atomic>
#include <string>
#include <utility>
#include <vector>

namespace spotwell
{

/// What a server sends without end: a beginning and then always the same.
struct Flood {
    const char* name;
    std::string beginning;
    std::string rest;
};

/// The ways to send without end what is no body.
inline std::vector<Flood> floods()
{
    const auto repeated = [](const std::string& piece) {
        std::string all;
        while (all.size() < 65536)
            all += piece;
        return all;
    };
    return {
        {"a status line", "HTTP/1.1 200 ", repeated("x")},
        {"a header line", "HTTP/1.1 200 OK\r\nServer: ", repeated("x")},
        {"header lines", "HTTP/1.1 200 OK\r\n", repeated("Server: x\r\n")},
        {"interim answers", "", repeated("HTTP/1.1 100 Continue\r\n\r\n")},
        {"a chunk's first line", "HTTP/1.1 200 OK\r\nTransfer-Encoding: chunked\r\n\r\n3;", repeated("x")},
        {"a refusal", "HTTP/1.1 401 No\r\nWWW-Authenticate: Basic realm=\"x\"\r\n\r\n", repeated("x")},
        {"a proxy's refusal", "HTTP/1.1 407 No\r\nProxy-Authenticate: Basic realm=\"x\"\r\n\r\n",
         repeated("x")},
    };
}

/// Floods those who ask for "/flood" as fast as they read, answers all others.
class FloodingServer
{
public:
    explicit FloodingServer(Flood flood)
        : flood_(std::move(flood)),
          server_([this](LoopbackHttpServer::Connection& connection, const std::string& head) {
              serve(connection, head);
          })
    {
    }
    [[nodiscard]] QString url(const QString& path = QStringLiteral("/flood")) const
    {
        return server_.url(path);
    }
    /// Whether the flood has begun.
    [[nodiscard]] bool floods() const { return floods_; }
    /// Whether the client has put an end to it.
    [[nodiscard]] bool isRid() const { return isRid_; }
    [[nodiscard]] long long sent() const { return sent_; }

private:
    void serve(LoopbackHttpServer::Connection& connection, const std::string& head)
    {
        if (!head.starts_with("GET /flood ")) {
            connection.answer("200 OK", "body");
            return;
        }
        connection.send(flood_.beginning);
        while (connection.send(flood_.rest)) {
            floods_ = true;
            sent_ += static_cast<long long>(flood_.rest.size());
        }
        isRid_ = true;
    }

    const Flood flood_;
    std::atomic<bool> floods_ = false;
    std::atomic<bool> isRid_ = false;
    std::atomic<long long> sent_ = 0;
    LoopbackHttpServer server_;
};

} // namespace spotwell
