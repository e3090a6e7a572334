// SPDX-FileCopyrightText: 2026 the spotwell developers
// SPDX-License-Identifier: MIT

#pragma once

#include <systemd/sd-bus.h>

#include <cstddef>
#include <string>
#include <vector>

namespace spotwell
{

/// No more applications than this are looked at.
inline constexpr std::size_t mostApplicationNames = 4096;

/// The bus names of applications in an answer of `org.freedesktop.DBus.ListNames`, in its order. None when
/// the answer is an error.
[[nodiscard]] std::vector<std::string> readApplicationNames(sd_bus_message* answer);

} // namespace spotwell
