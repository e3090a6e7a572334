// SPDX-FileCopyrightText: 2026 the spotwell developers
// SPDX-License-Identifier: MIT

#pragma once

#include "platform/Time.h"

#include <QtGlobal>

#include <algorithm>
#include <cmath>

namespace spotwell::simulator
{

/// A steady rate without drift: every item has its own moment, counted from the beginning.
class Pace
{
public:
    /// `rate` in items a second, above 0.
    explicit constexpr Pace(double rate) : rate_(rate) {}

    /// When item `index`, counted from 0, is due.
    [[nodiscard]] constexpr Seconds dueAt(qint64 index) const
    {
        return Seconds{static_cast<double>(index) / rate_};
    }

    /// How many items are due once `elapsed` has passed; the first one is due at once.
    [[nodiscard]] qint64 dueCount(Seconds elapsed) const
    {
        auto count = static_cast<qint64>(std::floor(std::max(elapsed.count(), 0.0) * rate_)) + 1;
        // The product may round to the other side of an item's own moment.
        while (dueAt(count) <= elapsed)
            ++count;
        while (count > 1 && dueAt(count - 1) > elapsed)
            --count;
        return count;
    }

private:
    double rate_;
};

} // namespace spotwell::simulator
