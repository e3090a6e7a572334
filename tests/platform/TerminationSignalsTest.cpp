#include "platform/linux/TerminationSignals.h"

#include "tests/fakes/WaitUntil.h"

#include <gtest/gtest.h>

#include <csignal>

namespace spotwell
{

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
