// SPDX-FileCopyrightText: 2026 the spotwell developers
// SPDX-License-Identifier: MIT

#include "bench/soak/SoakNode.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <cstdio>
#include <sys/socket.h>
#include <unistd.h>
#include <utility>

namespace spotwell::bench
{

namespace
{

using namespace std::chrono_literals;

constexpr std::size_t numberColumn = 40;
constexpr std::size_t numberDigits = 7;
/// Of bytes, before a last line; a read takes 16,383.
constexpr std::size_t mostUnread = 12'000;
/// How often the node sends what is due.
constexpr auto turn = 5ms;

/// False when the other side has gone.
bool sendAll(int peer, std::string_view bytes)
{
    while (!bytes.empty()) {
        const ssize_t sent = ::send(peer, bytes.data(), bytes.size(), MSG_NOSIGNAL);
        if (sent <= 0)
            return false;
        bytes.remove_prefix(static_cast<std::size_t>(sent));
    }
    return true;
}

} // namespace

SoakNode::SoakNode(int listener, std::uint64_t lines, double rate, Unread unread)
    : listener_(listener),
      lines_(lines),
      rate_(rate),
      unread_(std::move(unread)),
      times_(lines),
      thread_([this] { work(); })
{
}

SoakNode::~SoakNode()
{
    ended_ = true;
    ::shutdown(listener_, SHUT_RDWR);
    thread_.join();
    ::close(listener_);
}

SoakNode::Clock::time_point SoakNode::sentAt(std::uint64_t number) const
{
    return Clock::time_point(Clock::duration(times_.at(number - 1).load()));
}

std::string SoakNode::line(std::uint64_t number)
{
    std::array<char, 80> text{};
    (void)std::snprintf(text.data(), text.size(),
                        "DX de W3XYZ:     14025.0  JA1XYZ       #%07u CQ up 2                 1428Z ",
                        static_cast<unsigned>(number));
    return text.data();
}

std::uint64_t SoakNode::numberIn(std::string_view line)
{
    std::uint64_t number = 0;
    if (line.size() > numberColumn + numberDigits)
        std::from_chars(line.data() + numberColumn, line.data() + numberColumn + numberDigits, number);
    return number;
}

void SoakNode::work()
{
    while (!ended_) {
        const int peer = ::accept4(listener_, nullptr, nullptr, SOCK_CLOEXEC);
        if (peer < 0)
            return;
        if (isLoggedIn(peer)) {
            sendLines(peer);
            while (!ended_ && sendAll(peer, "Nothing to spot\r\n"))
                std::this_thread::sleep_for(20ms);
        }
        ::close(peer);
    }
}

bool SoakNode::isLoggedIn(int peer) const
{
    std::string heard;
    std::array<char, 256> bytes{};
    sendAll(peer, "login: ");
    while (heard.find('\n') == std::string::npos) {
        const ssize_t got = ::recv(peer, bytes.data(), bytes.size(), 0);
        if (got <= 0)
            return false;
        heard.append(bytes.data(), static_cast<std::size_t>(got));
    }
    return sendAll(peer, "Hello\r\n");
}

void SoakNode::sendLines(int peer)
{
    const auto begun = std::chrono::duration<double>(static_cast<double>(sent_) / rate_);
    const auto start = Clock::now() - std::chrono::duration_cast<Clock::duration>(begun);
    while (sent_ < lines_ && !ended_) {
        std::this_thread::sleep_for(turn);
        // Before the time is taken: it can take milliseconds.
        const std::size_t room = mostUnread - std::min(mostUnread, unread_());
        const auto now = Clock::now();
        const double passed = std::chrono::duration<double>(now - start).count();
        const auto due = std::min(lines_, static_cast<std::uint64_t>(std::llround(passed * rate_)));
        std::string text;
        std::uint64_t number = sent_;
        while (number < due && text.size() < room) {
            times_[number].store(now.time_since_epoch().count());
            text += line(++number) + "\r\n";
        }
        if (!sendAll(peer, text))
            return;
        sent_ = number;
        // What it answers is of no interest, unless it is the end.
        std::array<char, 4096> heard{};
        ssize_t got = 0;
        while ((got = ::recv(peer, heard.data(), heard.size(), MSG_DONTWAIT)) > 0) {
        }
        if (got == 0)
            return;
    }
}

} // namespace spotwell::bench
