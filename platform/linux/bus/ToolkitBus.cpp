// SPDX-FileCopyrightText: 2026 the spotwell developers
// SPDX-License-Identifier: MIT

#include "platform/linux/bus/ToolkitBus.h"

#include "platform/linux/bus/BusConnection.h"

#include <cstdlib>

namespace spotwell
{

namespace
{

/// What is wrong with the bus is told by those who use it.
class NoLog final : public Log
{
public:
    void line(const QString&) override {}
};

} // namespace

std::string hungBus(std::chrono::milliseconds limit)
{
    const auto address = SessionBus::addressFromEnvironment();
    if (!address)
        return {};
    NoLog log;
    SessionBus bus(log, *address);
    BusConnection connection(bus, "start");
    if (!connection.open())
        return {};
    const bool answers = connection.pump(BusConnection::Clock::now() + limit,
                                         [&connection] { return connection.isDrained(); });
    // One that refuses the connection refuses the toolkit's, too.
    if (answers || connection.get() == nullptr)
        return {};
    return *address;
}

void hideBus()
{
    ::setenv("DBUS_SESSION_BUS_ADDRESS", "disabled:", 1);
}

} // namespace spotwell
