// SPDX-FileCopyrightText: 2026 the spotwell developers
// SPDX-License-Identifier: MIT

#include "tools/spotwell-bridge/telnet/RecentLines.h"

#include <gtest/gtest.h>

namespace spotwell::bridge
{
namespace
{

using namespace std::chrono_literals;

constexpr RecentLines::Moment start{24h};

TEST(RecentLines, knowsALineForTenMinutes)
{
    RecentLines lines;
    EXPECT_TRUE(lines.add("a", start));
    EXPECT_FALSE(lines.add("a", start));
    EXPECT_FALSE(lines.add("a", start + 599s));
    EXPECT_FALSE(lines.add("a", start + 600s));
    EXPECT_TRUE(lines.add("a", start + 600s + 1ns));
}

TEST(RecentLines, isNotRenewedByALineThatComesAgain)
{
    RecentLines lines;
    EXPECT_TRUE(lines.add("a", start));
    EXPECT_FALSE(lines.add("a", start + 500s));
    EXPECT_TRUE(lines.add("a", start + 601s));
    // Now it is young again.
    EXPECT_FALSE(lines.add("a", start + 1201s));
    EXPECT_TRUE(lines.add("a", start + 1201s + 1ns));
}

TEST(RecentLines, takesTheWholeLine)
{
    RecentLines lines;
    EXPECT_TRUE(lines.add("a", start));
    EXPECT_TRUE(lines.add("A", start));
    EXPECT_TRUE(lines.add("a ", start));
    EXPECT_TRUE(lines.add("", start));
    EXPECT_FALSE(lines.add("", start));
}

TEST(RecentLines, forgetsWhatHasExpired)
{
    RecentLines lines;
    for (int i = 0; i < 100; ++i)
        EXPECT_TRUE(lines.add(QByteArray::number(i), start + i * 1s));
    EXPECT_EQ(lines.size(), 100U);
    EXPECT_TRUE(lines.add("new", start + 600s + 49s + 1ns));
    EXPECT_EQ(lines.size(), 51U);
    EXPECT_FALSE(lines.add("50", start + 600s + 50s));
}

TEST(RecentLines, forgetsTheOldestFirstWhenFull)
{
    RecentLines lines(3);
    for (const char* line : {"1", "2", "3", "4"})
        EXPECT_TRUE(lines.add(line, start));
    EXPECT_EQ(lines.size(), 3U);
    for (const char* line : {"2", "3", "4"})
        EXPECT_FALSE(lines.add(line, start));
    EXPECT_TRUE(lines.add("1", start));
}

TEST(RecentLines, isBounded)
{
    RecentLines lines;
    for (int i = 0; i <= 250'000; ++i)
        ASSERT_TRUE(lines.add(QByteArray::number(i), start));
    EXPECT_EQ(lines.size(), 250'000U);
    EXPECT_FALSE(lines.add("1", start));
    EXPECT_TRUE(lines.add("0", start));
}

} // namespace
} // namespace spotwell::bridge
