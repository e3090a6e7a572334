// SPDX-FileCopyrightText: 2026 the spotwell developers
// SPDX-License-Identifier: MIT

#pragma once

#include <QString>

#include <cstddef>
#include <string>

namespace spotwell
{

/// The longest text put on the bus, in bytes of UTF-8. Far above any real one, far below a bus's message
/// limit.
inline constexpr std::size_t maxBusTextBytes = std::size_t{1} << 20;

/// `text` as UTF-8 that every D-Bus implementation carries (D-Bus specification, "Valid strings"): U+0000 and
/// lone surrogates become U+FFFD, and so do Unicode's noncharacters (U+FDD0 to U+FDEF, U+FFFE and U+FFFF of
/// each plane), which sd-bus neither sends nor reads. What is longer than `maxBytes` is cut after a whole
/// character.
[[nodiscard]] std::string busSafeText(const QString& text, std::size_t maxBytes = maxBusTextBytes);

} // namespace spotwell
