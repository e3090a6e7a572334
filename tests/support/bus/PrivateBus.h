// SPDX-FileCopyrightText: 2026 the spotwell developers
// SPDX-License-Identifier: MIT

#pragma once

#include "tests/support/bus/ChildProcess.h"

#include <memory>
#include <string>

namespace spotwell
{

/// A session bus of the test's own: a dbus-daemon on a socket in a temporary directory.
class PrivateBus
{
public:
    /// Starts the bus unless told not to; the address is fixed either way. It allows everything but what the
    /// elements in `denied` forbid (dbus-daemon's configuration file).
    explicit PrivateBus(bool running = true, const std::string& denied = {});
    ~PrivateBus();
    PrivateBus(const PrivateBus&) = delete;
    PrivateBus& operator=(const PrivateBus&) = delete;

    /// Has the bus know a program that takes this name when it is started, which fails; to be called before
    /// start(). The file that is there once it was started.
    std::string offer(const std::string& name);
    /// Starts it on the same address as ever and waits until it takes connections.
    void start();
    /// Ends it as a crash would.
    void kill();
    /// Lets it hang: connections stay, nothing is answered.
    void stop();
    /// Lets it go on after stop().
    void resume();
    [[nodiscard]] const std::string& address() const { return address_; }
    /// The environment entry under which a child finds this bus.
    [[nodiscard]] std::string environment() const { return "DBUS_SESSION_BUS_ADDRESS=" + address_; }

private:
    std::string directory_;
    std::string address_;
    std::unique_ptr<ChildProcess> daemon_;
};

} // namespace spotwell
