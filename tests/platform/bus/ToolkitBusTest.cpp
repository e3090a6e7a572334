// SPDX-FileCopyrightText: 2026 the spotwell developers
// SPDX-License-Identifier: MIT

#include "platform/linux/bus/ToolkitBus.h"

#include "tests/support/bus/PrivateBus.h"

#include <QByteArray>
#include <gtest/gtest.h>

namespace spotwell
{

namespace
{

using namespace std::chrono_literals;

constexpr const char* variable = "DBUS_SESSION_BUS_ADDRESS";

class ToolkitBusTest : public testing::Test
{
protected:
    void SetUp() override { qputenv(variable, QByteArray::fromStdString(bus.address())); }
    void TearDown() override
    {
        if (before.isNull())
            qunsetenv(variable);
        else
            qputenv(variable, before);
    }
    static std::string inEnvironment() { return qgetenv(variable).toStdString(); }

    const QByteArray before = qgetenv(variable);
    PrivateBus bus;
};

TEST_F(ToolkitBusTest, IsTheSessionsThatAnswers)
{
    EXPECT_EQ(hungBus(20s), "");
    EXPECT_EQ(inEnvironment(), bus.address());
}

TEST_F(ToolkitBusTest, IsNoneWhereTheSessionsHangs)
{
    bus.stop();
    EXPECT_EQ(hungBus(50ms), bus.address());
    EXPECT_EQ(inEnvironment(), bus.address());
    hideBus();
    EXPECT_EQ(inEnvironment(), "disabled:");
    bus.resume();
}

TEST_F(ToolkitBusTest, MayBeMissing)
{
    bus.kill();
    EXPECT_EQ(hungBus(20s), "");
    EXPECT_EQ(inEnvironment(), bus.address());
}

} // namespace

} // namespace spotwell
