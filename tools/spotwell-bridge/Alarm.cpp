// SPDX-FileCopyrightText: 2026 the spotwell developers
// SPDX-License-Identifier: MIT

#include "tools/spotwell-bridge/Alarm.h"

#include <algorithm>
#include <utility>

namespace spotwell::bridge
{

namespace
{

using namespace std::chrono_literals;

/// A timer's span is an int of milliseconds.
constexpr std::chrono::milliseconds longestSpan = 24h;

} // namespace

Alarm::Alarm(std::function<void()> ring) : ring_(std::move(ring))
{
    timer_.setSingleShot(true);
    timer_.setTimerType(Qt::PreciseTimer);
    timer_.callOnTimeout(&timer_, [this] {
        if (Clock::now() < due_)
            begin();
        else
            ring_();
    });
}

void Alarm::set(Clock::time_point due)
{
    due_ = due;
    begin();
}

void Alarm::cancel()
{
    timer_.stop();
}

void Alarm::begin()
{
    const auto now = Clock::now();
    const auto left = due_ <= now                 ? 0ms
                      : due_ - now >= longestSpan ? longestSpan
                                                  : std::chrono::ceil<std::chrono::milliseconds>(due_ - now);
    timer_.start(left);
}

} // namespace spotwell::bridge
