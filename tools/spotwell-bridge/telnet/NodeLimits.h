// SPDX-FileCopyrightText: 2026 the spotwell developers
// SPDX-License-Identifier: MIT

#pragma once

#include <QtGlobal>

#include <chrono>
#include <cstddef>
#include <functional>

namespace spotwell::bridge
{

/// A clock that no change of the computer's time moves.
using MonotonicClock = std::function<std::chrono::steady_clock::time_point()>;

/// What the node grants its clients.
struct NodeLimits {
    /// Spot lines that are kept for clients that are behind, and for sh/dx: so many, of so many bytes.
    std::size_t lines = 10'000;
    qsizetype bytes = qsizetype{2} * 1024 * 1024;
    /// Clients at a time; further ones are turned away.
    std::size_t clients = 10'000;
    /// One that has not logged in by then gives way to a further one.
    std::chrono::milliseconds dallying{10'000};
    /// Bytes that the system keeps for a client that does not take them (it reserves twice as much, its own
    /// bookkeeping included). Far more than a client needs that listens, and with the system's own limit of
    /// several megabytes a client that does not would go unnoticed for hours.
    int sendBuffer = 128 * 1024;
    /// A client that takes nothing for so long while something waits is dropped.
    std::chrono::milliseconds taking{60'000};
    /// So is one that has not logged in by then.
    std::chrono::milliseconds login{300'000};
    /// How long a client that was told goodbye is given to close its side.
    std::chrono::milliseconds leaving{5'000};
    /// Between looks at these times, while there is anything to look at.
    std::chrono::milliseconds look{1'000};
    /// Before clients are accepted again when the system had no room for one.
    std::chrono::milliseconds acceptPause{1'000};
};

} // namespace spotwell::bridge
