// SPDX-FileCopyrightText: 2026 the spotwell developers
// SPDX-License-Identifier: MIT

#pragma once

#include "tests/integration/support/FeedServices.h"

#include <algorithm>
#include <array>
#include <atomic>
#include <cstdint>
#include <string_view>

namespace spotwell::bench
{

/// The three web services: one answer in four brings a new spot, all bring the latest before it, until there
/// were enough answers; then none is new any more.
class SoakWeb
{
public:
    /// `answers` of all three together. Has to live as long as `services` serves.
    SoakWeb(FeedServices& services, std::uint64_t answers);

    /// Answers so far, of those that may bring something new, and the spots in them.
    [[nodiscard]] std::uint64_t answered() const { return std::min(answered_.load(), wanted_); }
    [[nodiscard]] std::uint64_t spots() const;

    /// Which feed, 0 to 2, and which of its spots, counted from 1, has this call.
    struct Spot {
        std::size_t feed;
        std::uint64_t number;
    };
    [[nodiscard]] static Spot spotOf(std::string_view call);

private:
    [[nodiscard]] std::string bodyOf(std::size_t feed);

    const std::uint64_t wanted_;
    std::atomic<std::uint64_t> answered_ = 0;
    /// Each used by the thread that serves its feed.
    std::array<std::atomic<int>, 3> newest_{};
};

} // namespace spotwell::bench
