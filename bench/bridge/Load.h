// SPDX-FileCopyrightText: 2026 the spotwell developers
// SPDX-License-Identifier: MIT

#pragma once

#include "bench/bridge/Run.h"

#include <vector>

namespace spotwell::bench
{

/// How the bridge stands a contest: many clients that read, and one that does not.
struct LoadFigures {
    std::size_t readers = 0;
    std::size_t posted = 0;
    /// Lines that all readers heard, in order and unchanged.
    std::size_t heardByAll = 0;
    /// Readers that heard something else.
    std::size_t failed = 0;
    /// From the bus to the last of the readers, in microseconds.
    std::vector<double> latencies;
    /// CPU time a spot, in microseconds.
    double cpu = 0;
    /// The bridge's resident memory each second, and the most at any time, in KiB.
    std::vector<double> resident;
    qint64 peak = 0;
    /// What the one that did not read heard when it read at last: lines, and how many it was told were left
    /// out before the end of the connection, if that came.
    std::size_t lateLines = 0;
    std::size_t lateLeftOut = 0;
    bool lateDropped = false;

    [[nodiscard]] bool isComplete() const { return failed == 0 && heardByAll == posted; }
    /// In words.
    [[nodiscard]] QString text() const;
};

/// `readers` that read and one that does not; throws std::runtime_error when the bridge does not start.
[[nodiscard]] LoadFigures runLoad(const Command& command, std::size_t readers, const Traffic& traffic);

} // namespace spotwell::bench
