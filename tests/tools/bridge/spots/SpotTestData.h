// SPDX-FileCopyrightText: 2026 the spotwell developers
// SPDX-License-Identifier: MIT

#pragma once

#include "tests/support/Printers.h"
#include "tools/spotwell-bridge/spots/SpotReport.h"

#include <QString>

#include <chrono>

namespace spotwell::bridge
{

/// A point in time in UTC.
constexpr TimePoint at(int year, unsigned month, unsigned day, int hour, int minute, int second = 0,
                       int microsecond = 0)
{
    return std::chrono::sys_days{std::chrono::year{year} / std::chrono::month{month} /
                                 std::chrono::day{day}} +
           std::chrono::hours{hour} + std::chrono::minutes{minute} + std::chrono::seconds{second} +
           std::chrono::microseconds{microsecond};
}

/// The time of day of every spot below.
inline constexpr TimePoint afternoon = at(2026, 11, 21, 14, 28, 5, 999999);

/// A spot with nothing special about it.
inline SpotReport usualReport()
{
    SpotReport report;
    report.call = QStringLiteral("X1X");
    report.spotter = QStringLiteral("N0CALL");
    report.kilohertz = 14074.0;
    report.comment = QStringLiteral("Tks so Much");
    report.time = afternoon;
    return report;
}

/// An emoji: one character of two units.
inline const QString radio = QString::fromUcs4(U"\U0001F4FB");

/// Whether the character of the unit `code` is one that no text for a terminal may hold.
constexpr bool isControlCode(int code)
{
    return code <= 0x1F || (code >= 0x7F && code <= 0x9F) || code == 0x2028 || code == 0x2029;
}

/// What stands for the unit `code` by itself in a text for other programs.
inline QChar plainFor(int code)
{
    const bool isNone = (code >= 0xD800 && code <= 0xDFFF) || code == 0xFFFE || code == 0xFFFF;
    return isControlCode(code) ? QChar(u' ') : isNone ? QChar(QChar::ReplacementCharacter) : QChar(code);
}

} // namespace spotwell::bridge
