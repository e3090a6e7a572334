// SPDX-FileCopyrightText: 2026 the spotwell developers
// SPDX-License-Identifier: MIT

#pragma once

#include "platform/Log.h"
#include "platform/Time.h"
#include "tools/spotwell-bridge/telnet/NodeLimits.h"

#include <QHostAddress>
#include <QString>

#include <cstdint>
#include <memory>

namespace spotwell::bridge
{

/// A small DX cluster node for any number of telnet clients. Belongs to the thread of its event loop.
class SpotNode
{
public:
    /// Both outlive the node.
    SpotNode(const Clock& clock, Log& log);
    /// With other limits, and a clock of its own for all spans of time.
    SpotNode(const Clock& clock, Log& log, const NodeLimits& limits, MonotonicClock monotonic);
    ~SpotNode();
    SpotNode(const SpotNode&) = delete;
    SpotNode& operator=(const SpotNode&) = delete;

    /// Begins to listen; port 0 takes any that is free. Null, or the error's description. Raises the
    /// process's limit of open descriptors, which bounds the number of clients.
    [[nodiscard]] QString listen(const QHostAddress& address, std::uint16_t port);
    /// The port it listens on; 0 before listen().
    [[nodiscard]] std::uint16_t port() const;
    /// Sends a spot line, given without its line end, to every client that has logged in, unless an identical
    /// one was sent within the last ten minutes.
    void send(const QString& line);
    /// Says goodbye to the clients and stops listening.
    void stop();

private:
    class Implementation;
    std::unique_ptr<Implementation> implementation_;
};

} // namespace spotwell::bridge
