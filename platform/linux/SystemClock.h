// SPDX-FileCopyrightText: 2026 the spotwell developers
// SPDX-License-Identifier: MIT

#pragma once

#include "platform/Time.h"

namespace spotwell
{

/// The computer's wall clock.
class SystemClock final : public Clock
{
public:
    [[nodiscard]] TimePoint now() const override
    {
        return std::chrono::floor<std::chrono::microseconds>(std::chrono::system_clock::now());
    }
};

} // namespace spotwell
