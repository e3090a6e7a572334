// SPDX-FileCopyrightText: 2026 the spotwell developers
// SPDX-License-Identifier: MIT

#pragma once

#include <cstddef>

namespace spotwell::bridge
{

/// Descriptors that are left to the rest of the program, whatever the clients do.
inline constexpr std::size_t reservedDescriptors = 64;

/// Raises the process's limit of open descriptors as far as the system lets it; the usual one was made for
/// select(), which is not used here. The limit that holds then.
std::size_t raiseOpenFileLimit();

/// How many clients can be had at a time where `wanted` are and there are `descriptors`; at least one.
[[nodiscard]] std::size_t clientsWithin(std::size_t wanted, std::size_t descriptors);

} // namespace spotwell::bridge
