#include "platform/linux/BusConnection.h"
#include "tests/platform/bus/PrivateBus.h"
#include "tests/platform/bus/SharedLog.h"

#include <gtest/gtest.h>

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
    EXPECT_LT(elapsed, std::chrono::seconds{2});
    EXPECT_NE(connection.get(), nullptr);
}

} // namespace

} // namespace spotwell
