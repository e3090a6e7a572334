// SPDX-FileCopyrightText: 2026 the spotwell developers
// SPDX-License-Identifier: MIT

#pragma once

#include <QByteArray>

#include <array>
#include <chrono>
#include <cstddef>
#include <cstdint>
#include <deque>
#include <unordered_set>

namespace spotwell::bridge
{

/// Knows the lines of the last ten minutes, so that none is sent twice: two sources may report the same spot,
/// and where spotwell is pointed at this very node each line comes back.
///
/// Keeps a digest of each line, some 64 bytes in all.
class RecentLines
{
public:
    using Moment = std::chrono::steady_clock::time_point;

    /// How long a line is known; after exactly this time it still is.
    static constexpr std::chrono::seconds memory{600};
    /// Lines known at a time, more than four hundred a second; the oldest are forgotten first.
    static constexpr std::size_t mostLines = 250'000;

    explicit RecentLines(std::size_t most = mostLines) : most_(most) {}

    /// Takes note of `line` at `now` and returns true, unless it is known already. To come again does not
    /// make a known line any younger.
    [[nodiscard]] bool add(const QByteArray& line, Moment now);
    /// How many lines are known.
    [[nodiscard]] std::size_t size() const { return byAge_.size(); }

private:
    using Digest = std::array<std::uint64_t, 2>;
    struct Hash {
        // A digest's bits are evenly spread already.
        std::size_t operator()(const Digest& digest) const { return static_cast<std::size_t>(digest[0]); }
    };
    struct Entry {
        Moment time;
        Digest digest;
    };

    static Digest digestOf(const QByteArray& line);
    void forgetOldest();

    const std::size_t most_;
    std::deque<Entry> byAge_;
    std::unordered_set<Digest, Hash> known_;
};

} // namespace spotwell::bridge
