// SPDX-FileCopyrightText: 2026 the spotwell developers
// SPDX-License-Identifier: MIT

#pragma once

#include "platform/Time.h"
#include "tools/spotwell-bridge/Complaints.h"
#include "tools/spotwell-bridge/Notification.h"

#include <QByteArray>
#include <QString>

#include <functional>

namespace spotwell::bridge
{

/// Where spots are handed on to; each may be empty.
struct Outlets {
    /// Takes a line for loggers, without its line end.
    std::function<void(const QString&)> line;
    /// Takes an N1MM datagram.
    std::function<void(const QByteArray&)> datagram;
};

/// Hands on what spotwell posts: web spots as lines formed here, cluster lines unchanged, both also as
/// datagrams. What cannot be used is complained of.
class Bridge
{
public:
    /// The complaints outlive the bridge.
    Bridge(Outlets outlets, Complaints& complaints);

    void handOn(const Notification& notification, TimePoint received);
    /// The text of the command processSpot, or the line of a line notification.
    void handOnLine(const QString& text, TimePoint received);

private:
    void handOnSpot(const Notification& notification, TimePoint received);

    const Outlets outlets_;
    Complaints& complaints_;
};

} // namespace spotwell::bridge
