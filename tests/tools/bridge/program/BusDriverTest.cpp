// SPDX-FileCopyrightText: 2026 the spotwell developers
// SPDX-License-Identifier: MIT

#include "tools/spotwell-bridge/BusDriver.h"

#include "tests/fakes/SharedLog.h"
#include "tests/support/WaitUntil.h"
#include "tests/support/bus/PrivateBus.h"

#include <gtest/gtest.h>

#include <algorithm>

namespace spotwell::bridge
{

namespace
{

using namespace std::chrono_literals;

/// Takes a signal in, which takes longer than a turn may.
int takeSlowly(sd_bus_message*, void* userdata, sd_bus_error*)
{
    const auto end = std::chrono::steady_clock::now() + 20ms;
    while (std::chrono::steady_clock::now() < end) {
    }
    ++*static_cast<int*>(userdata);
    return 0;
}

TEST(BusDriver, LeavesTimeForOthers)
{
    constexpr int count = 20;
    const PrivateBus bus;
    SharedLog log;
    SessionBus sessionBus(log, bus.address());
    BusConnection connection(sessionBus, "test");
    int taken = 0;
    const auto begun = [&] {
        sd_bus_match_signal_async(connection.get(), nullptr, nullptr, "/a", "a.b", "C", &takeSlowly, nullptr,
                                  &taken);
        for (int i = 0; i < count; ++i)
            sd_bus_emit_signal(connection.get(), "/a", "a.b", "C", "");
    };
    BusDriver driver(connection, {begun, [] {}});
    ASSERT_TRUE(driver.start());
    int most = 0;
    EXPECT_TRUE(waitUntil([&] {
        const int before = taken;
        QCoreApplication::processEvents();
        most = std::max(most, taken - before);
        return taken == count;
    }));
    EXPECT_LE(most, 2) << "the descriptor and the clock may each give it a turn";
    driver.stop();
}

} // namespace

} // namespace spotwell::bridge
