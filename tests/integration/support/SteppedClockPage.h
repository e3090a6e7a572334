// SPDX-FileCopyrightText: 2026 the spotwell developers
// SPDX-License-Identifier: MIT

#pragma once

#include <atomic>
#include <cstdint>

namespace spotwell
{

/// The file that a test and the program with the stepped clock share.
struct SteppedClockPage {
    /// What the program's wall clock says, since the epoch.
    std::atomic<std::int64_t> nanoseconds;
    /// How often its main thread has come back to the wall clock after at least half a second without.
    std::atomic<std::uint64_t> returns;
    /// That it stops when its main thread waits the next time. False again once it does.
    std::atomic<bool> stopsAtWait;
};

} // namespace spotwell
