// SPDX-FileCopyrightText: 2026 the spotwell developers
// SPDX-License-Identifier: MIT

#include "delivery/LineBacklog.h"

#include "tests/fakes/FakeServices.h"
#include "tests/fakes/FakeTime.h"
#include "tests/support/Printers.h"

#include <gtest/gtest.h>

namespace spotwell
{

namespace
{

struct LineBacklogTest : testing::Test {
    void add(const QString& line) { backlog.add(queue, line, QStringLiteral("node")); }

    FakeLog log;
    FakeSerialQueue queue;
    QStringList delivered;
    LineBacklog backlog{log, [this](const QString& line, const QString& source) {
                            delivered.append(line);
                            EXPECT_EQ(source, QStringLiteral("node"));
                        }};
};

} // namespace

TEST_F(LineBacklogTest, DeliversOnTheQueueInOrder)
{
    add(QStringLiteral("1"));
    add(QStringLiteral("2"));
    EXPECT_TRUE(delivered.isEmpty());
    queue.runOne();
    add(QStringLiteral("3"));
    queue.runPending();
    EXPECT_EQ(delivered, (QStringList{QStringLiteral("1"), QStringLiteral("2"), QStringLiteral("3")}));
    EXPECT_TRUE(log.lines.isEmpty());
}

TEST_F(LineBacklogTest, DropsTheOldestPastTheBoundAndSaysSoOnce)
{
    const QString quarter(LineBacklog::maximumLength / 4, u'x');
    for (int i = 0; i < 4; ++i)
        add(QString::number(i) + quarter.mid(1));
    EXPECT_TRUE(log.lines.isEmpty()) << "exactly at the bound nothing is lost";
    add(QStringLiteral("4"));
    add(QStringLiteral("5") + quarter.mid(1));
    EXPECT_EQ(log.lines, QStringList{QStringLiteral(
                             "takeSpotLine: too many lines are waiting for Logwright, dropping the oldest")});
    EXPECT_LE(queue.pendingCount(), 4U) << "the turns on the queue are bounded, too";
    queue.runPending();
    ASSERT_EQ(delivered.size(), 4);
    EXPECT_EQ(delivered[0][0], u'2');
    EXPECT_EQ(delivered[1][0], u'3');
    EXPECT_EQ(delivered[2], QStringLiteral("4"));
    EXPECT_EQ(delivered[3][0], u'5');
}

TEST_F(LineBacklogTest, ReportsEachRunOfLosses)
{
    const QString half(LineBacklog::maximumLength / 2, u'x');
    for (int run = 0; run < 2; ++run) {
        for (int i = 0; i < 5; ++i)
            add(half);
        queue.runPending();
    }
    EXPECT_EQ(log.lines.size(), 2);
    EXPECT_EQ(delivered.size(), 4);
}

TEST_F(LineBacklogTest, StaysBoundedOverAnEndlessHang)
{
    for (int i = 0; i < 200'000; ++i)
        add(QString(80, u'x'));
    EXPECT_LE(queue.pendingCount(), static_cast<std::size_t>(LineBacklog::maximumLength / 80 + 1));
    queue.runPending();
    EXPECT_EQ(delivered.size(), LineBacklog::maximumLength / 80);
}

TEST_F(LineBacklogTest, StaysBoundedWhenLongLinesPushOutManyShortOnes)
{
    std::size_t mostTurns = 0;
    for (int round = 0; round < 2000; ++round) {
        add(QString(16383, u'x'));
        for (int i = 0; i < 200; ++i)
            add(QString(80, u'y'));
        mostTurns = std::max(mostTurns, queue.pendingCount());
    }
    EXPECT_LE(mostTurns, static_cast<std::size_t>(LineBacklog::maximumLength / 80 + 1));
    queue.runPending();
    EXPECT_EQ(delivered.last(), QString(80, u'y'));
    add(QStringLiteral("next"));
    queue.runPending();
    EXPECT_EQ(delivered.last(), QStringLiteral("next"));
}

} // namespace spotwell
