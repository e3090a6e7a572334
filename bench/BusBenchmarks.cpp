// SPDX-FileCopyrightText: 2026 the spotwell developers
// SPDX-License-Identifier: MIT

#include "bench/Floor.h"
#include "bench/LineReceiver.h"
#include "bench/NodeLines.h"
#include "bench/PrivateDesktop.h"
#include "bench/StandIns.h"
#include "platform/linux/bus/BusNotificationCenter.h"
#include "platform/linux/bus/BusRunningApplications.h"

#include <benchmark/benchmark.h>

#include <ctime>

namespace spotwell::bench
{

namespace
{

double processCpuSeconds()
{
    timespec time{};
    ::clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &time);
    return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_nsec) * 1e-9;
}

/// The sender's CPU time, its worker thread's included, for the argument's number of lines posted at a
/// stretch and received by one logger; the receiving thread's own time is taken off.
void postLines(benchmark::State& state)
{
    const auto burst = static_cast<std::uint64_t>(state.range(0));
    PrivateDesktop desktop;
    desktop.startBus();
    LineReceiver receiver(desktop.busAddress(), {});
    receiver.start();
    NoLog log;
    SessionBus bus(log, desktop.busAddress());
    BusNotificationCenter center(bus, log);
    const QString line = nodeLines(NodeText::spots).constFirst();
    const auto post = [&] {
        center.post(
            QStringLiteral("com.tarnbrooksoftware.spotwell_line"), QStringLiteral("string object"),
            {{QStringLiteral("line"), line}, {QStringLiteral("source"), QStringLiteral("dxc.example.org")}});
    };
    post();
    receiver.waitFor(1);

    std::uint64_t posted = 1;
    double seconds = 0;
    for ([[maybe_unused]] auto iteration : state) {
        const double before = processCpuSeconds() - receiver.cpuSeconds();
        for (std::uint64_t i = 0; i < burst; ++i)
            post();
        posted += burst;
        if (!receiver.waitFor(posted)) {
            state.SkipWithError("a line was lost");
            break;
        }
        const double taken = processCpuSeconds() - receiver.cpuSeconds() - before;
        state.SetIterationTime(taken);
        seconds += taken;
    }
    countLines(state, seconds, burst, burst * static_cast<std::size_t>(line.size()));
}
BENCHMARK(postLines)
    ->Name("BusNotificationCenter::post, sender's CPU, lines at a stretch")
    ->Arg(1)
    ->Arg(100)
    ->UseManualTime()
    ->Unit(benchmark::kMicrosecond);

/// The question that goes before each line, with one logger on the bus. "Time" is waiting, "CPU" the
/// caller's.
void listApplications(benchmark::State& state)
{
    PrivateDesktop desktop;
    desktop.startBus();
    LineReceiver receiver(desktop.busAddress(), {});
    receiver.start();
    NoLog log;
    SessionBus bus(log, desktop.busAddress());
    BusRunningApplications applications(bus, log);
    if (applications.runningApplications().size() != 1)
        state.SkipWithError("the logger was not found");
    for ([[maybe_unused]] auto iteration : state)
        benchmark::DoNotOptimize(applications.runningApplications());
}
BENCHMARK(listApplications)
    ->Name("BusRunningApplications::runningApplications")
    ->UseRealTime()
    ->Unit(benchmark::kMicrosecond);

} // namespace

} // namespace spotwell::bench
