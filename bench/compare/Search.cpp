// SPDX-FileCopyrightText: 2026 the spotwell developers
// SPDX-License-Identifier: MIT

#include "bench/compare/Search.h"

#include <algorithm>
#include <cmath>

namespace spotwell::bench
{

int greatestThatHolds(const SearchLimits& limits, const std::function<bool(int)>& holds)
{
    constexpr int step = 4;
    if (!holds(limits.first))
        return 0;
    int held = limits.first;
    int failed = 0;
    while (failed == 0 && held < limits.most) {
        const int next = std::min(limits.most, held * step);
        (holds(next) ? held : failed) = next;
    }
    while (failed > held * limits.exactness) {
        const int next = static_cast<int>(std::lround(std::sqrt(static_cast<double>(held) * failed)));
        if (next == held || next == failed)
            break;
        (holds(next) ? held : failed) = next;
    }
    return held;
}

} // namespace spotwell::bench
