// SPDX-FileCopyrightText: 2026 the spotwell developers
// SPDX-License-Identifier: MIT

#include "tests/integration/support/WindowPing.h"

#include "tests/integration/support/ProgramFixture.h"

namespace spotwell
{
namespace
{

using namespace std::chrono_literals;

using WindowPingTest = ProgramFixture;

TEST_F(WindowPingTest, hearsTheWindowUnlessTheProgramHangs)
{
    const WindowPing ping;
    EXPECT_FALSE(ping.answers(100ms)) << "there is no window";
    start();
    ASSERT_TRUE(ping.answers());
    program->stop();
    EXPECT_FALSE(ping.answers(300ms));
    EXPECT_TRUE(waitUntil([&] { return ping.longest() > 200ms; }));
    program->signal(SIGCONT);
    EXPECT_TRUE(ping.answersWhile([] { return true; }));
    EXPECT_GT(ping.longest(), 200ms);
    end();
    EXPECT_FALSE(ping.answers(100ms)) << "there is no window any more";
    program.reset();
    start();
    EXPECT_TRUE(ping.answers()) << "it looks for the window of another run";
}

} // namespace
} // namespace spotwell
