// SPDX-FileCopyrightText: 2026 the spotwell developers
// SPDX-License-Identifier: MIT

#pragma once

#include <atomic>
#include <chrono>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <string>
#include <string_view>
#include <thread>
#include <vector>

namespace spotwell::bench
{

/// A cluster node that sends so many numbered spot lines at a steady rate, and now and then a line that is
/// none while there is nothing else to send. On a thread of its own.
///
/// Never is more waiting to be read than fits in one read of the program: at the end of a full read a line is
/// cut in two, and six such reads are a flood. So nothing has to be lost, however busy the machine.
class SoakNode
{
public:
    using Clock = std::chrono::steady_clock;

    /// How many bytes have come to the program that it has not read yet.
    using Unread = std::function<std::size_t()>;

    /// `listener` is a listening socket, closed in the end; `rate` lines a second.
    SoakNode(int listener, std::uint64_t lines, double rate, Unread unread);
    ~SoakNode();
    SoakNode(const SoakNode&) = delete;
    SoakNode& operator=(const SoakNode&) = delete;

    [[nodiscard]] std::uint64_t sent() const { return sent_; }
    /// When the line of this number, counted from 1, was handed to the connection.
    [[nodiscard]] Clock::time_point sentAt(std::uint64_t number) const;

    /// A spot line, without its line end, and the number in such a line; 0 for another.
    [[nodiscard]] static std::string line(std::uint64_t number);
    [[nodiscard]] static std::uint64_t numberIn(std::string_view line);

private:
    void work();
    void sendLines(int peer);
    /// Asks for the callsign; false when the program leaves before it has told it.
    bool isLoggedIn(int peer) const;

    const int listener_;
    const std::uint64_t lines_;
    const double rate_;
    const Unread unread_;
    std::atomic<std::uint64_t> sent_ = 0;
    std::vector<std::atomic<Clock::rep>> times_;
    std::atomic<bool> ended_ = false;
    std::thread thread_;
};

} // namespace spotwell::bench
