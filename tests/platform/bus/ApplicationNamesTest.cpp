// SPDX-FileCopyrightText: 2026 the spotwell developers
// SPDX-License-Identifier: MIT

#include "platform/linux/bus/ApplicationNames.h"

#include "platform/linux/bus/BusRunningApplications.h"
#include "tests/fakes/BusMessages.h"

#include <gtest/gtest.h>

#include <chrono>

namespace spotwell
{

namespace
{

using namespace std::chrono_literals;

std::vector<std::string> readBack(const std::vector<std::string>& listed)
{
    BusMessages messages;
    const BusMessage message = messages.made();
    EXPECT_TRUE(message);
    sd_bus_message_open_container(message.get(), SD_BUS_TYPE_ARRAY, "s");
    for (const std::string& name : listed)
        sd_bus_message_append(message.get(), "s", name.c_str());
    sd_bus_message_close_container(message.get());
    EXPECT_TRUE(BusMessages::seal(message.get()));
    return readApplicationNames(message.get());
}

std::vector<std::string> applicationNames(int count)
{
    std::vector<std::string> names;
    for (int number = 0; number < count; ++number)
        names.push_back("com.tarnbrooksoftware.Application.A" + std::to_string(number));
    return names;
}

TEST(ApplicationNames, AreThoseWithThePrefixInTheirOrder)
{
    EXPECT_EQ(readBack({"org.freedesktop.DBus", ":1.5", "com.tarnbrooksoftware.Application.B",
                        "com.tarnbrooksoftware.Application", "com.tarnbrooksoftware.Applications.C",
                        "org.com.tarnbrooksoftware.Application.D", "com.tarnbrooksoftware.Application.A",
                        "com.tarnbrooksoftware.application.E"}),
              (std::vector<std::string>{"com.tarnbrooksoftware.Application.B",
                                        "com.tarnbrooksoftware.Application.A"}));
    EXPECT_EQ(readBack({}), std::vector<std::string>{});
}

TEST(ApplicationNames, AreTheFirst4096)
{
    const std::vector<std::string> most = applicationNames(4096);
    EXPECT_EQ(readBack(most), most);
    EXPECT_EQ(readBack(applicationNames(4097)), most);
    // Others do not count.
    std::vector<std::string> behindOthers(5000, ":1.5");
    behindOthers.insert(behindOthers.end(), most.begin(), most.end());
    EXPECT_EQ(readBack(behindOthers), most);
}

TEST(ApplicationNames, AreNoneInAnotherAnswer)
{
    BusMessages messages;
    const BusMessage message = messages.made();
    sd_bus_message_append(message.get(), "s", "com.tarnbrooksoftware.Application.A");
    EXPECT_TRUE(BusMessages::seal(message.get()));
    EXPECT_EQ(readApplicationNames(message.get()), std::vector<std::string>{});
}

TEST(BusRunningApplicationsLimits, AreAQuarterOfASecondAndAMomentForTheWindow)
{
    const BusRunningApplications::Limits limits;
    EXPECT_EQ(limits.call, 250ms);
    EXPECT_EQ(limits.windowCall, 80ms);
    // A fifth of each is kept for whoever waited behind another.
    EXPECT_EQ(BusRunningApplications::applicationsShare(limits.call), 200ms);
    EXPECT_EQ(BusRunningApplications::applicationsShare(limits.windowCall), 64ms);
}

} // namespace

} // namespace spotwell
