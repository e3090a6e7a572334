// SPDX-FileCopyrightText: 2026 the spotwell developers
// SPDX-License-Identifier: MIT

#pragma once

#include <QHostAddress>
#include <QSocketNotifier>
#include <QString>
#include <QTcpServer>
#include <QTimer>

#include <chrono>
#include <cstdint>
#include <functional>
#include <memory>

namespace spotwell::bridge
{

/// Listens and accepts. Qt's own class does the first only: it no longer notices, once it has accepted
/// anybody, that the system has no room for a further connection, and then tries without a pause.
class Listener
{
public:
    /// Takes over a connected, non-blocking socket.
    using Arrived = std::function<void(int descriptor)>;
    /// Told the reason for which nobody can be accepted, once until somebody is again.
    using Failed = std::function<void(const QString& reason)>;

    /// When accepting fails it is tried again after `pause`.
    Listener(std::chrono::milliseconds pause, Arrived arrived, Failed failed);

    /// Begins to listen; port 0 takes any that is free. Null, or the error's description.
    [[nodiscard]] QString listen(const QHostAddress& address, std::uint16_t port);
    /// 0 while it does not listen.
    [[nodiscard]] std::uint16_t port() const { return server_.serverPort(); }
    /// Stops listening.
    void close();

private:
    void accept();
    void acceptFailed(int error);

    const Arrived arrived_;
    const Failed failed_;
    bool fails_ = false;
    QTcpServer server_;
    QTimer again_;
    // depends-on: server_
    std::unique_ptr<QSocketNotifier> accepting_;
};

} // namespace spotwell::bridge
