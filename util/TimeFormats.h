// SPDX-FileCopyrightText: 2026 the spotwell developers
// SPDX-License-Identifier: MIT

#pragma once

#include "platform/Time.h"

#include <QString>
#include <QStringView>

#include <optional>

namespace spotwell
{

// The time texts of the feeds and of the console, always in UTC and in the Gregorian calendar with Western
// digits, whatever the user's locale and time zone. Callable from any thread. Each function keeps its
// formatter from the first call that needs it, for making one costs several times what using it does.

/// The time that `text` of the form 2024-03-01 23:59 denotes. Absent when the whole text does not have that
/// form or there is no such time.
[[nodiscard]] std::optional<TimePoint> wsprnetDateAndTime(QStringView text);

/// The time that `text` of the form 2024-03-01T23:59:30 denotes. Absent when the whole text does not have
/// that form (a zone or a fraction of a second behind it included) or there is no such time.
[[nodiscard]] std::optional<TimePoint> jsonDateAndTime(QStringView text);

/// Hours and minutes of `time` as four digits and a Z: 0705Z. Seconds are dropped, not rounded, before 1970
/// too.
[[nodiscard]] QString spotTime(TimePoint time);

} // namespace spotwell
