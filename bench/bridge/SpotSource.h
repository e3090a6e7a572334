// SPDX-FileCopyrightText: 2026 the spotwell developers
// SPDX-License-Identifier: MIT

#pragma once

#include "platform/linux/bus/BusConnection.h"

#include <chrono>
#include <cstddef>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace spotwell::bench
{

/// What spotwell posts: lines of a cluster node, and spots of web services field by field.
enum class SpotKind { line, web };

/// Posts spots on a session bus, cluster lines and web spots by turns and no two alike, and keeps what a
/// telnet client is to hear of them. For one thread.
class SpotSource
{
public:
    using Clock = std::chrono::steady_clock;

    /// Returns when the bus has accepted the connection; throws std::system_error when it does not.
    explicit SpotSource(const std::string& busAddress);

    /// Posts one more; returns when it is on its way.
    void post();
    /// How many were posted. They are numbered from 0.
    [[nodiscard]] std::size_t count() const { return posted_.size(); }
    [[nodiscard]] static SpotKind kindOf(std::size_t number);
    /// Just before the spot of that number was handed to the bus.
    [[nodiscard]] Clock::time_point postedAt(std::size_t number) const { return posted_[number]; }
    /// The lines of all spots posted, with their ends.
    [[nodiscard]] std::string_view text() const { return text_; }
    /// Where in the text the line of that number ends.
    [[nodiscard]] std::size_t endOf(std::size_t number) const { return ends_[number]; }

private:
    int postLine(const std::string& line) const;
    int postWebSpot(const std::string& comment) const;

    std::unique_ptr<sd_bus, BusRelease> bus_;
    std::vector<Clock::time_point> posted_;
    std::string text_;
    std::vector<std::size_t> ends_;
};

} // namespace spotwell::bench
