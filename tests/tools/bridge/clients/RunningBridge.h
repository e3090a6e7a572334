// SPDX-FileCopyrightText: 2026 the spotwell developers
// SPDX-License-Identifier: MIT

#pragma once

#include "tests/support/bus/PrivateBus.h"

#include <QJsonObject>
#include <QProcess>
#include <QStringList>

#include <cstdint>
#include <optional>

namespace spotwell::bridge
{

/// spotwell-bridge as a process: its node on loopback, at any port, and what it receives printed. Killed at
/// the latest when destroyed.
class RunningBridge
{
public:
    /// Starts it and waits until it listens; throws when it does not.
    explicit RunningBridge(const PrivateBus& bus);
    ~RunningBridge();
    RunningBridge(const RunningBridge&) = delete;
    RunningBridge& operator=(const RunningBridge&) = delete;

    [[nodiscard]] std::uint16_t port() const { return port_; }
    /// Waits until it tells that this callsign has logged in.
    [[nodiscard]] bool welcomes(const QString& callsign);
    /// The spots it has received so far, each one's dictionary.
    [[nodiscard]] QList<QJsonObject> spots();
    /// The cluster lines it has received so far.
    [[nodiscard]] QStringList lines();
    /// Ends it with SIGTERM. The exit code; absent when a signal ended it or it does not end.
    std::optional<int> end();
    /// What it wrote on its standard error stream.
    [[nodiscard]] QByteArray errors();

private:
    [[nodiscard]] QList<QJsonObject> notifications(QStringView name);

    QProcess process_;
    QByteArray printed_;
    QByteArray errors_;
    std::uint16_t port_ = 0;
};

} // namespace spotwell::bridge
