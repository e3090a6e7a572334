// SPDX-FileCopyrightText: 2026 the spotwell developers
// SPDX-License-Identifier: MIT

#include "bench/Floor.h"

#include <algorithm>
#include <array>
#include <chrono>
#include <cstring>
#include <ctime>
#include <string>

namespace spotwell::bench
{

namespace
{

constexpr std::size_t textSize = 16383;

const void* scan(const std::string& text)
{
    benchmark::ClobberMemory();
    return std::memchr(text.data(), '\0', text.size());
}

double threadSeconds()
{
    timespec time{};
    ::clock_gettime(CLOCK_THREAD_CPUTIME_ID, &time);
    return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_nsec) * 1e-9;
}

void floorScan(benchmark::State& state)
{
    const std::string text(textSize, 'x');
    for ([[maybe_unused]] auto iteration : state)
        benchmark::DoNotOptimize(scan(text));
    state.SetBytesProcessed(state.iterations() * static_cast<std::int64_t>(textSize));
}
BENCHMARK(floorScan)->Name("floor: memchr over 16 KiB");

} // namespace

double scanSecondsPerByte()
{
    using Clock = std::chrono::steady_clock;
    constexpr int scans = 200;
    const std::string text(textSize, 'x');
    std::array<double, 15> seconds{};
    for (double& each : seconds) {
        const auto start = Clock::now();
        for (int i = 0; i < scans; ++i)
            benchmark::DoNotOptimize(scan(text));
        each = std::chrono::duration<double>(Clock::now() - start).count();
    }
    std::nth_element(seconds.begin(), seconds.begin() + seconds.size() / 2, seconds.end());
    return seconds[seconds.size() / 2] / (scans * static_cast<double>(textSize));
}

Stopwatch::Stopwatch() : start_(threadSeconds()) {}

double Stopwatch::seconds() const
{
    return threadSeconds() - start_;
}

void countLines(benchmark::State& state, double seconds, std::size_t lines, std::size_t bytes)
{
    const double perIteration = seconds / static_cast<double>(state.iterations());
    state.counters["us_per_line"] = perIteration * 1e6 / static_cast<double>(lines);
    state.counters["times_floor"] = perIteration / (scanSecondsPerByte() * static_cast<double>(bytes));
}

} // namespace spotwell::bench
