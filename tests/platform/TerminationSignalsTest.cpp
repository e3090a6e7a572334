// SPDX-FileCopyrightText: 2026 the spotwell developers
// SPDX-License-Identifier: MIT

#include "platform/linux/TerminationSignals.h"

#include "tests/support/WaitUntil.h"

#include <gtest/gtest.h>

#include <chrono>
#include <csignal>
#include <unistd.h>

namespace spotwell
{

using namespace std::chrono_literals;

TEST(TerminationSignals, EachBecomesACallOnTheMainThread)
{
    for (const int signal : {SIGTERM, SIGINT, SIGHUP}) {
        int calls = 0;
        const TerminationSignals signals([&] { ++calls; });
        ::raise(signal);
        EXPECT_EQ(calls, 0) << "not inside the signal handler";
        EXPECT_TRUE(waitUntil([&] { return calls == 1; })) << signal;
    }
}

TEST(TerminationSignals, BoundTheTimeUntilTheEnd)
{
    int calls = 0;
    const TerminationSignals signals([&] { ++calls; });
    const auto begin = std::chrono::steady_clock::now();
    ::raise(SIGTERM);
    const unsigned left = ::alarm(100);
    EXPECT_LE(left, TerminationSignals::bound);
    // It is rounded.
    EXPECT_GE(std::chrono::seconds{left} + 500ms + (std::chrono::steady_clock::now() - begin),
              std::chrono::seconds{TerminationSignals::bound});
    // A second one does not begin anew, nor is it enough that somebody hears.
    ::raise(SIGINT);
    EXPECT_TRUE(waitUntil([&] { return calls > 0; }));
    EXPECT_GT(::alarm(100), TerminationSignals::bound);
    TerminationSignals::liftBound();
    ::raise(SIGTERM);
    EXPECT_EQ(::alarm(0), 0U);
}

TEST(TerminationSignalsDeathTest, EndTheProcessWhereNobodyHearsThem)
{
    EXPECT_EXIT(
        {
            const TerminationSignals signals([] {});
            ::raise(SIGTERM);
            ::alarm(1);
            while (true)
                ::pause();
        },
        testing::KilledBySignal(SIGALRM), "");
}

TEST(TerminationSignals, AreIgnoredWhenTheProcessEnds)
{
    int calls = 0;
    {
        const TerminationSignals signals([&] { ++calls; });
    }
    ::raise(SIGTERM);
    EXPECT_EQ(::alarm(0), 0U);
    // The next one hears them again.
    const TerminationSignals signals([&] { ++calls; });
    ::raise(SIGTERM);
    EXPECT_TRUE(waitUntil([&] { return calls == 1; }));
}

TEST(TerminationSignals, LeaveAloneWhatTheParentHasSwitchedOff)
{
    ASSERT_NE(std::signal(SIGHUP, SIG_IGN), SIG_ERR);
    {
        int calls = 0;
        const TerminationSignals signals([&] { ++calls; });
        // Would end the process if it had its default again.
        ::raise(SIGHUP);
        ::raise(SIGTERM);
        EXPECT_TRUE(waitUntil([&] { return calls == 1; }));
        EXPECT_EQ(std::signal(SIGHUP, SIG_IGN), SIG_IGN);
    }
    ::raise(SIGHUP);
    EXPECT_EQ(std::signal(SIGHUP, SIG_DFL), SIG_IGN);
}

} // namespace spotwell
