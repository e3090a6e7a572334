// SPDX-FileCopyrightText: 2026 the spotwell developers
// SPDX-License-Identifier: MIT

#include "platform/linux/bus/SandboxBus.h"

#include "platform/linux/bus/BusConnection.h"
#include "tests/support/bus/PrivateBus.h"

#include <gtest/gtest.h>

namespace spotwell
{
namespace
{

class SandboxBusTest : public testing::Test
{
protected:
    void SetUp() override
    {
        sd_bus* made = nullptr;
        ASSERT_GE(sd_bus_new(&made), 0);
        connection.reset(made);
        ASSERT_GE(sd_bus_set_address(made, bus.address().c_str()), 0);
        ASSERT_GE(sd_bus_set_bus_client(made, 1), 0);
        ASSERT_GE(sd_bus_negotiate_fds(made, 0), 0);
    }
    /// Whether the bus answers on the connection.
    bool isAnswered() const
    {
        return waitUntil([this] {
            return sd_bus_process(connection.get(), nullptr) < 0 || sd_bus_is_ready(connection.get()) > 0;
        });
    }

    PrivateBus bus;
    std::unique_ptr<sd_bus, BusRelease> connection;
};

TEST_F(SandboxBusTest, aBusLetsInWhoeverGreetsItLineByLine)
{
    ASSERT_GT(startLineByLine(connection.get(), bus.address()), 0);
    EXPECT_TRUE(isAnswered());
    const char* name = nullptr;
    EXPECT_GE(sd_bus_get_unique_name(connection.get(), &name), 0);
    EXPECT_EQ(std::string(name).substr(0, 1), ":");
    sd_id128_t id{};
    EXPECT_GE(sd_bus_get_bus_id(connection.get(), &id), 0);
    // It goes when the bus goes.
    bus.kill();
    EXPECT_TRUE(waitUntil([this] {
        return sd_bus_process(connection.get(), nullptr) < 0 || sd_bus_is_open(connection.get()) <= 0;
    }));
}

TEST_F(SandboxBusTest, whatDoesNotLetItInLeavesTheUsualWay)
{
    EXPECT_EQ(startLineByLine(connection.get(), "unix:abstract=" + bus.address()), 0);
    EXPECT_EQ(startLineByLine(connection.get(), bus.address() + "-nobody"), 0);
    EXPECT_EQ(startLineByLine(connection.get(), "unix:path=" + std::string(200, 'x')), 0);
    EXPECT_EQ(startLineByLine(connection.get(), ""), 0);
    bus.stop();
    EXPECT_EQ(startLineByLine(connection.get(), bus.address()), 0);
    bus.resume();
    EXPECT_GE(sd_bus_start(connection.get()), 0);
    EXPECT_TRUE(isAnswered());
}

} // namespace
} // namespace spotwell
