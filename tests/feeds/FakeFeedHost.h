// SPDX-FileCopyrightText: 2026 the spotwell developers
// SPDX-License-Identifier: MIT

#pragma once

#include "feeds/FeedHost.h"

#include <QStringList>

#include <limits>
#include <vector>

namespace spotwell
{

/// The program around a parser, by hand.
class FakeFeedHost final : public FeedHost
{
public:
    void forward(const Spot& spot) override
    {
        journal.append(QStringLiteral("spot"));
        spots.push_back(spot);
    }
    bool pause(Seconds duration) override
    {
        journal.append(QStringLiteral("pause"));
        pauses.push_back(duration);
        return pauses.size() < endsAtPause;
    }

    /// Forgets what was recorded, for the next answer.
    void clear()
    {
        spots.clear();
        pauses.clear();
        journal.clear();
    }

    std::vector<Spot> spots;
    std::vector<Seconds> pauses;
    /// "spot" and "pause" in the order of the calls.
    QStringList journal;
    /// The pause, counted from 1, from which on the program is ending.
    std::size_t endsAtPause = std::numeric_limits<std::size_t>::max();
};

} // namespace spotwell
