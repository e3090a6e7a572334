// SPDX-FileCopyrightText: 2026 the spotwell developers
// SPDX-License-Identifier: MIT

#pragma once

#include "platform/linux/bus/BusText.h"
#include "tools/spotwell-bridge/Notification.h"

#include <systemd/sd-bus.h>

#include <optional>

namespace spotwell::bridge
{

/// The most entries of a dictionary; the interface knows thirteen.
inline constexpr std::size_t mostEntries = 1000;
/// The most that all texts of a notification come to, in bytes of UTF-8.
inline constexpr std::size_t mostTextBytes = 2 * maxBusTextBytes;

/// Reads the signal that carries a notification. Absent when it has another shape, more than `mostEntries`
/// entries, a text longer than spotwell puts on the bus, or more than `mostTextBytes` of texts. A value of
/// another type may be of any kind, but all of these together may have no more than `mostEntries` parts.
[[nodiscard]] std::optional<Notification> readNotification(sd_bus_message* signal);

} // namespace spotwell::bridge
