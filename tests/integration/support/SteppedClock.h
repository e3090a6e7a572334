// SPDX-FileCopyrightText: 2026 the spotwell developers
// SPDX-License-Identifier: MIT

#pragma once

#include "tests/integration/support/SteppedClockPage.h"

#include <QString>
#include <QStringList>

#include <chrono>
#include <cstdint>

namespace spotwell
{

/// The wall clock of a program that was started with variables(). It stands, and moves when the test steps
/// it, however long the machine takes in between. Timers go on with real seconds, as they do when a clock is
/// set; a machine's sleep is the program stopped, a step, and the program continued.
class SteppedClock
{
public:
    using Time = std::chrono::sys_time<std::chrono::nanoseconds>;

    /// Begins with the present, which certificates are good for, in whole milliseconds as the log's stamps
    /// have. Shares the file `path` with the program; throws when that fails.
    explicit SteppedClock(const QString& path);
    ~SteppedClock();
    SteppedClock(const SteppedClock&) = delete;
    SteppedClock& operator=(const SteppedClock&) = delete;

    /// What the program has to be started with, "NAME=VALUE"; `libraries` are loaded before it, too.
    [[nodiscard]] QStringList variables(const QStringList& libraries = {}) const;

    /// What the program's clock says.
    [[nodiscard]] Time now() const;
    /// Sets it forwards, or backwards.
    void step(std::chrono::nanoseconds by);
    /// Waits until the program's main thread, otherwise quiet, has read the clock in this many more seconds:
    /// with "reconnect" on, the supervision does so in each.
    [[nodiscard]] bool ticks(std::uint64_t seconds = 2) const;
    /// Lets the program stop, as if by SIGSTOP, when its main thread waits for something to happen the next
    /// time. So what comes while it is stopped is there for it before any timer.
    void stopAtWait();

private:
    const QString path_;
    SteppedClockPage* page_ = nullptr;
};

} // namespace spotwell
