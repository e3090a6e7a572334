// SPDX-FileCopyrightText: 2026 the spotwell developers
// SPDX-License-Identifier: MIT

#include "tests/integration/support/ClockFixture.h"

namespace spotwell
{
namespace
{

using namespace std::chrono_literals;

class SteppedClockTest : public ClockFixture, public testing::WithParamInterface<std::chrono::seconds>
{
};

// Everything that is done with a stepped clock stands on this.
TEST_P(SteppedClockTest, isTheProgramsWallClockAndNotTheOneOfItsTimers)
{
    startConnected(clock.variables());
    const Time began = clock.now();
    say("login: ");
    ASSERT_TRUE(hears("N0CALL\n"));
    const QString loggingIn = QStringLiteral("logging in");
    EXPECT_EQ(timeOf(loggingIn), began);

    clock.step(GetParam());
    const Moment asked = say("login: ");
    const auto answered = hears("N0CALL\nN0CALL\n");
    ASSERT_TRUE(answered);
    EXPECT_GE(*answered - asked, 1s);
    EXPECT_EQ(timeOf(loggingIn, 2), began + GetParam());
    EXPECT_TRUE(clock.ticks());
}

INSTANTIATE_TEST_SUITE_P(Steps, SteppedClockTest, testing::Values(300s, -86400s), [](const auto& step) {
    return (step.param > 0s ? "forwards" : "backwards") + std::to_string(std::abs(step.param.count()));
});

} // namespace
} // namespace spotwell
