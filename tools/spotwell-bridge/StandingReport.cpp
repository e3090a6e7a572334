// SPDX-FileCopyrightText: 2026 the spotwell developers
// SPDX-License-Identifier: MIT

#include "tools/spotwell-bridge/StandingReport.h"

#include <utility>

namespace spotwell::bridge
{

namespace
{

using namespace std::chrono_literals;

constexpr auto quietTime = 1s;

} // namespace

StandingReport::StandingReport(Tell tell)
    : tell_(std::move(tell)), quietEnds_([this] {
          isQuiet_ = false;
          tellNow();
      })
{
}

void StandingReport::change(Standing standing)
{
    now_ = standing;
    if (!isQuiet_)
        tellNow();
}

void StandingReport::tellNow()
{
    if (told_ == now_)
        return;
    const auto before = std::exchange(told_, now_);
    // The first is no change.
    if (before) {
        isQuiet_ = true;
        quietEnds_.set(Alarm::Clock::now() + quietTime);
    }
    tell_(before, now_);
}

} // namespace spotwell::bridge
