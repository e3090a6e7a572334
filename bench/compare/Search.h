// SPDX-FileCopyrightText: 2026 the spotwell developers
// SPDX-License-Identifier: MIT

#pragma once

#include <functional>

namespace spotwell::bench
{

/// Between what to search, and how exactly.
struct SearchLimits {
    int first = 0;
    int most = 0;
    /// The search ends when the least that failed is no more than this times the greatest that held.
    double exactness = 1;
};

/// The greatest number that `holds`, found by doubling twice at a time from `limits.first` and then by
/// halving the ratio between what held and what did not. 0 when the first does not hold; never more than
/// `limits.most`.
[[nodiscard]] int greatestThatHolds(const SearchLimits& limits, const std::function<bool(int)>& holds);

} // namespace spotwell::bench
