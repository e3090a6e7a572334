// SPDX-FileCopyrightText: 2026 the spotwell developers
// SPDX-License-Identifier: MIT

#pragma once

#include "tools/spotwell-bridge/spots/SpotReport.h"

#include <QString>

#include <optional>

namespace spotwell::bridge
{

/// The longest cluster line that is passed on, in characters.
inline constexpr qsizetype longestClusterLine = 4096;

/// A spot as the line that cluster nodes send and loggers read, without a line end.
///
/// Columns, counted from 1: 1 "DX de ", 7 spotter and colon, to 24 the frequency in kHz (flush right), 27 the
/// call, 40 the comment (30 characters), 71 the time of day in UTC as "1428Z"; then, where it is known, a
/// blank and the grid (at most 8 characters). Characters are Unicode code points.
///
/// What is too long for its columns is cut; a spotter, so that a blank parts it from the frequency. The park
/// follows the comment when there is room for all of it and the comment does not name it already.
[[nodiscard]] QString spotLine(const SpotReport& report);

/// A cluster line as it is passed on: unchanged, but that each control character other than a tab, and each
/// of Unicode's line ends, is a blank, so that nothing in it can end a line or upset a terminal. Absent when
/// it is empty or too long to be a spot.
[[nodiscard]] std::optional<QString> clusterLine(const QString& line);

} // namespace spotwell::bridge
