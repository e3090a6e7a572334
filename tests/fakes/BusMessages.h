// SPDX-FileCopyrightText: 2026 the spotwell developers
// SPDX-License-Identifier: MIT

#pragma once

#include "platform/linux/bus/BusConnection.h"

#include <array>
#include <memory>
#include <sys/socket.h>
#include <unistd.h>

namespace spotwell
{

/// Messages as they arrive, made by hand, of a bus that never answers.
class BusMessages
{
public:
    BusMessages()
    {
        sd_bus* bus = nullptr;
        if (::socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0, ends_.data()) != 0 || sd_bus_new(&bus) < 0)
            return;
        bus_.reset(bus);
        sd_bus_set_fd(bus, ends_[0], ends_[0]);
        sd_bus_start(bus);
    }
    ~BusMessages() { ::close(ends_[1]); }
    BusMessages(const BusMessages&) = delete;
    BusMessages& operator=(const BusMessages&) = delete;

    /// A message to write to; null when there can be none.
    BusMessage made()
    {
        sd_bus_message* message = nullptr;
        sd_bus_message_new_signal(bus_.get(), &message, "/a", "a.b", "Posted");
        return BusMessage(message);
    }

    /// Makes `message` one that has arrived; false when it is not complete, or null.
    static bool seal(sd_bus_message* message)
    {
        return sd_bus_message_seal(message, 1, 0) >= 0 && sd_bus_message_rewind(message, 1) >= 0;
    }

private:
    std::array<int, 2> ends_{-1, -1};
    std::unique_ptr<sd_bus, BusRelease> bus_;
};

} // namespace spotwell
