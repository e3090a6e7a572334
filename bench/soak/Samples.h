// SPDX-FileCopyrightText: 2026 the spotwell developers
// SPDX-License-Identifier: MIT

#pragma once

#include <QByteArray>
#include <QString>

#include <cstdint>
#include <functional>
#include <vector>

namespace spotwell::bench
{

/// What a process had at one moment; memory in KiB.
struct Sample {
    double seconds = 0;
    std::uint64_t lines = 0;
    qint64 resident = 0;
    qint64 proportional = 0;
    qint64 anonymous = 0;
    qint64 descriptors = 0;
    qint64 threads = 0;
};

[[nodiscard]] Sample sampleOf(qint64 process);

/// One of a sample's figures along a run.
struct Course {
    /// Means of the first and the last tenth of the run.
    double first = 0;
    double last = 0;
    double greatest = 0;
    /// By the least squares, for 100,000 lines.
    double slope = 0;
};

[[nodiscard]] Course courseOf(const std::vector<Sample>& samples, qint64 Sample::*figure);

/// All of them, as comma-separated values with a line of names.
[[nodiscard]] QByteArray tableOf(const std::vector<Sample>& samples);

} // namespace spotwell::bench
