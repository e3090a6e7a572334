// SPDX-FileCopyrightText: 2026 the spotwell developers
// SPDX-License-Identifier: MIT

#include "platform/linux/QtMainQueue.h"

#include "tests/support/WaitUntil.h"

#include <gtest/gtest.h>

#include <atomic>
#include <mutex>
#include <numeric>
#include <vector>

namespace spotwell
{

using namespace std::chrono_literals;
using SteadyClock = std::chrono::steady_clock;

namespace
{

/// Keeps the calling thread busy.
void spinUntil(SteadyClock::time_point end)
{
    while (SteadyClock::now() < end)
        QThread::yieldCurrentThread();
}

} // namespace

TEST(QtMainQueue, RunsTasksLaterOnTheMainThreadInOrder)
{
    QtMainQueue queue;
    std::vector<int> ran;
    for (int i = 0; i < 100; ++i) {
        queue.async([&, i] {
            EXPECT_TRUE(queue.isMainThread());
            ran.push_back(i);
        });
    }
    EXPECT_TRUE(ran.empty());
    ASSERT_TRUE(waitUntil([&] { return ran.size() == 100; }));
    std::vector<int> expected(100);
    std::iota(expected.begin(), expected.end(), 0);
    EXPECT_EQ(ran, expected);
}

TEST(QtMainQueue, TakesTasksFromAnyThread)
{
    QtMainQueue queue;
    constexpr int each = 2000;
    std::vector<int> last(3, -1);
    int ran = 0;
    std::vector<std::thread> threads;
    for (int t = 0; t < 3; ++t) {
        threads.emplace_back([&, t] {
            EXPECT_FALSE(queue.isMainThread());
            for (int i = 0; i < each; ++i) {
                queue.async([&, t, i] {
                    EXPECT_EQ(last[static_cast<std::size_t>(t)], i - 1);
                    last[static_cast<std::size_t>(t)] = i;
                    ++ran;
                });
            }
        });
    }
    EXPECT_TRUE(waitUntil([&] { return ran == 3 * each; }));
    for (std::thread& thread : threads)
        thread.join();
}

TEST(QtMainQueue, KeepsTheOrderWhereATaskRunsAnEventLoop)
{
    QtMainQueue queue;
    std::vector<int> ran;
    queue.async([&] {
        ran.push_back(1);
        queue.async([&] { ran.push_back(4); });
        EXPECT_TRUE(waitUntil([&] { return ran.size() == 4; }));
    });
    queue.async([&] { ran.push_back(2); });
    queue.async([&] { ran.push_back(3); });
    ASSERT_TRUE(waitUntil([&] { return ran.size() == 4; }));
    EXPECT_EQ(ran, (std::vector{1, 2, 3, 4}));
}

TEST(QtMainQueue, AfterRunsOnceAndNotBeforeItsTime)
{
    QtMainQueue queue;
    int ran = 0;
    SteadyClock::time_point when;
    const auto begin = SteadyClock::now();
    std::thread other([&] {
        queue.after(Seconds{0.05}, [&] {
            ++ran;
            when = SteadyClock::now();
            EXPECT_TRUE(queue.isMainThread());
        });
    });
    bool later = false;
    queue.after(Seconds{0.15}, [&] { later = true; });
    EXPECT_TRUE(waitUntil([&] { return ran > 0 && later; }));
    other.join();
    EXPECT_EQ(ran, 1);
    EXPECT_GE(when - begin, 50ms);
}

TEST(QtMainQueue, AfterCountsFromTheCallHoweverBusyTheMainThreadIs)
{
    constexpr auto delay = 500ms;
    QtMainQueue queue;
    QByteArray ran;
    const auto begin = SteadyClock::now();
    SteadyClock::time_point when;
    std::thread([&] {
        queue.after(delay, [&] {
            ran += 'a';
            when = SteadyClock::now();
        });
    }).join();
    spinUntil(SteadyClock::now() + delay);
    // Overdue by now; this one is not.
    queue.after(delay * 9 / 10, [&] { ran += 'b'; });
    EXPECT_TRUE(ran.isEmpty());
    ASSERT_TRUE(waitUntil([&] { return ran.size() == 2; }));
    EXPECT_EQ(ran, QByteArray("ab"));
    EXPECT_GE(when - begin, delay);
}

TEST(QtMainQueue, EveryIsNeverEarly)
{
    QtMainQueue queue;
    std::size_t ran = 0;
    // Intervals of many lengths, each with a part of a millisecond: rounding of whatever kind would make some
    // of them early.
    for (int i = 0; i < 20; ++i) {
        const Seconds interval{0.1006 + 0.0017 * i};
        queue.every(interval, [&, interval, begin = SteadyClock::now(), ticks = 0]() mutable {
            if (++ticks == 1) {
                EXPECT_GE(Seconds(SteadyClock::now() - begin), interval);
                ++ran;
            }
        });
    }
    EXPECT_TRUE(waitUntil([&] { return ran == 20; }));
}

TEST(QtMainQueue, EveryRunsAgainAndAgain)
{
    QtMainQueue queue;
    int ran = 0;
    queue.every(Seconds{0.01}, [&] { ++ran; });
    EXPECT_EQ(ran, 0);
    EXPECT_TRUE(waitUntil([&] { return ran >= 3; }));
}

TEST(QtMainQueue, TasksThatFallDueTogetherRunInTheOrderOfEvery)
{
    QtMainQueue queue;
    QByteArray ran;
    queue.every(Seconds{0.03}, [&] { ran += 'a'; });
    queue.every(Seconds{0.01}, [&] { ran += 'b'; });
    queue.every(Seconds{0.02}, [&] { ran += 'c'; });
    // All overdue, the first of them for the shortest time.
    spinUntil(SteadyClock::now() + 30ms);
    ASSERT_TRUE(waitUntil([&] { return ran.size() >= 3; }));
    EXPECT_EQ(ran.first(3), QByteArray("abc"));
}

TEST(QtMainQueue, EveryKeepsItsBeat)
{
    constexpr auto interval = 60ms;
    QtMainQueue queue;
    int turns = 0;
    const auto before = SteadyClock::now();
    SteadyClock::time_point after;
    queue.every(interval, [&] {
        const auto now = SteadyClock::now();
        EXPECT_GE(now, before + ++turns * interval);
        // However late this turn is, the next one comes at the beat that follows: long before half a beat
        // later, in the order of the timers at least.
        const auto nextBeat = after + ((now - before) / interval + 1) * interval;
        queue.after(nextBeat - now + interval / 2, [&, turn = turns] { EXPECT_GT(turns, turn); });
        // The second turn comes late.
        if (turns == 1)
            spinUntil(now + interval * 9 / 5);
    });
    after = SteadyClock::now();
    queue.after(after - before + interval * 3 / 2, [&] { EXPECT_GT(turns, 0); });
    EXPECT_TRUE(waitUntil([&] { return turns >= 5; }));
}

TEST(QtMainQueue, MissedTurnsAreNotMadeUpFor)
{
    constexpr auto interval = 20ms;
    QtMainQueue queue;
    int turns = 0;
    const auto before = SteadyClock::now();
    queue.every(interval, [&] {
        // Each turn has a beat of its own, and the ten that passed have one turn.
        EXPECT_GE((SteadyClock::now() - before) / interval, 9 + ++turns);
    });
    spinUntil(SteadyClock::now() + 10 * interval);
    EXPECT_TRUE(waitUntil([&] { return turns >= 4; }));
}

TEST(QtMainQueue, DropsWhatWaitsWhenItEnds)
{
    bool ran = false;
    {
        QtMainQueue queue;
        queue.async([&] { ran = true; });
        queue.after(Seconds{0}, [&] { ran = true; });
    }
    QCoreApplication::processEvents();
    EXPECT_FALSE(ran);
}

} // namespace spotwell
