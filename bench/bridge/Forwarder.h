// SPDX-FileCopyrightText: 2026 the spotwell developers
// SPDX-License-Identifier: MIT

#pragma once

#include "bench/PrivateDesktop.h"

#include <QProcess>
#include <QString>
#include <QStringList>

#include <cstdint>
#include <string>

namespace spotwell::bench
{

/// A program that hands spots on to telnet clients, on a session bus of its own.
class Forwarder
{
public:
    /// Returns when it has said where it listens and that it receives; throws std::runtime_error when it does
    /// not.
    Forwarder(const QString& program, const QStringList& arguments);
    ~Forwarder();
    Forwarder(const Forwarder&) = delete;
    Forwarder& operator=(const Forwarder&) = delete;

    [[nodiscard]] std::string busAddress() const { return desktop_.busAddress(); }
    [[nodiscard]] qint64 busProcess() const { return desktop_.busProcess(); }
    [[nodiscard]] qint64 process() const { return process_.processId(); }
    [[nodiscard]] std::uint16_t port() const { return port_; }

private:
    PrivateDesktop desktop_;
    QProcess process_;
    std::uint16_t port_ = 0;
};

} // namespace spotwell::bench
