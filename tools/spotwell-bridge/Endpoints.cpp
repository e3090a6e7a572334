// SPDX-FileCopyrightText: 2026 the spotwell developers
// SPDX-License-Identifier: MIT

#include "tools/spotwell-bridge/Endpoints.h"

#include <algorithm>

namespace spotwell::bridge
{

namespace
{

/// The longest name of a host (RFC 1035).
constexpr qsizetype longestName = 253;

bool isDigit(QChar character)
{
    return character >= u'0' && character <= u'9';
}

std::optional<std::uint16_t> readPort(QStringView text)
{
    bool fits = false;
    const ushort port = text.toUShort(&fits);
    if (!fits || !std::all_of(text.begin(), text.end(), isDigit))
        return std::nullopt;
    return port;
}

bool isBracketed(QStringView host)
{
    return host.startsWith(u'[') && host.endsWith(u']');
}

/// A literal address; null when it is none. Qt also reads abbreviated IPv4 addresses, such as 127.1, which
/// would make an address of many a slip.
QHostAddress literalAddress(QStringView host)
{
    if (isBracketed(host)) {
        const QHostAddress address(host.sliced(1, host.size() - 2).toString());
        return address.protocol() == QAbstractSocket::IPv6Protocol ? address : QHostAddress();
    }
    const QHostAddress address(host.toString());
    return address.protocol() == QAbstractSocket::IPv4Protocol && host.count(u'.') == 3 ? address
                                                                                        : QHostAddress();
}

bool isName(QStringView host)
{
    const auto belongs = [](QChar character) {
        return character.isLetterOrNumber() || character == u'-' || character == u'.' || character == u'_';
    };
    return !host.isEmpty() && host.size() <= longestName && std::all_of(host.begin(), host.end(), belongs) &&
           // All digits and dots: a slip in an address.
           !std::all_of(host.begin(), host.end(), [](QChar c) { return isDigit(c) || c == u'.'; });
}

} // namespace

std::optional<ListenAddress> readListenAddress(const QString& text)
{
    const qsizetype colon = text.lastIndexOf(u':');
    const auto port = readPort(QStringView(text).sliced(colon + 1));
    if (!port)
        return std::nullopt;
    ListenAddress result;
    result.port = *port;
    const QStringView host = QStringView(text).first(std::max<qsizetype>(colon, 0));
    if (colon >= 0 && host.compare(u"localhost", Qt::CaseInsensitive) != 0)
        result.address = literalAddress(host);
    return result.address.isNull() ? std::nullopt : std::optional(result);
}

std::optional<Target> readTarget(const QString& text)
{
    const qsizetype colon = text.lastIndexOf(u':');
    if (colon < 1)
        return std::nullopt;
    const auto port = readPort(QStringView(text).sliced(colon + 1));
    const QStringView host = QStringView(text).first(colon);
    if (!port || *port == 0)
        return std::nullopt;
    if (const QHostAddress address = literalAddress(host); !address.isNull())
        return Target{address.toString(), *port};
    return isName(host) ? std::optional(Target{host.toString(), *port}) : std::nullopt;
}

QString endpointText(const QHostAddress& address, std::uint16_t port)
{
    const QString host = address.toString();
    const bool isIPv6 = address.protocol() == QAbstractSocket::IPv6Protocol;
    return (isIPv6 ? QStringLiteral("[%1]:%2") : QStringLiteral("%1:%2")).arg(host).arg(port);
}

} // namespace spotwell::bridge
