// SPDX-FileCopyrightText: 2026 the spotwell developers
// SPDX-License-Identifier: MIT

#pragma once

#include "bench/ProcessFigures.h"

#include <QString>

#include <vector>

namespace spotwell::bench
{

/// What is measured, and with what.
struct RunSettings {
    /// Where spotwell, spotwell-simulator and spotwell-bench-bare-window are.
    QString programs;
    /// Lines a second.
    int rate = 200;
    /// How long lines come.
    int seconds = 30;
    /// How long spotwell is watched without lines afterwards; 0 for not at all.
    int idleSeconds = 0;
};

/// One run of the shipped program between a node and a logger.
struct RunFigures {
    int sent = 0;
    int received = 0;
    /// Lines that came twice, or after a later one.
    int misplaced = 0;
    /// From the node's stamp to the receiver, in microseconds, in the order of arrival.
    std::vector<double> latencies;
    /// Until the window's first pixels are on the screen, and until the node has the connection.
    double startToPaintSeconds = 0;
    double startToConnectSeconds = 0;
    /// From the first line to the last.
    CpuFigures spotwell;
    CpuFigures bus;
    CpuFigures display;
    qint64 wakeUps = 0;
    MemoryFigures memory;
    /// Afterwards, without lines; all 0 when that was not asked for.
    int idleSeconds = 0;
    CpuFigures idle;
    qint64 idleWakeUps = 0;

    [[nodiscard]] int lost() const { return sent - received; }
};

/// What the same lines cost a window that does nothing but show each of them at once.
struct BareWindowFigures {
    double cpuSecondsPerLine = 0;
    MemoryFigures memory;
};

/// Both throw std::runtime_error when a program does not do its part.
[[nodiscard]] RunFigures runSpotwell(const RunSettings& settings);
[[nodiscard]] BareWindowFigures runBareWindow(const RunSettings& settings);

} // namespace spotwell::bench
