// SPDX-FileCopyrightText: 2026 the spotwell developers
// SPDX-License-Identifier: MIT

#pragma once

#include <systemd/sd-bus.h>

#include <cstddef>

namespace spotwell
{

/// Passes over the value at the read position, whatever its type, and takes one off `parts` for it and for
/// each value inside of it. False when these do not suffice, and when the message is damaged; it is not to be
/// read on then.
///
/// sd_bus_message_skip() goes through all parts, however many millions they are.
[[nodiscard]] bool passOverBusValue(sd_bus_message* message, std::size_t& parts);

} // namespace spotwell
