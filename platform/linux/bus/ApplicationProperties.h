// SPDX-FileCopyrightText: 2026 the spotwell developers
// SPDX-License-Identifier: MIT

#pragma once

#include "platform/RunningApplications.h"

#include <systemd/sd-bus.h>

#include <cstddef>
#include <optional>

namespace spotwell
{

/// Where an application shows itself: its properties, and the calls it takes.
inline constexpr const char* applicationPath = "/com/tarnbrooksoftware/Application";

/// The most properties of an answer, and parts of their values, that are looked at.
inline constexpr std::size_t mostPropertyParts = 1000;

/// What an answer of `org.freedesktop.DBus.Properties.GetAll` says of an application; its address is left
/// empty. Absent when there is no displayed name of a sensible length, or when the answer has too many parts.
/// A version of another type counts as missing.
[[nodiscard]] std::optional<RunningApplication> readApplicationProperties(sd_bus_message* answer);

} // namespace spotwell
