// SPDX-FileCopyrightText: 2026 the spotwell developers
// SPDX-License-Identifier: MIT

#pragma once

#include "delivery/Spot.h"

namespace spotwell
{

/// How long a parser waits after each spot, so that at most ten a second reach the logger.
inline constexpr Seconds spotSpacing{0.1};

/// The number of remembered spots at which a feed forgets them all.
inline constexpr qsizetype mostRemembered = 5001;

/// What the parsers of the web feeds need of the program around them. Called on the URL session's callback
/// queue only.
class FeedHost
{
public:
    virtual ~FeedHost() = default;

    /// Sends `spot` to the main thread, where it is shown and posted. Does not wait; spots keep their order.
    virtual void forward(const Spot& spot) = 0;
    /// Holds the calling parser for `duration`. False when the program is ending; the parser then returns
    /// without further work.
    virtual bool pause(Seconds duration) = 0;
};

} // namespace spotwell
