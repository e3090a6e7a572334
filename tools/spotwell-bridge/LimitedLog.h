// SPDX-FileCopyrightText: 2026 the spotwell developers
// SPDX-License-Identifier: MIT

#pragma once

#include "platform/Log.h"
#include "tools/spotwell-bridge/Alarm.h"

#include <chrono>

namespace spotwell::bridge
{

/// Passes on so many lines of a log at a time, however often others give cause for one; how many there were
/// beyond that is told afterwards. Belongs to the thread of its event loop.
class LimitedLog final : public Log
{
public:
    struct Limits {
        /// Lines within an interval, which begins with the first of them.
        unsigned lines = 20;
        std::chrono::milliseconds interval{1'000};
    };

    /// `about` begins the line that tells how many were left out. The log outlives this object.
    LimitedLog(Log& log, const QString& about, const Limits& limits);
    LimitedLog(Log& log, const QString& about) : LimitedLog(log, about, Limits{}) {}

    void line(const QString& text) override;

private:
    void endInterval();

    Log& log_;
    const QString about_;
    const Limits limits_;
    unsigned lines_ = 0;
    Alarm alarm_;
};

} // namespace spotwell::bridge
