// SPDX-FileCopyrightText: 2026 the spotwell developers
// SPDX-License-Identifier: MIT

#pragma once

#include <QHostAddress>
#include <QObject>

#include <cstdint>
#include <deque>
#include <functional>
#include <map>
#include <utility>

class QHostInfo;
class QUrl;

namespace spotwell
{

/// The TCP connections of this process to some servers, as the kernel sees them.
///
/// Qt's HTTP client does not show its connections. What it has read from them, and how to take them away from
/// a thread of its own that cannot stop reading, only the kernel knows. Connections by way of a proxy are not
/// seen. For a thread with an event loop.
class ServerConnections final : public QObject
{
    Q_OBJECT

public:
    ServerConnections() = default;
    ~ServerConnections() override;
    ServerConnections(const ServerConnections&) = delete;
    ServerConnections& operator=(const ServerConnections&) = delete;

    /// Adds the server of `url`. A name is looked up without waiting; beyond 64 addresses the oldest goes.
    Q_SLOT void add(const QUrl& url);
    /// Bytes that were read from the connections since the last call.
    [[nodiscard]] qint64 countRead();
    /// Ends the connections with a reset; who uses them finds them closed.
    void reset() const;

private:
    using Server = std::pair<QHostAddress, quint16>;

    // By its name, since a look-up that calls a function instead would leak it when this object goes first.
    Q_SLOT void rememberAddresses(const QHostInfo& info);
    void remember(const Server& server);
    /// Calls `visit` with a descriptor of each connection, which is not the user's own.
    void forEach(const std::function<void(int descriptor)>& visit) const;
    [[nodiscard]] bool isConnection(int descriptor) const;

    std::deque<Server> servers_;
    /// Bytes read so far, by the connection's inode.
    std::map<std::uint64_t, std::uint64_t> read_;
    /// The ports of the names that are being looked up, by the look-up's number.
    std::map<int, quint16> lookUps_;
};

} // namespace spotwell
