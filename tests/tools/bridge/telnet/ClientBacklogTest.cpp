// SPDX-FileCopyrightText: 2026 the spotwell developers
// SPDX-License-Identifier: MIT

#include "tools/spotwell-bridge/telnet/ClientBacklog.h"

#include "tests/tools/bridge/telnet/Bytes.h"

#include <gtest/gtest.h>

namespace spotwell::bridge
{
namespace
{

NodeLimits keeping(std::size_t lines, qsizetype bytes = 1'000'000)
{
    NodeLimits limits;
    limits.lines = lines;
    limits.bytes = bytes;
    return limits;
}

/// Takes everything that waits, `step` bytes at a time.
QByteArray takeAll(ClientBacklog& backlog, qsizetype step = 1'000'000)
{
    QByteArray taken;
    for (QByteArrayView bytes = backlog.next(); !bytes.isEmpty(); bytes = backlog.next()) {
        const QByteArrayView part = bytes.first(std::min(step, bytes.size()));
        taken.append(part);
        backlog.taken(part.size());
    }
    EXPECT_TRUE(backlog.isEmpty());
    return taken;
}

TEST(SentLines, numbersTheLines)
{
    SentLines lines(keeping(10));
    EXPECT_EQ(lines.begin(), 0U);
    EXPECT_EQ(lines.end(), 0U);
    lines.add("a");
    lines.add("b");
    EXPECT_EQ(lines.begin(), 0U);
    EXPECT_EQ(lines.end(), 2U);
    EXPECT_EQ(lines.at(0), "a");
    EXPECT_EQ(lines.at(1), "b");
}

TEST(SentLines, keepsSoManyLines)
{
    SentLines lines(keeping(3));
    for (const char* line : {"a", "b", "c"})
        lines.add(line);
    EXPECT_EQ(lines.begin(), 0U);
    lines.add("d");
    EXPECT_EQ(lines.begin(), 1U);
    EXPECT_EQ(lines.end(), 4U);
    EXPECT_EQ(lines.at(1), "b");
    EXPECT_EQ(lines.at(3), "d");
}

TEST(SentLines, keepsSoManyBytes)
{
    SentLines lines(keeping(10, 6));
    lines.add("aa");
    lines.add("bb");
    lines.add("cc");
    EXPECT_EQ(lines.begin(), 0U);
    lines.add("d");
    EXPECT_EQ(lines.begin(), 1U);
    lines.add("e");
    EXPECT_EQ(lines.begin(), 1U);
    lines.add("ffffff");
    EXPECT_EQ(lines.begin(), 5U);
    // The newest is kept whatever its length.
    lines.add("ggggggg");
    EXPECT_EQ(lines.begin(), 6U);
    EXPECT_EQ(lines.at(6), "ggggggg");
}

TEST(SentLines, keepsTenThousandLinesAndTwoMebibytesForTheNodesClients)
{
    EXPECT_EQ(NodeLimits{}.lines, 10'000U);
    EXPECT_EQ(NodeLimits{}.bytes, 2'097'152);
}

TEST(ClientBacklog, isEmptyAtFirst)
{
    const SentLines lines(keeping(10));
    ClientBacklog backlog(lines);
    EXPECT_TRUE(backlog.isEmpty());
    EXPECT_TRUE(backlog.next().isEmpty());
}

TEST(ClientBacklog, givesAnswersInOrderAndThenTheLines)
{
    SentLines lines(keeping(10));
    ClientBacklog backlog(lines);
    backlog.follow();
    lines.add("1\r\n");
    backlog.add("a\r\n");
    lines.add("2\r\n");
    backlog.add("b\r\n");
    EXPECT_FALSE(backlog.isEmpty());
    EXPECT_EQ(takeAll(backlog), "a\r\nb\r\n1\r\n2\r\n");
}

TEST(ClientBacklog, givesOnlyTheLinesSinceItFollows)
{
    SentLines lines(keeping(10));
    ClientBacklog backlog(lines);
    lines.add("1\r\n");
    EXPECT_TRUE(backlog.isEmpty());
    backlog.follow();
    EXPECT_TRUE(backlog.isEmpty());
    lines.add("2\r\n");
    EXPECT_FALSE(backlog.isEmpty());
    EXPECT_EQ(takeAll(backlog), "2\r\n");
    lines.add("3\r\n");
    backlog.unfollow();
    EXPECT_EQ(takeAll(backlog), "");
}

TEST(ClientBacklog, givesTheRestOfWhatWasTakenInPart)
{
    SentLines lines(keeping(10));
    for (const qsizetype step : {1, 2, 3, 5}) {
        ClientBacklog backlog(lines);
        backlog.follow();
        backlog.add("hello\r\n");
        lines.add("one\r\n");
        lines.add("two\r\n");
        EXPECT_EQ(takeAll(backlog, step), "hello\r\none\r\ntwo\r\n");
    }
}

TEST(ClientBacklog, tellsHowManyLinesAreMissingInTheirPlace)
{
    SentLines lines(keeping(2));
    ClientBacklog backlog(lines);
    backlog.follow();
    for (const char* line : {"1\r\n", "2\r\n", "3\r\n"})
        lines.add(line);
    EXPECT_EQ(takeAll(backlog), "SPOTWELL: 1 spot was left out, for it was not taken in time.\r\n2\r\n3\r\n");
    for (const char* line : {"4\r\n", "5\r\n", "6\r\n", "7\r\n", "8\r\n"})
        lines.add(line);
    EXPECT_EQ(takeAll(backlog),
              "SPOTWELL: 3 spots were left out, for they were not taken in time.\r\n7\r\n8\r\n");
    lines.add("9\r\n");
    lines.add("10\r\n");
    EXPECT_EQ(takeAll(backlog), "9\r\n10\r\n");
}

TEST(ClientBacklog, neverCutsTheLineThatIsBeingSent)
{
    SentLines lines(keeping(2));
    ClientBacklog backlog(lines);
    backlog.follow();
    lines.add("first\r\n");
    EXPECT_EQ(backlog.next().toByteArray(), "first\r\n");
    backlog.taken(2);
    backlog.add("answer\r\n");
    for (const char* line : {"2\r\n", "3\r\n", "4\r\n"})
        lines.add(line);
    EXPECT_EQ(takeAll(backlog, 1),
              "rst\r\nanswer\r\nSPOTWELL: 1 spot was left out, for it was not taken in time.\r\n3\r\n4\r\n");
}

TEST(ClientBacklog, putsTogetherNoMoreThanAPiece)
{
    SentLines lines(keeping(1000));
    ClientBacklog backlog(lines);
    backlog.follow();
    const QByteArray line = QByteArray(98, 'x') + "\r\n";
    for (int i = 0; i < 1000; ++i)
        lines.add(line);
    // The line that reaches the limit is whole.
    EXPECT_EQ(backlog.next().size(), 16'400);
    backlog.taken(16'400);
    for (int i = 0; i < 1000; ++i)
        backlog.add(line);
    EXPECT_EQ(backlog.next().size(), 16'400);
    EXPECT_EQ(takeAll(backlog).size(), 100'000 + 100'000 - 16'400);
}

TEST(ClientBacklog, sharesASingleLine)
{
    SentLines lines(keeping(10));
    ClientBacklog one(lines);
    ClientBacklog other(lines);
    one.follow();
    other.follow();
    lines.add(QByteArray(5000, 'x'));
    EXPECT_EQ(one.next().data(), lines.at(0).constData());
    EXPECT_EQ(other.next().data(), lines.at(0).constData());
}

} // namespace
} // namespace spotwell::bridge
