// SPDX-FileCopyrightText: 2026 the spotwell developers
// SPDX-License-Identifier: MIT

#pragma once

#include "tools/spotwell-simulator/SpotLines.h"

#include <QByteArray>

#include <chrono>
#include <cstdint>
#include <functional>
#include <optional>

namespace spotwell::bench
{

/// What became of lines that were to be sent.
struct Sending {
    int sent = 0;
    /// The client had more lines before it than it may, or took nothing more.
    bool fellBehind = false;
    /// The client ended the connection.
    bool clientLeft = false;
};

/// A cluster node on 127.0.0.1 for one client, whatever that says when it is asked who it is. It knows at any
/// time what the client has not read yet. Everything happens in the caller's thread; what the system refuses
/// throws std::system_error.
class Node
{
public:
    Node();
    ~Node();
    Node(const Node&) = delete;
    Node& operator=(const Node&) = delete;

    [[nodiscard]] std::uint16_t port() const { return port_; }
    /// Waits for the client and asks for its callsign; throws std::runtime_error when there is none in time.
    void welcome(std::chrono::seconds limit);
    /// Waits for a line from the client and greets it; throws std::runtime_error when there is none in time.
    void logIn(std::chrono::seconds limit);
    /// Sends `count` stamped spots (docs/scenarios.md), each at its own moment, `rate` a second; what is late
    /// goes at once. Stops when the client leaves or has more than `mostSeconds` of lines before it. `look`
    /// is called ten times a second.
    Sending send(int rate, int count, int mostSeconds, const std::function<void()>& look);
    /// Bytes that have not been sent yet or that the client has not read.
    [[nodiscard]] std::int64_t unread() const;

private:
    void await(int descriptor, std::chrono::seconds limit, const char* what) const;

    int listener_ = -1;
    int client_ = -1;
    std::uint16_t port_ = 0;
    std::uint16_t clientPort_ = 0;
    simulator::SpotLines lines_;
};

/// What waits unread at the TCP socket of this machine that has `port` and whose peer has `peerPort`, in
/// bytes, according to `table`, the text of /proc/net/tcp (proc(5)); absent when there is no such socket.
[[nodiscard]] std::optional<std::int64_t> unreadIn(const QByteArray& table, std::uint16_t port,
                                                   std::uint16_t peerPort);

} // namespace spotwell::bench
