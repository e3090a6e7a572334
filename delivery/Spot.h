// SPDX-FileCopyrightText: 2026 the spotwell developers
// SPDX-License-Identifier: MIT

#pragma once

#include "platform/Time.h"

#include <QString>

#include <optional>

namespace spotwell
{

/// One report that a station was heard. Every field may be absent; a text may also be empty.
struct Spot {
    /// The callsign of the station heard.
    std::optional<QString> call;
    /// The spotter's callsign ("DX de").
    std::optional<QString> dxde;
    /// The feed's display name.
    std::optional<QString> source;
    /// When the spot was made.
    std::optional<TimePoint> timestamp;
    /// The frequency in megahertz.
    std::optional<double> megahertz;
    /// The operating mode as the feed gives it.
    std::optional<QString> mode;
    /// The grid locator of the station heard.
    std::optional<QString> dxgrid;
    /// Where the station heard is, in degrees.
    std::optional<double> dxlatitude;
    std::optional<double> dxlongitude;
    /// Where the spotter is, in degrees.
    std::optional<double> delatitude;
    std::optional<double> delongitude;
    /// The reference of an activated park.
    std::optional<QString> pota;
    std::optional<QString> comment;
    /// The feed's four-letter tag, which begins the console line.
    std::optional<QString> service;
};

} // namespace spotwell
