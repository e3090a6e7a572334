// SPDX-FileCopyrightText: 2026 the spotwell developers
// SPDX-License-Identifier: MIT

#pragma once

#include "cluster/ClusterHost.h"
#include "cluster/ClusterSession.h"
#include "platform/Log.h"
#include "platform/Time.h"

#include <QString>

#include <optional>

namespace spotwell
{

/// Why the login watchdog gives up on a connection made `sinceStart` ago; nothing while it does not. More
/// than 30 s without data, or more than 120 s without a login, are too long.
[[nodiscard]] std::optional<QString> loginGivenUp(bool anyData, bool loggedIn, Seconds sinceStart);

/// What the reconnect supervisor can find to do.
enum class Upkeep { nothing, sendKeepAlive, disconnect, reconnect };

/// What to do after `idle` without a word from the node, `sinceKeepAlive` after the last keep-alive line
/// feed. A connection gets line feeds after more than 600 s, more than 60 s apart, and is dropped after more
/// than 720 s; a missing one is made again after more than 60 s.
[[nodiscard]] Upkeep upkeep(bool isConnected, Seconds idle, Seconds sinceKeepAlive);

/// Watches over the cluster session: gives up on a node that says nothing or lets nobody in, keeps a quiet
/// connection alive and makes a lost one again. Main thread.
class Supervision
{
public:
    Supervision(ClusterHost& host, ClusterSession& session, const Clock& clock, Log& log)
        : host_(host), session_(session), clock_(clock), log_(log)
    {
    }

    /// The login watchdog, every second, whatever the settings are.
    void loginTimeoutTimer();
    /// The reconnect supervisor, every second; it acts only while the reconnect box is on.
    void reconnectTimer();

private:
    void disconnectSilentNode(Seconds idle);
    void reconnect();

    ClusterHost& host_;
    ClusterSession& session_;
    const Clock& clock_;
    Log& log_;
    /// When the last keep-alive line feed was sent.
    TimePoint _lastKeepAliveMessageTime = distantPast;
};

} // namespace spotwell
