// SPDX-FileCopyrightText: 2026 the spotwell developers
// SPDX-License-Identifier: MIT

#pragma once

#include "bench/LineReceiver.h"
#include "bench/PrivateDesktop.h"
#include "bench/ProcessFigures.h"
#include "bench/compare/Contenders.h"
#include "bench/compare/Hands.h"
#include "bench/compare/Node.h"

#include <QProcess>

#include <chrono>
#include <cstdint>
#include <memory>
#include <mutex>
#include <string_view>
#include <vector>

namespace spotwell::bench
{

/// What a program's processes have in memory, in KiB.
struct SessionMemory {
    qint64 proportional = 0;
    qint64 unshared = 0;
    qint64 resident = 0;
};

/// How often each thread of a program's processes went to sleep, or had to wait for the CPU.
struct SessionSwitches {
    ThreadWakeUps wakeUps;
    ThreadWakeUps preemptions;
};

/// One run of a program, with a node, a display, a session bus and a home of its own. What does not come
/// about throws std::runtime_error.
class Session
{
public:
    /// `contender` must live as long.
    explicit Session(const Contender& contender);
    ~Session();
    Session(const Session&) = delete;
    Session& operator=(const Session&) = delete;

    /// Starts the program; gives the seconds until its window was painted.
    double start();
    /// Makes it connect and log in, gives the window the common size and takes the keyboard away from it.
    void logIn();
    /// Waits until all is read and the program does next to nothing; whether that came within `limit`.
    bool waitForRest(std::chrono::milliseconds limit) const;

    [[nodiscard]] Node& node() { return node_; }
    [[nodiscard]] const PrivateDesktop& desktop() const { return desktop_; }
    /// Of all its processes, since their start.
    [[nodiscard]] double cpuSeconds() const;
    [[nodiscard]] double displayCpuSeconds() const { return cpuSecondsOf(desktop_.displayProcess()); }
    [[nodiscard]] double busCpuSeconds() const { return cpuSecondsOf(desktop_.busProcess()); }
    [[nodiscard]] SessionMemory memory() const;
    /// Whether the program with the window knows the text.
    [[nodiscard]] bool hasInMemory(std::string_view text) const;
    /// Since their start.
    [[nodiscard]] SessionSwitches switches() const;
    /// The lines that the logger has received; 0 where there is none.
    [[nodiscard]] std::uint64_t delivered() const;
    /// From the node to the logger, in microseconds, since the last call.
    [[nodiscard]] std::vector<double> takeLatencies();

private:
    const Contender& contender_;
    Node node_;
    PrivateDesktop desktop_;
    std::mutex mutex_; // guards latencies_
    std::vector<double> latencies_;
    std::unique_ptr<LineReceiver> logger_;
    QProcess process_;
};

} // namespace spotwell::bench
