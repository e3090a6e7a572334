// SPDX-FileCopyrightText: 2026 the spotwell developers
// SPDX-License-Identifier: MIT

#pragma once

#include <chrono>
#include <string>

namespace spotwell
{

/// The address of the session bus that the environment names, when it does not answer within `limit`; empty
/// where it does, or there is none.
[[nodiscard]] std::string hungBus(std::chrono::milliseconds limit);

/// Takes the session bus out of the environment, where the toolkit finds it: its bridge to screen readers
/// would wait for a bus that hangs without a limit while the window is made. No other thread is to run.
void hideBus();

} // namespace spotwell
