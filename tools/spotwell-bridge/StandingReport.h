// SPDX-FileCopyrightText: 2026 the spotwell developers
// SPDX-License-Identifier: MIT

#pragma once

#include "tools/spotwell-bridge/Alarm.h"
#include "tools/spotwell-bridge/LoggerOnBus.h"

#include <functional>
#include <optional>

namespace spotwell::bridge
{

/// Tells how the logger stands with the bus, at most once a second, however often others take its name and
/// give it back: a change is told at once, those of the next second by what they have come to at its end.
/// Belongs to the thread of its event loop.
class StandingReport
{
public:
    /// Is told the standing and the one told before it, which is absent the first time.
    using Tell = std::function<void(std::optional<Standing> before, Standing now)>;

    explicit StandingReport(Tell tell);

    void change(Standing standing);

private:
    void tellNow();

    const Tell tell_;
    Standing now_{};
    std::optional<Standing> told_;
    /// Whether the second after a change that was told is not over yet.
    bool isQuiet_ = false;
    Alarm quietEnds_;
};

} // namespace spotwell::bridge
