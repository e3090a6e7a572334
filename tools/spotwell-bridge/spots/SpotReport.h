// SPDX-FileCopyrightText: 2026 the spotwell developers
// SPDX-License-Identifier: MIT

#pragma once

#include "platform/Time.h"
#include "tools/spotwell-bridge/Notification.h"

#include <QString>
#include <QStringView>

#include <optional>

namespace spotwell::bridge
{

/// Where frequencies end, in kHz: 1 THz, beyond every allocation to amateurs.
inline constexpr double highestKilohertz = 1e9;

/// The longest texts of a report, in characters (Unicode code points); longer ones are cut.
inline constexpr qsizetype longestCall = 32;
inline constexpr qsizetype longestMode = 32;
inline constexpr qsizetype longestPark = 32;
inline constexpr qsizetype longestComment = 1000;

/// What a logger needs to know of a spot, whichever way it came. Texts are empty where nothing is known; they
/// neither begin nor end with blanks, and hold no control characters and nothing that is not Unicode.
struct SpotReport {
    /// The station heard; never empty, without blanks.
    QString call;
    /// The spotter; never empty, the service's name where none is known. Without blanks and colons.
    QString spotter;
    /// A finite number above 0, at most highestKilohertz.
    double kilohertz = 0.0;
    QString comment;
    /// The reference of an activated park, without blanks.
    QString park;
    QString mode;
    /// The Maidenhead locator of the station heard: 4, 6, 8 or 10 characters.
    QString grid;
    /// In the years 1 to 9999.
    TimePoint time;
};

/// Reads the dictionary of a spot notification that arrived at `now`, which is also the time of a spot that
/// has none. Absent without a call or a frequency: no logger can use such a spot.
///
/// A value of another type than the contract's counts as missing, and of a key that comes twice the first one
/// counts. Of a call, a spotter or a park only what stands before the first blank is taken (of a spotter,
/// also before the first colon), and a grid that is no locator is none.
[[nodiscard]] std::optional<SpotReport> reportOfSpot(const Notification& notification, TimePoint now);

/// Reads a cluster line that arrived at `now`: "DX de ", the spotter up to the first colon, frequency and
/// call as the next two words, the comment up to the time of day, and a locator behind it. Absent when it has
/// no spotter, frequency or call there, or is longer than longestClusterLine.
///
/// The time is what stands in columns 71 to 75, otherwise the last word of the form "1428Z". It becomes the
/// point in time nearest to `now`, of two the earlier; without a time the spot is of `now`. Mode and park
/// stay empty.
[[nodiscard]] std::optional<SpotReport> reportOfLine(QStringView line, TimePoint now);

} // namespace spotwell::bridge
