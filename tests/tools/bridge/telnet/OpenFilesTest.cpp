// SPDX-FileCopyrightText: 2026 the spotwell developers
// SPDX-License-Identifier: MIT

#include "tools/spotwell-bridge/telnet/OpenFiles.h"

#include <gtest/gtest.h>

#include <sys/resource.h>

namespace spotwell::bridge
{
namespace
{

TEST(OpenFiles, raisesTheLimitAsFarAsItGoes)
{
    rlimit before{};
    ASSERT_EQ(getrlimit(RLIMIT_NOFILE, &before), 0);
    const rlimit low{before.rlim_max / 2, before.rlim_max};
    ASSERT_EQ(setrlimit(RLIMIT_NOFILE, &low), 0);
    EXPECT_EQ(raiseOpenFileLimit(), before.rlim_max);
    rlimit after{};
    ASSERT_EQ(getrlimit(RLIMIT_NOFILE, &after), 0);
    EXPECT_EQ(after.rlim_cur, before.rlim_max);
    EXPECT_EQ(after.rlim_max, before.rlim_max);
    ASSERT_EQ(setrlimit(RLIMIT_NOFILE, &before), 0);
}

TEST(OpenFiles, leavesSomeToTheRestOfTheProgram)
{
    struct Case {
        std::size_t wanted, descriptors, clients;
    };
    for (const Case& c :
         {Case{10'000, 1024, 960}, Case{100, 1024, 100}, Case{960, 1024, 960}, Case{961, 1024, 960},
          Case{10, 66, 2}, Case{10, 65, 1}, Case{10, 64, 1}, Case{10, 63, 1}, Case{10, 0, 1},
          Case{0, 1024, 1}, Case{10'000, RLIM_INFINITY, 10'000}})
        EXPECT_EQ(clientsWithin(c.wanted, c.descriptors), c.clients) << c.wanted << ' ' << c.descriptors;
}

} // namespace
} // namespace spotwell::bridge
