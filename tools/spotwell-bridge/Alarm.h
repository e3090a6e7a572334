// SPDX-FileCopyrightText: 2026 the spotwell developers
// SPDX-License-Identifier: MIT

#pragma once

#include <QTimer>

#include <chrono>
#include <functional>

namespace spotwell::bridge
{

/// Rings once at a point in time, however far away, never before it. Belongs to the thread of its event loop.
class Alarm
{
public:
    using Clock = std::chrono::steady_clock;

    explicit Alarm(std::function<void()> ring);

    /// Replaces what was set before. A time that has passed rings at the next turn of the event loop.
    void set(Clock::time_point due);
    void cancel();

private:
    void begin();

    const std::function<void()> ring_;
    Clock::time_point due_;
    QTimer timer_;
};

} // namespace spotwell::bridge
