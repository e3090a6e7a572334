// SPDX-FileCopyrightText: 2026 the spotwell developers
// SPDX-License-Identifier: MIT

#pragma once

#include "bench/bridge/SpotSource.h"

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

namespace spotwell::bench
{

/// A socket that is closed with its owner.
class Socket
{
public:
    /// Connects to that port of this machine; throws std::system_error when it cannot. A `receiveBuffer`
    /// other than 0 is the most that the system takes in for a client that does not read, in bytes.
    explicit Socket(std::uint16_t port, int receiveBuffer = 0);
    ~Socket();
    Socket(Socket&& other) noexcept;
    Socket& operator=(Socket&&) = delete;

    [[nodiscard]] int descriptor() const { return descriptor_; }
    /// Gives a callsign and hears until the prompt; throws std::runtime_error when that does not come.
    void logIn() const;

private:
    int descriptor_;
};

/// Telnet clients that compare what they hear with what was posted, byte by byte and all on the caller's
/// thread: so many clients take as little of the machine as can be.
class TelnetClients
{
public:
    /// When a line was heard by the first and by the last of the clients, in microseconds since it was
    /// posted.
    struct Latency {
        double first = 0;
        double last = 0;
    };

    /// The source outlives the clients, and posts nothing before they are logged in.
    TelnetClients(const SpotSource& source, std::uint16_t port, std::size_t count);
    ~TelnetClients();
    TelnetClients(const TelnetClients&) = delete;
    TelnetClients& operator=(const TelnetClients&) = delete;

    /// Waits until a client hears something, `until` at the latest, and takes in what there is.
    void hear(SpotSource::Clock::time_point until);
    /// Goes on hearing until every line posted was heard by all clients; false when some are missing still
    /// after `patience` without a word.
    bool hearAll(std::chrono::milliseconds patience);

    /// Lines that all clients have heard.
    [[nodiscard]] std::size_t heardByAll() const { return heardByAll_; }
    /// Clients that heard something else than what was posted, or lost the connection. No more is heard of
    /// them.
    [[nodiscard]] std::size_t failed() const { return failed_; }
    /// Of the first heardByAll() lines.
    [[nodiscard]] const std::vector<Latency>& latencies() const { return latencies_; }

private:
    struct Client {
        Socket socket;
        /// How much of the source's text was heard, and how many whole lines.
        std::size_t position = 0;
        std::size_t lines = 0;
    };

    void hear(Client& client);
    void noteLines(Client& client);
    void fail(const Client& client);

    const SpotSource& source_;
    std::vector<Client> clients_;
    int epoll_;
    std::size_t failed_ = 0;
    std::size_t heardByAll_ = 0;
    std::uint64_t bytes_ = 0;
    /// How many clients have heard each line.
    std::vector<std::size_t> heard_;
    std::vector<Latency> latencies_;
};

} // namespace spotwell::bench
