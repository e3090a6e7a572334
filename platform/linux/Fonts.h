// SPDX-FileCopyrightText: 2026 the spotwell developers
// SPDX-License-Identifier: MIT

#pragma once

#include <thread>

namespace spotwell
{

/// Begins to read the system's font configuration, in a thread that ends with that. It takes as long as
/// connecting to the display, and the toolkit would do the one after the other: a fifth of the time until the
/// window is there. To be joined before anything asks for a font; no thread where none can be had.
[[nodiscard]] std::thread readFontConfiguration();

} // namespace spotwell
