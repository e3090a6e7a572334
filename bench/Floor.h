// SPDX-FileCopyrightText: 2026 the spotwell developers
// SPDX-License-Identifier: MIT

#pragma once

#include <benchmark/benchmark.h>

#include <cstddef>

namespace spotwell::bench
{

/// What the C library's memchr() takes for a byte, in seconds, in a text of one read's size that does not
/// hold the character sought. No treatment of the same bytes can be faster, on whatever machine.
[[nodiscard]] double scanSecondsPerByte();

/// The CPU time of the calling thread since the stopwatch was made.
class Stopwatch
{
public:
    Stopwatch();
    [[nodiscard]] double seconds() const;

private:
    double start_;
};

/// Adds two counters to a finished benchmark whose iterations took `seconds` of CPU time in all and treated
/// `lines` lines of `bytes` bytes each: `us_per_line`, in microseconds, and `times_floor`, how often the
/// bytes could have been scanned in the same time.
void countLines(benchmark::State& state, double seconds, std::size_t lines, std::size_t bytes);

} // namespace spotwell::bench
