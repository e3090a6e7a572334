// SPDX-FileCopyrightText: 2026 the spotwell developers
// SPDX-License-Identifier: MIT

#include "cluster/Supervision.h"

#include "util/NumberText.h"

namespace spotwell
{

namespace
{

constexpr Seconds longestWithoutData{30};
constexpr Seconds longestWithoutLogin{120};
constexpr Seconds idleBeforeKeepAlive{600};
constexpr Seconds keepAliveSpacing{60};
constexpr Seconds longestSilence{720};
constexpr Seconds idleBeforeReconnect{60};

QString waitedFor(Seconds span, const char* what)
{
    return QStringLiteral("Waited %1 seconds for %2, giving up.")
        .arg(fixedNumber(span.count(), 0), QLatin1String(what));
}

} // namespace

std::optional<QString> loginGivenUp(bool anyData, bool loggedIn, Seconds sinceStart)
{
    if (!anyData && sinceStart > longestWithoutData)
        return waitedFor(longestWithoutData, "data");
    if (!loggedIn && sinceStart > longestWithoutLogin)
        return waitedFor(longestWithoutLogin, "login");
    return std::nullopt;
}

Upkeep upkeep(bool isConnected, Seconds idle, Seconds sinceKeepAlive)
{
    if (!isConnected)
        return idle > idleBeforeReconnect ? Upkeep::reconnect : Upkeep::nothing;
    if (idle > longestSilence)
        return Upkeep::disconnect;
    if (idle > idleBeforeKeepAlive && sinceKeepAlive > keepAliveSpacing)
        return Upkeep::sendKeepAlive;
    return Upkeep::nothing;
}

void Supervision::loginTimeoutTimer()
{
    if (!session_.hasStreams())
        return;
    const std::optional<QString> message = loginGivenUp(session_.bytesReceived() != 0, session_.isLoggedIn(),
                                                        clock_.now() - session_.sessionStartupTime());
    if (!message)
        return;
    log_.line(QStringLiteral("DXClusterController:loginTimeoutTimer:") + *message);
    session_.closeTelnetConnection();
    host_.appendText(*message);
}

void Supervision::reconnectTimer()
{
    if (!host_.reconnectIsOn())
        return;
    const TimePoint now = clock_.now();
    const Seconds idle = now - session_.lastRecievedMessageTime();
    switch (upkeep(session_.hasStreams(), idle, now - _lastKeepAliveMessageTime)) {
    case Upkeep::nothing:
        break;
    case Upkeep::sendKeepAlive:
        session_.sendTelnet(QStringLiteral("\n"));
        _lastKeepAliveMessageTime = now;
        break;
    case Upkeep::disconnect:
        disconnectSilentNode(idle);
        break;
    case Upkeep::reconnect:
        reconnect();
        break;
    }
}

void Supervision::disconnectSilentNode(Seconds idle)
{
    const QString text = QStringLiteral("Nothing heard from %1 in %2 minutes")
                             .arg(host_.dxclusterText(), fixedNumber(idle.count() / 60, 1));
    host_.appendText(text);
    log_.line(text);
    session_.closeTelnetConnection();
}

void Supervision::reconnect()
{
    const QString text = QStringLiteral("Attempting Reconnect with ") + host_.dxclusterText();
    host_.appendText(text);
    log_.line(text);
    session_.openTelnetConnection();
}

} // namespace spotwell
