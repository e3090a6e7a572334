// SPDX-FileCopyrightText: 2026 the spotwell developers
// SPDX-License-Identifier: MIT

#include "platform/linux/bus/BusConnection.h"
#include "tests/fakes/SharedLog.h"
#include "tests/support/bus/PrivateBus.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <optional>
#include <poll.h>
#include <string>
#include <vector>

namespace spotwell
{

namespace
{

bool becomesReady(BusConnection& connection)
{
    return waitUntil([&connection] { return connection.open() && connection.isDrained(); });
}

TEST(SessionBus, SaysNothingAboutABusThatIsThere)
{
    const PrivateBus bus;
    SharedLog log;
    SessionBus sessionBus(log, bus.address());
    BusConnection connection(sessionBus, "test");
    EXPECT_TRUE(becomesReady(connection));
    EXPECT_EQ(log.lines(), QStringList{});
}

TEST(SessionBus, SaysOnceThatThereIsNone)
{
    const PrivateBus bus(false);
    SharedLog log;
    SessionBus sessionBus(log, bus.address());
    BusConnection first(sessionBus, "first");
    BusConnection second(sessionBus, "second");
    EXPECT_FALSE(first.open());
    EXPECT_FALSE(second.open());
    EXPECT_EQ(log.lines(),
              QStringList{QStringLiteral("SessionBus: no session bus: No such file or directory")});
}

TEST(SessionBus, SaysOnceThatItIsGoneAndOnceThatItIsBack)
{
    PrivateBus bus;
    SharedLog log;
    SessionBus sessionBus(log, bus.address());
    BusConnection first(sessionBus, "first");
    BusConnection second(sessionBus, "second");
    BusConnection late(sessionBus, "late");
    ASSERT_TRUE(becomesReady(first) && becomesReady(second) && becomesReady(late));

    bus.kill();
    EXPECT_TRUE(waitUntil([&] { return !first.process() && !second.process(); }));
    EXPECT_FALSE(first.open());
    ASSERT_EQ(log.lines().size(), 1);
    EXPECT_TRUE(log.lines().first().startsWith(QStringLiteral("SessionBus: the session bus is gone: ")));

    bus.start();
    ASSERT_TRUE(becomesReady(first) && becomesReady(second));
    EXPECT_EQ(log.lines().size(), 2);
    EXPECT_EQ(log.lines().last(), QStringLiteral("SessionBus: the session bus is back"));

    // A connection that notices only now speaks of a loss that is told already.
    EXPECT_FALSE(late.process());
    EXPECT_TRUE(becomesReady(late));
    EXPECT_EQ(log.lines().size(), 2);
}

TEST(SessionBus, IsTriedAtMostOnceASecondByEach)
{
    PrivateBus bus(false);
    SharedLog log;
    SessionBus sessionBus(log, bus.address());
    BusConnection connection(sessionBus, "test");
    const auto start = BusConnection::Clock::now();
    EXPECT_FALSE(connection.open());
    bus.start();
    EXPECT_TRUE(waitUntil([&connection] { return connection.open(); }));
    EXPECT_GE(BusConnection::Clock::now() - start, std::chrono::seconds{1});
    EXPECT_EQ(connection.generation(), 1U);
}

TEST(SessionBus, TellsAnEventLoopWhatItWaitsFor)
{
    PrivateBus bus;
    SharedLog log;
    SessionBus sessionBus(log, bus.address());
    BusConnection connection(sessionBus, "test");
    EXPECT_EQ(connection.interest().descriptor, -1);
    EXPECT_EQ(connection.interest().due, BusConnection::Deadline::max());

    ASSERT_TRUE(connection.open());
    // Driven by that alone the connection comes about.
    while (!connection.isDrained()) {
        const BusConnection::Interest interest = connection.interest();
        EXPECT_NE(interest.events & (POLLIN | POLLOUT), 0);
        EXPECT_LT(interest.due, BusConnection::Clock::now() + std::chrono::minutes{10});
        pollfd entry{interest.descriptor, interest.events, 0};
        ASSERT_EQ(::poll(&entry, 1, 20'000), 1);
        ASSERT_TRUE(connection.process(1));
    }
    ASSERT_TRUE(connection.process());
    EXPECT_EQ(connection.interest().events, POLLIN);
    EXPECT_EQ(connection.interest().due, BusConnection::Deadline::max());

    connection.close();
    EXPECT_EQ(connection.interest().descriptor, -1);
}

TEST(SessionBus, TakesInNoMoreThanIsAsked)
{
    PrivateBus bus;
    SharedLog log;
    SessionBus sessionBus(log, bus.address());
    BusConnection connection(sessionBus, "test");
    ASSERT_TRUE(becomesReady(connection));
    ASSERT_TRUE(connection.process());
    int answers = 0;
    const auto count = [](sd_bus_message*, void* userdata, sd_bus_error*) {
        ++*static_cast<int*>(userdata);
        return 0;
    };
    for (int i = 0; i < 5; ++i)
        ASSERT_GE(sd_bus_call_method_async(connection.get(), nullptr, "org.freedesktop.DBus",
                                           "/org/freedesktop/DBus", "org.freedesktop.DBus", "GetId", count,
                                           &answers, nullptr),
                  0);
    for (int expected = 1; expected <= 3; ++expected) {
        ASSERT_TRUE(waitUntil([&] { return connection.process(1) && answers >= expected; }));
        EXPECT_EQ(answers, expected);
    }
    // One at least, even when the time is over.
    for (int expected = 4; expected <= 5; ++expected) {
        const auto over = BusConnection::Clock::now();
        ASSERT_TRUE(waitUntil([&] { return connection.process(1000, over) && answers >= expected; }));
        EXPECT_EQ(answers, expected);
    }
}

/// Which bus a connection finds by itself when these are in the environment, given as what is logged of it.
QStringList foundWith(const char* address, const std::string& runtimeDirectory)
{
    const auto set = [](const char* name, const char* value) {
        value != nullptr ? ::setenv(name, value, 1) : ::unsetenv(name);
    };
    const char* const names[] = {"DBUS_SESSION_BUS_ADDRESS", "XDG_RUNTIME_DIR"};
    std::vector<std::optional<std::string>> before;
    for (const char* name : names)
        before.push_back(std::getenv(name) != nullptr ? std::optional(std::getenv(name)) : std::nullopt);
    set(names[0], address);
    set(names[1], runtimeDirectory.empty() ? nullptr : runtimeDirectory.c_str());
    SharedLog log;
    SessionBus sessionBus(log);
    BusConnection connection(sessionBus, "test");
    const bool isReady = connection.open() && becomesReady(connection);
    for (std::size_t i = 0; i < before.size(); ++i)
        set(names[i], before[i] ? before[i]->c_str() : nullptr);
    return isReady ? QStringList{QStringLiteral("ready")} : log.lines();
}

TEST(SessionBus, IsFoundByTheEnvironment)
{
    const PrivateBus bus;
    const std::string directory =
        bus.address().substr(0, bus.address().rfind('/')).substr(sizeof "unix:path=" - 1);
    // A name that an address has to escape.
    const std::string odd = directory + "/a b,c;d%e=\xC3\xA9~";
    std::filesystem::create_directory_symlink(directory, odd);
    const QStringList ready{QStringLiteral("ready")};
    EXPECT_EQ(foundWith(bus.address().c_str(), {}), ready);
    EXPECT_EQ(foundWith(bus.address().c_str(), "/nowhere"), ready);
    EXPECT_EQ(foundWith(nullptr, directory), ready);
    EXPECT_EQ(foundWith(nullptr, odd), ready);
    EXPECT_EQ(foundWith(nullptr, {}),
              QStringList{QStringLiteral("SessionBus: no session bus: No medium found")});
    EXPECT_EQ(foundWith("unix:path=/nowhere/bus", directory),
              QStringList{QStringLiteral("SessionBus: no session bus: No such file or directory")});
}

TEST(SessionBus, TakesNoDescriptors)
{
    const PrivateBus bus;
    SharedLog log;
    SessionBus sessionBus(log, bus.address());
    BusConnection connection(sessionBus, "test");
    ASSERT_TRUE(becomesReady(connection));
    EXPECT_EQ(sd_bus_can_send(connection.get(), SD_BUS_TYPE_UNIX_FD), 0);
}

TEST(SessionBus, WaitsNoLongerThanAllowedWhenTheBusHangs)
{
    PrivateBus bus;
    bus.stop();
    SharedLog log;
    SessionBus sessionBus(log, bus.address());
    BusConnection connection(sessionBus, "test");
    ASSERT_TRUE(connection.open());
    const auto start = BusConnection::Clock::now();
    EXPECT_FALSE(connection.pump(start + std::chrono::milliseconds{50}, [] { return false; }));
    const auto elapsed = BusConnection::Clock::now() - start;
    EXPECT_GE(elapsed, std::chrono::milliseconds{50});
    EXPECT_LT(elapsed, std::chrono::seconds{20});
    EXPECT_NE(connection.get(), nullptr);
}

} // namespace

} // namespace spotwell
