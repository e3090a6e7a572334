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
/// blank and the grid. Characters are Unicode code points.
[[nodiscard]] QString spotLine(const SpotReport& report);

/// A cluster line as it is passed on: unchanged, but that no character in it can end or break a line. Absent
/// when it is empty or too long to be a spot.
[[nodiscard]] std::optional<QString> clusterLine(const QString& line);

} // namespace spotwell::bridge
