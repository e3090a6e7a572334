// SPDX-FileCopyrightText: 2026 the spotwell developers
// SPDX-License-Identifier: MIT

#pragma once

#include <QHostAddress>
#include <QString>

#include <cstdint>
#include <optional>

namespace spotwell::bridge
{

/// Where to listen.
struct ListenAddress {
    QHostAddress address{QHostAddress::LocalHost};
    /// 0 for any that is free.
    std::uint16_t port = 7373;

    bool operator==(const ListenAddress&) const = default;
};

/// Where to send.
struct Target {
    /// A name or a literal address.
    QString host;
    std::uint16_t port = 0;

    bool operator==(const Target&) const = default;
};

/// Reads [ADDRESS:]PORT: the address is an IPv4 one, an IPv6 one in brackets, or "localhost", which is also
/// meant when there is none. Names are not looked up, for the program listens at once or not at all.
[[nodiscard]] std::optional<ListenAddress> readListenAddress(const QString& text);

/// Reads HOST:PORT: the host is a name, an IPv4 address or an IPv6 one in brackets, the port not 0.
[[nodiscard]] std::optional<Target> readTarget(const QString& text);

/// The usual form of an address and a port, with an IPv6 address in brackets.
[[nodiscard]] QString endpointText(const QHostAddress& address, std::uint16_t port);

} // namespace spotwell::bridge
