// SPDX-FileCopyrightText: 2026 the spotwell developers
// SPDX-License-Identifier: MIT

#include "tools/spotwell-bridge/StandingReport.h"

#include "tests/support/WaitUntil.h"

#include <gtest/gtest.h>

#include <utility>
#include <vector>

namespace spotwell::bridge
{

namespace
{

using namespace std::chrono_literals;

TEST(StandingReport, TellsAChangeAtOnceAndTheNextAfterASecond)
{
    using Told = std::pair<std::optional<Standing>, Standing>;
    std::vector<Told> told;
    StandingReport report(
        [&told](std::optional<Standing> before, Standing now) { told.emplace_back(before, now); });
    const auto toldMore = [&told](std::size_t count) {
        return waitUntil([&told, count] { return told.size() >= count; });
    };
    std::vector<Told> expected{{std::nullopt, Standing::owner}, {Standing::owner, Standing::queued}};
    report.change(Standing::owner);
    const auto begin = Alarm::Clock::now();
    report.change(Standing::queued);
    EXPECT_EQ(told, expected) << "the first is no change";

    for (const Standing standing : {Standing::owner, Standing::queued, Standing::gone})
        report.change(standing);
    EXPECT_EQ(told, expected);
    EXPECT_TRUE(toldMore(3));
    EXPECT_GE(Alarm::Clock::now() - begin, 1s);
    expected.emplace_back(Standing::queued, Standing::gone);
    EXPECT_EQ(told, expected);

    // What comes back to what was told is not told, and the next is told at once.
    const auto second = Alarm::Clock::now();
    report.change(Standing::owner);
    report.change(Standing::gone);
    EXPECT_TRUE(waitUntil([second] { return Alarm::Clock::now() - second > 1100ms; }));
    QCoreApplication::processEvents();
    EXPECT_EQ(told, expected);
    report.change(Standing::owner);
    expected.emplace_back(Standing::gone, Standing::owner);
    EXPECT_EQ(told, expected);
}

} // namespace

} // namespace spotwell::bridge
