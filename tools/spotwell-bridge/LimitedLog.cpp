// SPDX-FileCopyrightText: 2026 the spotwell developers
// SPDX-License-Identifier: MIT

#include "tools/spotwell-bridge/LimitedLog.h"

#include <utility>

namespace spotwell::bridge
{

LimitedLog::LimitedLog(Log& log, const QString& about, const Limits& limits)
    : log_(log), about_(about), limits_(limits), alarm_([this] { endInterval(); })
{
}

void LimitedLog::line(const QString& text)
{
    if (lines_ == 0)
        alarm_.set(Alarm::Clock::now() + limits_.interval);
    if (++lines_ <= limits_.lines)
        log_.line(text);
}

void LimitedLog::endInterval()
{
    const unsigned lines = std::exchange(lines_, 0);
    if (lines > limits_.lines)
        log_.line(QStringLiteral("%1: lines left out: %2").arg(about_).arg(lines - limits_.lines));
}

} // namespace spotwell::bridge
