// SPDX-FileCopyrightText: 2026 the spotwell developers
// SPDX-License-Identifier: MIT

#include "bench/bridge/Run.h"

#include "bench/LineReceiver.h"
#include "bench/ProcessFigures.h"
#include "bench/bridge/Forwarder.h"

#include <QThread>

#include <mutex>
#include <stdexcept>

namespace spotwell::bench
{

namespace
{

using namespace std::chrono_literals;
using Clock = SpotSource::Clock;

constexpr auto patience = 10s;
/// Spots that go ahead of all that is measured, one at a time.
constexpr int warmUp = 100;

void require(bool condition, const char* words)
{
    if (!condition)
        throw std::runtime_error(words);
}

void postOneByOne(SpotSource& source, TelnetClients& clients, int count)
{
    for (int i = 0; i < count; ++i) {
        source.post();
        require(clients.hearAll(patience), "a line is missing");
    }
}

Clock::time_point dueAt(Clock::time_point start, std::size_t number, int rate)
{
    return start + std::chrono::nanoseconds{1s} * number / rate;
}

} // namespace

bool postSpots(SpotSource& source, TelnetClients& clients, const Traffic& traffic,
               const std::function<void()>& everySecond)
{
    const auto start = Clock::now();
    for (std::size_t i = 0; i < traffic.count(); ++i) {
        const auto due = dueAt(start, i, traffic.rate);
        while (Clock::now() < due)
            clients.hear(due);
        source.post();
        if (everySecond && i % static_cast<std::size_t>(traffic.rate) == 0)
            everySecond();
    }
    return clients.hearAll(patience);
}

RunFigures runForwarder(const Command& command, std::size_t count, const Traffic& traffic)
{
    Forwarder forwarder(command.program, command.arguments);
    SpotSource source(forwarder.busAddress());
    TelnetClients clients(source, forwarder.port(), count);
    postOneByOne(source, clients, warmUp);

    const double cpu = cpuSecondsOf(forwarder.process());
    const double busCpu = cpuSecondsOf(forwarder.busProcess());
    const ThreadWakeUps wakeUps = wakeUpsOf(forwarder.process());
    require(postSpots(source, clients, traffic, {}), "a line is missing or out of order");
    const auto spots = static_cast<double>(traffic.count());
    RunFigures figures;
    figures.cpu = (cpuSecondsOf(forwarder.process()) - cpu) * 1e6 / spots;
    figures.busCpu = (cpuSecondsOf(forwarder.busProcess()) - busCpu) * 1e6 / spots;
    figures.wakeUpsPerSpot = static_cast<double>(wakeUpsOf(forwarder.process()) - wakeUps) / spots;
    figures.peak = memoryOf(forwarder.process()).peak;
    for (std::size_t i = warmUp; i < source.count(); ++i)
        figures.latencies[SpotSource::kindOf(i)].push_back(clients.latencies()[i]);
    return figures;
}

IdleFigures runIdle(const Command& command, int seconds)
{
    Forwarder forwarder(command.program, command.arguments);
    SpotSource source(forwarder.busAddress());
    TelnetClients clients(source, forwarder.port(), 1);
    postOneByOne(source, clients, warmUp);
    QThread::sleep(2);
    const double cpu = cpuSecondsOf(forwarder.process());
    const ThreadWakeUps wakeUps = wakeUpsOf(forwarder.process());
    QThread::sleep(static_cast<unsigned long>(seconds));
    return {wakeUpsOf(forwarder.process()) - wakeUps, (cpuSecondsOf(forwarder.process()) - cpu) * 1e3};
}

std::vector<double> runBus(const Traffic& traffic)
{
    PrivateDesktop desktop;
    desktop.startBus();
    std::mutex mutex;
    std::vector<Clock::time_point> arrivals;
    LineReceiver receiver(desktop.busAddress(), [&](std::string_view) {
        const auto now = Clock::now();
        const std::lock_guard lock(mutex);
        arrivals.push_back(now);
    });
    receiver.start();
    SpotSource source(desktop.busAddress());
    std::vector<std::size_t> lines;
    const auto start = Clock::now();
    for (std::size_t i = 0; i < traffic.count(); ++i) {
        QThread::usleep(static_cast<unsigned long>(std::max<std::int64_t>(
            0, std::chrono::ceil<std::chrono::microseconds>(dueAt(start, i, traffic.rate) - Clock::now())
                   .count())));
        if (SpotSource::kindOf(i) == SpotKind::line)
            lines.push_back(i);
        source.post();
    }
    require(receiver.waitFor(lines.size()), "a line is missing");
    std::vector<double> latencies;
    const std::lock_guard lock(mutex);
    for (std::size_t i = 0; i < lines.size(); ++i)
        latencies.push_back(
            std::chrono::duration<double, std::micro>(arrivals[i] - source.postedAt(lines[i])).count());
    return latencies;
}

} // namespace spotwell::bench
