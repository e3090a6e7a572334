// SPDX-FileCopyrightText: 2026 the spotwell developers
// SPDX-License-Identifier: MIT

#pragma once

#include "platform/Log.h"

#include <systemd/sd-bus.h>

#include <mutex>
#include <optional>
#include <string>

namespace spotwell
{

/// The user's session bus, as all parts of the program that use it see it together: where it is, and whether
/// it is there. Each part has a connection of its own (BusConnection). From any thread.
///
/// The log gets one line when the bus is missing or lost and one when it is back, however many connections
/// notice.
class SessionBus
{
public:
    /// `address` is a D-Bus server address; when empty, the session's own from the environment.
    explicit SessionBus(Log& log, std::string address = {});

    /// Where the session's own bus is; absent when nothing tells.
    [[nodiscard]] static std::optional<std::string> addressFromEnvironment();

    /// Begins a private connection and returns at once, before the bus has answered, but in a sandbox
    /// (SandboxBus.h). Null when there is no bus.
    sd_bus* connect(const char* description);
    /// To be told when a connection was accepted; `busId` is the one the bus gave.
    void accepted(const sd_id128_t& busId);
    /// To be told when a connection broke, with the bus's id if the bus had accepted it, and the errno.
    void broken(const std::optional<sd_id128_t>& busId, int error);

private:
    enum class State { unknown, present, absent };

    void noteAbsent(const char* what, int error);

    Log& log_;
    const std::string address_;
    std::mutex mutex_;
    State state_ = State::unknown;
    /// The bus that accepted last. A bus that was started anew has another id, so a connection that only now
    /// notices the end of the old one is told apart from one that lost the new one.
    sd_id128_t presentId_{};
};

} // namespace spotwell
