// SPDX-FileCopyrightText: 2026 the spotwell developers
// SPDX-License-Identifier: MIT

#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <utility>

namespace spotwell::bridge
{

/// A telnet client on loopback that waits, with a deadline, for what it is to hear.
class TelnetClient
{
public:
    /// `receiveBuffer` above 0 makes the system keep no more than about that many unread bytes.
    explicit TelnetClient(std::uint16_t port, int receiveBuffer = 0);
    ~TelnetClient();
    TelnetClient(const TelnetClient&) = delete;
    TelnetClient& operator=(const TelnetClient&) = delete;

    void say(const std::string& line);
    /// Answers the question for a callsign and waits for the prompt.
    bool logIn();
    /// Hears until `text` has come; false when it does not come.
    bool hears(const std::string& text);
    /// Hears until the node ends the connection; false when it does not.
    bool hearsEnd();
    /// Hears as many bytes as `text` has; whether they are the same. What was heard before must be taken.
    bool hearsExactly(std::string_view text);
    [[nodiscard]] const std::string& heard() const { return heard_; }
    std::string takeHeard() { return std::exchange(heard_, {}); }

private:
    enum class Step { more, end, nothing };
    Step hearMore();

    int socket_;
    std::string heard_;
};

} // namespace spotwell::bridge
