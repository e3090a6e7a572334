// SPDX-FileCopyrightText: 2026 the spotwell developers
// SPDX-License-Identifier: MIT

#pragma once

#include "bench/compare/Contenders.h"

#include <QString>

#include <map>
#include <memory>
#include <vector>

namespace spotwell::bench
{

class Session;

/// What is measured of a program.
enum class Figure {
    startMilliseconds,
    proportionalMib,
    unsharedMib,
    residentMib,
    proportionalAfterMib, ///< as the next, when the lines have come
    residentAfterMib,
    cpuMilliseconds, ///< for 1,000 lines
    displayMilliseconds,
    busMilliseconds,
    latencyMedian, ///< in milliseconds
    latency99th,
    latencyLongest,
    highestRate,      ///< lines a second
    idleMilliseconds, ///< of CPU in a minute
    idleWakeUps,
    idlePreemptions,
};

/// The values of several runs.
using Figures = std::map<Figure, std::vector<double>>;

/// How long and how often.
struct Extent {
    int rate = 200;
    int lineSeconds = 15;
    int idleSeconds = 60;
    int starts = 3;
    int searchSeconds = 4;
    int highestRate = 25'600;
    double searchExactness = 1.2;
    /// Where pictures of the windows go; empty for nowhere.
    QString pictures;
};

// Each adds what it measured to `figures`, and throws std::runtime_error when a program does not do its part.

void measureStart(const Contender& contender, const Extent& extent, Figures& figures);
/// Memory, and what lines cost; of the bare window memory alone.
void measureLines(const Contender& contender, const Extent& extent, Figures& figures);
/// A program that has come to rest after some lines.
[[nodiscard]] std::unique_ptr<Session> makeIdleSession(const Contender& contender, const Extent& extent);
/// Watches all at the same time. `figures` are in the order of `sessions`, of which some may be missing.
void measureIdle(const std::vector<std::unique_ptr<Session>>& sessions, const Extent& extent,
                 std::vector<Figures>& figures);

/// A rate is held when for `searchSeconds` the program never has more than a second's lines before it, and a
/// second after the last one has read and done all and, where it delivers, delivered all. Gives what happened
/// at the least rate that it did not hold; empty when it held the highest.
[[nodiscard]] QString measureHighestRate(const Contender& contender, const Extent& extent, Figures& figures);

} // namespace spotwell::bench
