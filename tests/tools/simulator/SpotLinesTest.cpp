// SPDX-FileCopyrightText: 2026 the spotwell developers
// SPDX-License-Identifier: MIT

#include "tools/spotwell-simulator/SpotLines.h"

#include <QSet>
#include <gtest/gtest.h>

#include <chrono>

namespace spotwell::simulator
{
namespace
{

using Comment = SpotFormat::Comment;

constexpr TimePoint noon = std::chrono::sys_days{std::chrono::year{2027} / 2 / 3} + std::chrono::hours{14} +
                           std::chrono::minutes{28} + std::chrono::seconds{59} +
                           std::chrono::microseconds{123456};

/// Columns `from` to `to`, counted from 1.
QByteArray columns(const QByteArray& line, qsizetype from, qsizetype to)
{
    return line.mid(from - 1, to - from + 1);
}

TEST(SpotLines, haveTheirColumns)
{
    SpotLines lines;
    for (int i = 0; i < 2000; ++i) {
        const QByteArray line = lines.next({75, Comment::plain}, noon);
        ASSERT_EQ(line.size(), 77) << line.constData();
        ASSERT_TRUE(line.endsWith("\r\n"));
        ASSERT_EQ(columns(line, 1, 6), "DX de ");
        const qsizetype colon = line.indexOf(':');
        ASSERT_TRUE(colon >= 9 && colon <= 13) << line.constData();
        ASSERT_EQ(line.count(':'), 1) << line.constData();
        bool number = false;
        const double kilohertz = columns(line, colon + 2, 24).trimmed().toDouble(&number);
        ASSERT_TRUE(number && kilohertz >= 1800.0 && kilohertz <= 50400.0) << line.constData();
        ASSERT_EQ(line[22], '.') << line.constData();
        ASSERT_EQ(columns(line, 25, 26), "  ");
        ASSERT_NE(line[26], ' ');
        ASSERT_EQ(line[38], ' ');
        ASSERT_NE(line[39], ' ');
        ASSERT_EQ(line[69], ' ');
        ASSERT_EQ(columns(line, 71, 75), "1428Z");
    }
}

TEST(SpotLines, areNumberedAcrossFormats)
{
    SpotLines lines;
    EXPECT_EQ(columns(lines.next({}, noon), 40, 48), "#0000001 ");
    EXPECT_EQ(columns(lines.next({80, Comment::numbered}, noon), 40, 48), "#0000002 ");
    lines.next({75, Comment::plain}, noon);
    EXPECT_EQ(columns(lines.next({75, Comment::stamped}, noon), 40, 48), "#0000004 ");
}

TEST(SpotLines, carryTheTimeOfSending)
{
    SpotLines lines;
    const QByteArray line = lines.next({75, Comment::stamped}, noon);
    EXPECT_EQ(columns(line, 49, 64), QByteArray::number(qlonglong{noon.time_since_epoch().count()}));
    EXPECT_EQ(columns(line, 65, 65), " ");
    EXPECT_EQ(columns(line, 71, 75), "1428Z");
    EXPECT_EQ(columns(lines.next({}, std::chrono::sys_days{std::chrono::year{2027} / 1 / 1}), 71, 75),
              "0000Z");
}

TEST(SpotLines, haveTheLengthAskedFor)
{
    SpotLines lines;
    for (const int length : {75, 76, 79, 80, 81, 100, 4096}) {
        const QByteArray line = lines.next({length, Comment::numbered}, noon);
        EXPECT_EQ(line.size(), length + 2);
        EXPECT_EQ(line.indexOf("\r\n"), length);
        EXPECT_EQ(columns(line, 71, 75), "1428Z");
    }
}

TEST(SpotLines, areVariedButTheSameEachTime)
{
    SpotLines lines;
    SpotLines again;
    QSet<QByteArray> spotters;
    QSet<QByteArray> calls;
    for (int i = 0; i < 500; ++i) {
        const QByteArray line = lines.next({75, Comment::plain}, noon);
        ASSERT_EQ(line, again.next({75, Comment::plain}, noon));
        spotters.insert(columns(line, 7, 14));
        calls.insert(columns(line, 27, 38));
    }
    EXPECT_GT(spotters.size(), 450);
    EXPECT_GT(calls.size(), 450);
}

TEST(FloodLine, isFillerOfEightyBytes)
{
    const QByteArray line = floodLine(42);
    EXPECT_EQ(line.size(), 80);
    EXPECT_TRUE(line.startsWith("Flood 000000000042 ==="));
    EXPECT_TRUE(line.endsWith("=\r\n"));
    EXPECT_EQ(floodLine(999'999'999'999).size(), 80);
}

} // namespace
} // namespace spotwell::simulator
