// SPDX-FileCopyrightText: 2026 the spotwell developers
// SPDX-License-Identifier: MIT

#pragma once

namespace spotwell
{

#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
/// Sanitizers make the program several times slower, and at its end they still look for leaks.
inline constexpr int slowness = 8;
inline constexpr bool sanitized = true;
#else
inline constexpr int slowness = 1;
inline constexpr bool sanitized = false;
#endif

} // namespace spotwell
