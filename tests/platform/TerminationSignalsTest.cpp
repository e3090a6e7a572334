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

} // namespace spotwell
