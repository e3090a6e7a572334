// SPDX-FileCopyrightText: 2026 the spotwell developers
// SPDX-License-Identifier: MIT

#pragma once

#include <QString>
#include <QtGlobal>

#include <map>
#include <vector>

namespace spotwell::bench
{

/// What a process has used of the CPU, in seconds of user and system time together.
struct CpuFigures {
    double seconds = 0;
    /// The same by the names of its present threads; threads of one name are added up.
    std::map<QString, double> threads;
};

/// Of memory, in KiB.
struct MemoryFigures {
    /// The most that was resident at any time.
    qint64 peak = 0;
    /// What is resident now, each shared page divided by the number of its users.
    qint64 proportional = 0;
    /// What is resident now and belongs to no file.
    qint64 anonymous = 0;
    /// What is resident now and nobody else's.
    qint64 unshared = 0;
    /// What is resident now, shared pages in full.
    qint64 resident = 0;
};

// All but the exact time read from /proc; a process that is gone gives zeros.

[[nodiscard]] CpuFigures cpuOf(qint64 process);
/// What was used between the two.
[[nodiscard]] CpuFigures operator-(const CpuFigures& later, const CpuFigures& earlier);
/// The first figure of cpuOf() alone, not rounded to the ticks of a 100th of a second.
[[nodiscard]] double cpuSecondsOf(qint64 process);
[[nodiscard]] MemoryFigures memoryOf(qint64 process);
/// How many descriptors it has open, and how many threads.
[[nodiscard]] qint64 descriptorsOf(qint64 process);
[[nodiscard]] qint64 threadsOf(qint64 process);
/// What is resident now, in KiB.
[[nodiscard]] qint64 residentOf(qint64 process);
/// How often each present thread has gone to sleep, and so was woken, by the thread's folder in /proc.
struct ThreadWakeUps : std::map<QString, qint64> {
};
[[nodiscard]] ThreadWakeUps wakeUpsOf(qint64 process);
/// The same for how often the system took the CPU from a thread that would have gone on.
[[nodiscard]] ThreadWakeUps preemptionsOf(qint64 process);
/// The wake-ups between the two, without those of threads that have ended meanwhile.
[[nodiscard]] qint64 operator-(const ThreadWakeUps& later, const ThreadWakeUps& earlier);

/// `process` and all that it has started, and these, and so on.
[[nodiscard]] std::vector<qint64> familyOf(qint64 process);

} // namespace spotwell::bench
