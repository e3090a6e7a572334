// SPDX-FileCopyrightText: 2026 the spotwell developers
// SPDX-License-Identifier: MIT

#pragma once

#include "bench/bridge/TelnetClients.h"

#include <QString>
#include <QStringList>

#include <cstddef>
#include <functional>
#include <map>
#include <vector>

namespace spotwell::bench
{

/// A program that says where it listens.
struct Command {
    QString program;
    QStringList arguments;
};

/// How many spots come how fast.
struct Traffic {
    int rate = 200; ///< a second
    int seconds = 10;
    [[nodiscard]] std::size_t count() const { return static_cast<std::size_t>(rate * seconds); }
};

/// What spots cost on their way from the bus to the telnet clients.
struct RunFigures {
    std::map<SpotKind, std::vector<TelnetClients::Latency>> latencies;
    /// CPU time a spot, in microseconds.
    double cpu = 0;
    double busCpu = 0;
    double wakeUpsPerSpot = 0;
    /// In KiB.
    qint64 peak = 0;
};

/// What a program does while there is nothing to do.
struct IdleFigures {
    qint64 wakeUps = 0;
    double cpuMilliseconds = 0;
};

// All throw std::runtime_error when a program does not do its part, a missing line included.

[[nodiscard]] RunFigures runForwarder(const Command& command, std::size_t clients, const Traffic& traffic);
/// With one client that has heard a hundred lines, for that time.
[[nodiscard]] IdleFigures runIdle(const Command& command, int seconds);
/// From the bus to a receiver of cluster lines that does nothing else, in microseconds.
[[nodiscard]] std::vector<double> runBus(const Traffic& traffic);

/// Posts that many spots, evenly spread, while the clients hear; false when they do not hear all of them.
/// `everySecond` may be empty.
[[nodiscard]] bool postSpots(SpotSource& source, TelnetClients& clients, const Traffic& traffic,
                             const std::function<void()>& everySecond);

} // namespace spotwell::bench
