// SPDX-FileCopyrightText: 2026 the spotwell developers
// SPDX-License-Identifier: MIT

#include "util/ConsoleInbox.h"

#include "tests/fakes/FakeTime.h"
#include "tests/support/Printers.h"
#include "util/ConsoleText.h"

#include <QStringList>
#include <gtest/gtest.h>

#include <algorithm>
#include <thread>
#include <utility>
#include <vector>

namespace spotwell
{

namespace
{

struct ConsoleInboxTest : testing::Test {
    QStringList taken() { return std::exchange(appended, {}); }

    const QString first = QStringLiteral("first");
    const QString second = QStringLiteral("second");
    const QString third = QStringLiteral("third");
    FakeClock clock;
    FakeMainQueue mainQueue{clock};
    QStringList appended;
    ConsoleInbox inbox{mainQueue, [this](const QString& text) { appended.append(text); }};
};

} // namespace

TEST_F(ConsoleInboxTest, TheFirstEntryIsAppendedWithTheNextTurn)
{
    inbox.add(first);
    EXPECT_TRUE(appended.isEmpty()) << "the console belongs to the main thread";
    mainQueue.runPending();
    EXPECT_EQ(appended, QStringList{first});
}

TEST_F(ConsoleInboxTest, EntriesOfAFrameShareATurn)
{
    inbox.add(first);
    mainQueue.runPending();
    inbox.add(second);
    inbox.add(third);
    EXPECT_EQ(mainQueue.pendingCount(), 0U) << "nothing wakes the main thread";
    mainQueue.advance(Seconds{0.059});
    EXPECT_EQ(taken(), QStringList{first});
    mainQueue.advance(Seconds{0.001});
    EXPECT_EQ(taken(), (QStringList{second, third}));
}

TEST_F(ConsoleInboxTest, GoesOnByFramesAndEndsWithAnEmptyOne)
{
    inbox.add(first);
    mainQueue.runPending();
    for (int frame = 0; frame < 3; ++frame) {
        taken();
        inbox.add(second);
        EXPECT_EQ(mainQueue.timerCount(), 1U);
        mainQueue.advance(ConsoleInbox::frame);
        EXPECT_EQ(appended, QStringList{second});
    }
    mainQueue.advance(ConsoleInbox::frame);
    EXPECT_EQ(mainQueue.timerCount(), 0U) << "quiet, it wakes nobody";
    taken();
    inbox.add(third);
    mainQueue.runPending();
    EXPECT_EQ(appended, QStringList{third}) << "and the next entry is there at once";
}

TEST_F(ConsoleInboxTest, HandsOverWhatWaitsBeforeItsTurn)
{
    inbox.add(first);
    inbox.handOver();
    EXPECT_EQ(taken(), QStringList{first});
    mainQueue.runPending();
    EXPECT_TRUE(appended.isEmpty()) << "once";
    inbox.add(second);
    mainQueue.runPending();
    EXPECT_EQ(appended, QStringList{second}) << "a turn that found nothing does not count as a busy frame";
}

TEST_F(ConsoleInboxTest, KeepsTheOrderOfEachThread)
{
    constexpr int each = 20;
    std::vector<std::thread> threads;
    for (int t = 0; t < 3; ++t) {
        threads.emplace_back([this, t] {
            for (int i = 0; i < each; ++i)
                inbox.add(QStringLiteral("%1 %2").arg(t).arg(i, 4, 10, QChar(u'0')));
        });
    }
    for (std::thread& thread : threads)
        thread.join();
    mainQueue.advance(ConsoleInbox::frame);
    for (int t = 0; t < 3; ++t) {
        QStringList own = appended;
        own.removeIf([t](const QString& text) { return !text.startsWith(QString::number(t)); });
        EXPECT_EQ(own.size(), each);
        EXPECT_TRUE(std::is_sorted(own.begin(), own.end()));
    }
    EXPECT_EQ(appended.size(), 3 * each);
}

TEST_F(ConsoleInboxTest, WhatTheConsoleCouldNotHoldAnywayMakesRoom)
{
    // Entries of many lengths, one of them longer than the console.
    for (const int longest : {3, 100, 25000}) {
        ConsoleText directly;
        ConsoleText throughInbox;
        ConsoleInbox behind(mainQueue, [&](const QString& text) { throughInbox.append(text); });
        directly.append(QStringLiteral("before"));
        throughInbox.append(QStringLiteral("before"));
        for (int i = 0; i < 30000; ++i) {
            const QString entry(1 + i * 7919 % longest, QChar(u'a' + i % 26));
            directly.append(entry);
            behind.add(entry);
        }
        mainQueue.advance(ConsoleInbox::frame);
        EXPECT_EQ(throughInbox.text(), directly.text());
    }
}

TEST_F(ConsoleInboxTest, AnEntryStaysUntilThoseBehindItFillTheConsole)
{
    for (const int more : {0, 1}) {
        taken();
        inbox.add(first);
        // With the line feed in front of it this is one character less than what is trimmed, or as much.
        inbox.add(QString(ConsoleText::trimmingThreshold - 2 + more, u'x'));
        inbox.handOver();
        EXPECT_EQ(appended.contains(first), more == 0);
        EXPECT_EQ(appended.size(), 2 - more);
    }
}

TEST_F(ConsoleInboxTest, DoesNotGrowWhileTheMainThreadIsBusy)
{
    for (int i = 0; i < 100000; ++i)
        inbox.add(QString(76, u'x'));
    mainQueue.runPending();
    const qsizetype kept = appended.size() * 77;
    EXPECT_GE(kept, ConsoleText::trimmingThreshold);
    EXPECT_LT(kept, ConsoleText::trimmingThreshold + 77);
}

} // namespace spotwell
