// SPDX-FileCopyrightText: 2026 the spotwell developers
// SPDX-License-Identifier: MIT

#include "platform/linux/bus/SessionBus.h"

#include "platform/linux/bus/SandboxBus.h"

#include <QByteArray>

#include <cerrno>
#include <cstdlib>
#include <system_error>
#include <utility>

namespace spotwell
{

std::optional<std::string> SessionBus::addressFromEnvironment()
{
    if (const char* const address = std::getenv("DBUS_SESSION_BUS_ADDRESS"))
        return address;
    const char* const directory = std::getenv("XDG_RUNTIME_DIR");
    if (directory == nullptr)
        return std::nullopt;
    // Escaped as an address asks for (D-Bus specification, "Server Addresses").
    return "unix:path=" + QByteArray(directory).toPercentEncoding("/", "~").toStdString() + "/bus";
}

SessionBus::SessionBus(Log& log, std::string address) : log_(log), address_(std::move(address)) {}

sd_bus* SessionBus::connect(const char* description)
{
    const auto address = address_.empty() ? addressFromEnvironment() : address_;
    sd_bus* bus = nullptr;
    int result = address ? sd_bus_new(&bus) : -ENOMEDIUM;
    if (result >= 0)
        result = sd_bus_set_description(bus, description);
    if (result >= 0)
        result = sd_bus_set_address(bus, address->c_str());
    if (result >= 0)
        result = sd_bus_set_bus_client(bus, 1);
    // Nobody here wants descriptors, which a peer could send by the hundred.
    if (result >= 0)
        result = sd_bus_negotiate_fds(bus, 0);
    const bool usable = result >= 0;
    if (usable)
        result = isSandboxed() ? startLineByLine(bus, *address) : 0;
    if (usable && result == 0)
        result = sd_bus_start(bus);
    if (result >= 0)
        return bus;
    sd_bus_close_unref(bus);
    const std::lock_guard lock(mutex_);
    noteAbsent("no session bus", -result);
    return nullptr;
}

void SessionBus::accepted(const sd_id128_t& busId)
{
    const std::lock_guard lock(mutex_);
    presentId_ = busId;
    if (std::exchange(state_, State::present) == State::absent)
        log_.line(QStringLiteral("SessionBus: the session bus is back"));
}

void SessionBus::broken(const std::optional<sd_id128_t>& busId, int error)
{
    const std::lock_guard lock(mutex_);
    if (!busId)
        noteAbsent("the session bus accepts no connection", error);
    else if (sd_id128_equal(*busId, presentId_) != 0)
        noteAbsent("the session bus is gone", error);
}

void SessionBus::noteAbsent(const char* what, int error)
{
    if (std::exchange(state_, State::absent) == State::absent)
        return;
    log_.line(QStringLiteral("SessionBus: %1: %2")
                  .arg(QString::fromLatin1(what),
                       QString::fromStdString(std::generic_category().message(std::abs(error)))));
}

} // namespace spotwell
