// SPDX-FileCopyrightText: 2026 the spotwell developers
// SPDX-License-Identifier: MIT

#pragma once

#include "platform/linux/WakeUp.h"
#include "platform/linux/bus/BusConnection.h"

#include <condition_variable>
#include <cstdint>
#include <functional>
#include <memory>
#include <mutex>
#include <string>
#include <string_view>
#include <thread>

namespace spotwell::bench
{

/// A logger of version 6.45 on the session bus that counts the lines it is notified of, on a thread of its
/// own.
class LineReceiver
{
public:
    /// Called with each line, in UTF-8, on the receiver's thread.
    using Received = std::function<void(std::string_view line)>;

    /// `received` may be empty; with `spotReceived` it is also notified of spots, and calls that with each
    /// one's call.
    LineReceiver(std::string busAddress, Received received, Received spotReceived = {});
    ~LineReceiver();
    LineReceiver(const LineReceiver&) = delete;
    LineReceiver& operator=(const LineReceiver&) = delete;

    /// Returns when the logger is there; throws std::system_error when it cannot be.
    void start();
    /// Waits until `count` lines have come since the start, at most 10 s; whether they have.
    bool waitFor(std::uint64_t count);
    [[nodiscard]] std::uint64_t received() const;
    /// What the receiving thread has used of the CPU.
    [[nodiscard]] double cpuSeconds() const;

private:
    void connect();
    void listen(const char* notification, sd_bus_message_handler_t arrived);
    void work();
    static int lineArrived(sd_bus_message* signal, void* userdata, sd_bus_error*);
    static int spotArrived(sd_bus_message* signal, void* userdata, sd_bus_error*);

    const std::string busAddress_;
    const Received received_;
    const Received spotReceived_;
    std::unique_ptr<sd_bus, BusRelease> bus_;
    WakeUp ended_;
    std::thread thread_;

    mutable std::mutex mutex_; // guards all below
    std::condition_variable arrived_;
    std::uint64_t count_ = 0;
    std::uint64_t awaited_ = 0;
};

} // namespace spotwell::bench
