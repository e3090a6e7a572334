// SPDX-FileCopyrightText: 2026 the spotwell developers
// SPDX-License-Identifier: MIT

#pragma once

#include "platform/linux/bus/BusConnection.h"
#include "tools/spotwell-bridge/Alarm.h"

#include <QSocketNotifier>

#include <functional>
#include <memory>

namespace spotwell::bridge
{

/// Runs a connection to the session bus on the event loop of its thread, and begins it anew, once a second,
/// after it was lost. Nothing here waits for the bus.
class BusDriver
{
public:
    struct Handlers {
        /// A connection was begun, which the bus need not have accepted yet; what is sent waits until then.
        std::function<void()> begun;
        /// The connection begun last is lost.
        std::function<void()> lost;
    };

    BusDriver(BusConnection& connection, Handlers handlers);

    /// Begins the first connection; false, and nothing more happens, when there is no bus.
    bool start();
    /// To be called when something was sent outside of the connection's own callbacks.
    void update();
    /// Leaves the connection to its owner.
    void stop();

private:
    void turn();
    void retry();
    void arm();
    void disarm();
    void watch(int descriptor);

    BusConnection& connection_;
    const Handlers handlers_;
    std::unique_ptr<QSocketNotifier> readable_;
    std::unique_ptr<QSocketNotifier> writable_;
    Alarm due_;
    Alarm again_;
};

} // namespace spotwell::bridge
