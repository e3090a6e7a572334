#pragma once

#include "tools/spotwell-bridge/Notification.h"

#include <systemd/sd-bus.h>

#include <optional>

namespace spotwell::bridge
{

/// The most entries of a dictionary; the interface knows thirteen.
inline constexpr std::size_t mostEntries = 1000;

/// Reads the signal that carries a notification. Absent when it has another shape, more than `mostEntries`
/// entries, or a text longer than spotwell puts on the bus.
[[nodiscard]] std::optional<Notification> readNotification(sd_bus_message* signal);

} // namespace spotwell::bridge
