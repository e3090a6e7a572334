// SPDX-FileCopyrightText: 2026 the spotwell developers
// SPDX-License-Identifier: MIT

#pragma once

#include <systemd/sd-bus.h>

#include <string>

namespace spotwell
{

/// Whether the session bus is behind Flatpak's proxy. sd-bus greets a bus with all its lines at once, before
/// the first is answered; the proxy that Debian 12 has takes the bus's answers for messages then, and gives
/// up.
[[nodiscard]] bool isSandboxed();

/// Starts the connection as sd_bus_start() does, but has the bus let it in line by line first, for which it
/// waits a quarter of a second at most. Positive when it is started. 0 when the bus does not let anybody in
/// that way; then nothing has happened. Negative for an errno, as sd_bus_start() gives it.
[[nodiscard]] int startLineByLine(sd_bus* bus, const std::string& address);

} // namespace spotwell
