// SPDX-FileCopyrightText: 2026 the spotwell developers
// SPDX-License-Identifier: MIT

#include "util/NumberText.h"

#include <array>
#include <charconv>

namespace spotwell
{

QString fixedNumber(double value, int decimals)
{
    // The largest double has 309 digits before its point.
    std::array<char, 400> digits{};
    const auto end = std::to_chars(digits.data(), digits.data() + digits.size(), value,
                                   std::chars_format::fixed, decimals);
    return QString::fromLatin1(digits.data(), end.ptr - digits.data());
}

} // namespace spotwell
