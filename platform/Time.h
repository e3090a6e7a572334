// SPDX-FileCopyrightText: 2026 the spotwell developers
// SPDX-License-Identifier: MIT

#pragma once

#include <chrono>

namespace spotwell
{

/// A wall-clock point in time, counted from 1970-01-01T00:00:00Z in microseconds.
using TimePoint = std::chrono::sys_time<std::chrono::microseconds>;

/// A span of time in seconds, with a fraction.
using Seconds = std::chrono::duration<double>;

/// A time before everything: the first day of year 1. What "never yet" counts as.
inline constexpr TimePoint distantPast = std::chrono::sys_days{std::chrono::year{1} / 1 / 1};

/// The wall clock. Callable from any thread.
class Clock
{
public:
    virtual ~Clock() = default;
    [[nodiscard]] virtual TimePoint now() const = 0;
};

} // namespace spotwell
