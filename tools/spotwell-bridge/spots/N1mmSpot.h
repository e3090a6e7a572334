#pragma once

#include "tools/spotwell-bridge/spots/SpotReport.h"

#include <QByteArray>

namespace spotwell::bridge
{

/// A spot as the XML datagram that N1MM Logger+ broadcasts and many programs take ("External UDP Broadcasts",
/// "Spot Info"). The frequency is in kHz, the timestamp in UTC. At most 1400 bytes, so that it fits one
/// packet.
[[nodiscard]] QByteArray n1mmSpot(const SpotReport& report);

} // namespace spotwell::bridge
