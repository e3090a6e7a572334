// SPDX-FileCopyrightText: 2026 the spotwell developers
// SPDX-License-Identifier: MIT

#include "tools/spotwell-bridge/N1mmSender.h"

#include <QNetworkProxy>

#include <algorithm>
#include <utility>
#include <vector>

namespace spotwell::bridge
{

namespace
{

using namespace std::chrono_literals;

constexpr auto lookUpInterval = 60s;

/// The first IPv4 address, or else the first: a datagram tells nobody that it was not taken, and what takes
/// these listens on IPv4 as a rule.
QHostAddress bestAddress(const std::vector<SocketAddress>& addresses)
{
    const auto isIPv4 = [](const SocketAddress& address) { return address.get()->sa_family == AF_INET; };
    const auto best = std::find_if(addresses.begin(), addresses.end(), isIPv4);
    return QHostAddress((best == addresses.end() ? addresses.front() : *best).get());
}

} // namespace

N1mmSender::N1mmSender(Target target, LookUp lookUp, Log& log)
    : target_(std::move(target)),
      lookUp_(std::move(lookUp)),
      log_(log),
      address_(target_.host),
      isName_(address_.isNull()),
      text_(isName_ ? QStringLiteral("%1:%2").arg(target_.host).arg(target_.port)
                    : endpointText(address_, target_.port))
{
    // Proxies are for the web; asking for the system's may also take a while.
    socket_.setProxy(QNetworkProxy::NoProxy);
}

void N1mmSender::begin(TimePoint now)
{
    lookUpIfDue(now);
}

void N1mmSender::send(const QByteArray& datagram, TimePoint now)
{
    lookUpIfDue(now);
    if (address_.isNull())
        return;
    const bool sent = socket_.writeDatagram(datagram, address_, target_.port) == datagram.size();
    note(sent ? QString() : socket_.errorString());
}

void N1mmSender::lookUpIfDue(TimePoint now)
{
    if (!isName_ || isLookingUp_ || (lastLookUp_ && now - *lastLookUp_ < lookUpInterval))
        return;
    lastLookUp_ = now;
    isLookingUp_ = true;
    lookUp_(target_.host, [this](const HostLookup& lookup) { lookedUp(lookup); });
}

/// An address that is known stays in use while a name server is in trouble.
void N1mmSender::lookedUp(const HostLookup& lookup)
{
    isLookingUp_ = false;
    if (!lookup.addresses.empty())
        address_ = bestAddress(lookup.addresses);
    else if (address_.isNull())
        note(lookup.error);
}

void N1mmSender::note(const QString& trouble)
{
    const bool isTrouble = !trouble.isEmpty();
    if (std::exchange(isInTrouble_, isTrouble) == isTrouble)
        return;
    log_.line(isTrouble ? QStringLiteral("spots do not reach %1: %2").arg(text_, trouble)
                        : QStringLiteral("spots are sent to %1 again").arg(text_));
}

} // namespace spotwell::bridge
