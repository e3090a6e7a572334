// SPDX-FileCopyrightText: 2026 the spotwell developers
// SPDX-License-Identifier: MIT

#pragma once

#include <QJsonObject>
#include <QList>
#include <QProcess>
#include <QStringList>

#include <chrono>
#include <cstdint>
#include <optional>

namespace spotwell
{

/// The node simulator as a process; killed at the latest when destroyed.
class RunningSimulator
{
public:
    /// Starts it with one scenario and waits until it listens.
    explicit RunningSimulator(const QStringList& arguments);
    ~RunningSimulator();
    RunningSimulator(const RunningSimulator&) = delete;
    RunningSimulator& operator=(const RunningSimulator&) = delete;

    [[nodiscard]] std::uint16_t port() const { return port_; }
    /// How many events of this name it has reported; with `key`, only those with `value` there.
    qsizetype count(QStringView event, QStringView key = {}, const QJsonValue& value = {});
    /// Waits for its end. The exit code; absent when it does not end.
    std::optional<int> waitForEnd(std::chrono::milliseconds deadline = std::chrono::seconds{60});
    /// All it has reported, as it stands.
    QByteArray report();

private:
    QProcess process_;
    QByteArray report_;
    std::uint16_t port_ = 0;
};

} // namespace spotwell
