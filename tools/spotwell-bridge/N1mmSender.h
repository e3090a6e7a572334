// SPDX-FileCopyrightText: 2026 the spotwell developers
// SPDX-License-Identifier: MIT

#pragma once

#include "platform/Log.h"
#include "platform/linux/HostResolver.h"
#include "tools/spotwell-bridge/Endpoints.h"

#include <QByteArray>
#include <QHostAddress>
#include <QString>
#include <QUdpSocket>

#include <chrono>
#include <functional>
#include <optional>

namespace spotwell::bridge
{

/// Sends datagrams to one target, by IPv4 or IPv6; broadcast addresses are allowed. Nothing waits: neither
/// for the network nor for a name server. Belongs to the thread of its event loop.
class N1mmSender
{
public:
    using TimePoint = std::chrono::steady_clock::time_point;
    /// Looks a name up and, later, tells the outcome on this thread.
    using LookedUp = std::function<void(const HostLookup&)>;
    using LookUp = std::function<void(const QString&, LookedUp)>;

    /// The log outlives the sender. No outcome of `lookUp` may come after the sender has gone.
    N1mmSender(Target target, LookUp lookUp, Log& log);

    /// Begins to look a name up, so that it is known when there is something to send.
    void begin(TimePoint now);
    /// Sends, when the address is known. A name is looked up again for a datagram that comes a minute or more
    /// after it was; until it is known, datagrams are lost. Of a name's addresses the first IPv4 one is used,
    /// or else the first.
    void send(const QByteArray& datagram, TimePoint now);

private:
    void lookUpIfDue(TimePoint now);
    void lookedUp(const HostLookup& lookup);
    void note(const QString& trouble);

    const Target target_;
    const LookUp lookUp_;
    Log& log_;
    /// Null until a name is known.
    QHostAddress address_;
    const bool isName_;
    const QString text_;
    /// For both protocols.
    QUdpSocket socket_;
    std::optional<TimePoint> lastLookUp_;
    bool isLookingUp_ = false;
    bool isInTrouble_ = false;
};

} // namespace spotwell::bridge
