// SPDX-FileCopyrightText: 2026 the spotwell developers
// SPDX-License-Identifier: MIT

#include "tests/integration/support/FeedsFixture.h"
#include "tests/integration/support/SteppedClock.h"

namespace spotwell
{
namespace
{

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

class FeedClockTest : public FeedsFixture, public testing::WithParamInterface<std::chrono::hours>
{
protected:
    /// Every service has answered, and nothing is under way.
    void settle()
    {
        services.answer(potaAddress, answering("200 OK", potaAnswer(1)));
        services.answer(dxSummitAddress, answering("200 OK", dxSummitAnswer(1)));
        services.answer(wsprnetAddress, answering("200 OK", wsprnetPage(1)));
        startFeeds(allFeeds(), clock.variables());
        serve();
        ASSERT_EQ(nextCalls(3).size(), 3);
        ASSERT_TRUE(waitUntil([this] {
            const Counts before = counts();
            return clock.ticks(2) && counts() == before;
        }));
    }
    using Counts = std::array<std::size_t, 3>;
    [[nodiscard]] Counts counts() const
    {
        return {services.requests(potaAddress).size(), services.requests(dxSummitAddress).size(),
                services.requests(wsprnetAddress).size()};
    }
    /// Waits until each service was asked once more than before.
    [[nodiscard]] bool allAskedSince(const Counts& before) const
    {
        return asked(potaAddress, before[0] + 1) && asked(dxSummitAddress, before[1] + 1) &&
               asked(wsprnetAddress, before[2] + 1);
    }

    SteppedClock clock{home.filePath(u"clock"_s)};
};

TEST_P(FeedClockTest, allAreAskedAtOnceWhenTheClockIsSetForwards)
{
    settle();
    const Counts before = counts();
    clock.step(GetParam());
    EXPECT_TRUE(allAskedSince(before));
    EXPECT_EQ(entriesOf({u"potaTimer"_s, u"dxsummitTimer"_s, u"wsprnetTimer"_s}), QStringList());
}

TEST_P(FeedClockTest, noneIsAskedUntilTheClockIsWhereItWasWhenItIsSetBackwards)
{
    settle();
    const Counts before = counts();
    clock.step(-GetParam());
    clock.step(121s);
    EXPECT_TRUE(clock.ticks());
    EXPECT_EQ(counts(), before);
    clock.step(GetParam());
    EXPECT_TRUE(allAskedSince(before));
    EXPECT_EQ(entriesOf({u"potaTimer"_s, u"dxsummitTimer"_s, u"wsprnetTimer"_s}), QStringList());
}

INSTANTIATE_TEST_SUITE_P(Steps, FeedClockTest, testing::Values(1h, 24h),
                         [](const auto& step) { return std::to_string(step.param.count()) + "Hours"; });

} // namespace
} // namespace spotwell
