// SPDX-FileCopyrightText: 2026 the spotwell developers
// SPDX-License-Identifier: MIT

#pragma once

#include "tools/spotwell-bridge/spots/SpotReport.h"

#include <QByteArray>

namespace spotwell::bridge
{

/// The largest datagram, in bytes: with its headers it fits one packet of every usual network.
inline constexpr qsizetype largestDatagram = 1400;

/// A spot as the XML datagram that N1MM Logger+ broadcasts and many programs take ("External UDP Broadcasts",
/// "Spot"). The frequency is in kHz, the timestamp in UTC. At most largestDatagram bytes: a comment that does
/// not fit, the park behind it included, is cut.
///
/// The elements that tell of a contest log (StationName, status, statuslist) are left out.
[[nodiscard]] QByteArray n1mmSpot(const SpotReport& report);

} // namespace spotwell::bridge
