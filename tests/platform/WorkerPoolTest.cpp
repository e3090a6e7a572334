// SPDX-FileCopyrightText: 2026 the spotwell developers
// SPDX-License-Identifier: MIT

#include "platform/linux/WorkerPool.h"

#include "tests/platform/ThreadShortage.h"
#include "tests/support/WaitUntil.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <mutex>
#include <pthread.h>
#include <vector>

namespace spotwell
{

using namespace std::chrono_literals;
using SteadyClock = std::chrono::steady_clock;

namespace
{

std::shared_ptr<WorkerPool> aPool()
{
    return std::make_shared<WorkerPool>(QStringLiteral("workers"));
}

} // namespace

TEST(PooledSerialQueue, RunsOneTaskAtATimeInOrderOffTheMainThread)
{
    std::mutex mutex;
    std::vector<int> ran;
    std::atomic<int> inside = 0;
    PooledSerialQueue queue(aPool(), QStringLiteral("com.example.a_queue"));
    EXPECT_EQ(queue.label(), QStringLiteral("com.example.a_queue"));
    for (int i = 0; i < 1000; ++i) {
        queue.async([&, i] {
            EXPECT_EQ(inside.fetch_add(1), 0);
            const std::lock_guard guard(mutex);
            ran.push_back(i);
            inside.fetch_sub(1);
        });
    }
    ASSERT_TRUE(waitUntil([&] {
        const std::lock_guard guard(mutex);
        return ran.size() == 1000;
    }));
    EXPECT_TRUE(std::is_sorted(ran.begin(), ran.end()));
}

TEST(PooledSerialQueue, PausesForItsTime)
{
    std::atomic<bool> done = false;
    std::atomic<bool> whole = false;
    SteadyClock::duration took{};
    PooledSerialQueue queue(aPool(), QStringLiteral("q"));
    queue.async([&] {
        const auto begin = SteadyClock::now();
        whole = queue.pause(Seconds{0.05});
        took = SteadyClock::now() - begin;
        done = true;
    });
    // Work that arrives meanwhile does not end the pause.
    queue.async([] {});
    ASSERT_TRUE(waitUntil([&] { return done.load(); }));
    EXPECT_TRUE(whole);
    EXPECT_GE(took, 50ms);
}

TEST(PooledSerialQueue, EndingCutsAPauseAndDropsTheRest)
{
    std::atomic<bool> pausing = false;
    std::atomic<bool> cut = false;
    std::atomic<bool> second = false;
    const auto begin = SteadyClock::now();
    {
        PooledSerialQueue queue(aPool(), QStringLiteral("q"));
        queue.async([&] {
            pausing = true;
            cut = !queue.pause(Seconds{3600});
        });
        queue.async([&] { second = true; });
        ASSERT_TRUE(waitUntil([&] { return pausing.load(); }));
    }
    EXPECT_TRUE(cut);
    EXPECT_FALSE(second);
    EXPECT_LT(SteadyClock::now() - begin, 30s);
}

TEST(PooledSerialQueue, HasNoThreadUntilItIsUsed)
{
    // Nothing to join, nothing to wait for.
    const PooledSerialQueue queue(aPool(), QStringLiteral("q"));
    EXPECT_EQ(queue.label(), QStringLiteral("q"));
}

TEST(WorkerPool, NamesItsThreads)
{
    std::atomic<bool> done = false;
    char name[16] = {};
    PooledSerialQueue queue(aPool(), QStringLiteral("q"));
    queue.async([&] {
        ::pthread_getname_np(::pthread_self(), name, sizeof name);
        done = true;
    });
    ASSERT_TRUE(waitUntil([&] { return done.load(); }));
    EXPECT_STREQ(name, "workers");
}

TEST(WorkerPool, AQueueThatIsHeldHoldsNoOther)
{
    const auto pool = aPool();
    constexpr std::size_t count = 5;
    std::vector<std::unique_ptr<PooledSerialQueue>> queues;
    std::atomic<std::size_t> inside = 0;
    std::atomic<bool> goOn = false;
    for (std::size_t i = 0; i < count; ++i) {
        queues.push_back(std::make_unique<PooledSerialQueue>(pool, QStringLiteral("q")));
        queues.back()->async([&] {
            ++inside;
            EXPECT_TRUE(waitUntil([&] { return goOn.load(); }));
        });
    }
    EXPECT_TRUE(waitUntil([&] { return inside == count; })) << "each in a thread of its own";
    goOn = true;
}

TEST(WorkerPool, WorkThatGoesFromQueueToQueueStaysOnItsThread)
{
    const auto pool = aPool();
    for (int i = 0; i < 100; ++i) {
        std::thread::id firstThread;
        std::thread::id secondThread;
        bool insideFirst = false;
        std::atomic<bool> done = false;
        // New ones each time: a task that is done may still be on its thread for a moment.
        PooledSerialQueue first(pool, QStringLiteral("first"));
        PooledSerialQueue second(pool, QStringLiteral("second"));
        first.async([&] {
            insideFirst = true;
            firstThread = std::this_thread::get_id();
            second.async([&] {
                EXPECT_FALSE(insideFirst);
                secondThread = std::this_thread::get_id();
                done = true;
            });
            insideFirst = false;
        });
        ASSERT_TRUE(waitUntil([&] { return done.load(); }));
        EXPECT_EQ(firstThread, secondThread);
    }
}

TEST(WorkerPool, BothQueuesGoOnWhenAGivingQueueHasMoreToDo)
{
    const auto pool = aPool();
    PooledSerialQueue first(pool, QStringLiteral("first"));
    PooledSerialQueue second(pool, QStringLiteral("second"));
    std::atomic<bool> secondGoesOn = false;
    std::atomic<bool> moreDone = false;
    first.async([&] {
        second.async([&] { EXPECT_TRUE(waitUntil([&] { return secondGoesOn.load(); })); });
        first.async([&] { moreDone = true; });
    });
    // The second queue's task holds the thread that ran the first's.
    EXPECT_TRUE(waitUntil([&] { return moreDone.load(); }));
    secondGoesOn = true;
}

TEST(WorkerPool, WorkGivenToTwoQueuesIsDoneAtOnce)
{
    const auto pool = aPool();
    PooledSerialQueue giving(pool, QStringLiteral("giving"));
    PooledSerialQueue one(pool, QStringLiteral("one"));
    PooledSerialQueue other(pool, QStringLiteral("other"));
    std::atomic<int> inside = 0;
    const auto meet = [&] {
        ++inside;
        EXPECT_TRUE(waitUntil([&] { return inside == 2; }));
    };
    giving.async([&] {
        one.async(meet);
        other.async(meet);
    });
    EXPECT_TRUE(waitUntil([&] { return inside == 2; }));
}

TEST(WorkerPool, APauseGivesAwayWhatItsTaskHandedOver)
{
    const auto pool = aPool();
    PooledSerialQueue pausing(pool, QStringLiteral("pausing"));
    PooledSerialQueue other(pool, QStringLiteral("other"));
    std::atomic<bool> ran = false;
    pausing.async([&] {
        other.async([&] { ran = true; });
        (void)pausing.pause(Seconds{3600});
    });
    EXPECT_TRUE(waitUntil([&] { return ran.load(); }));
    pausing.end();
}

TEST(WorkerPool, KeepsTheOrderOfEachQueueUnderLoad)
{
    const auto pool = aPool();
    constexpr int each = 2000;
    PooledSerialQueue giving(pool, QStringLiteral("giving"));
    std::vector<std::unique_ptr<PooledSerialQueue>> queues;
    std::vector<int> ran(3, 0);
    std::vector<std::atomic<bool>> done(3);
    for (std::size_t q = 0; q < 3; ++q)
        queues.push_back(std::make_unique<PooledSerialQueue>(pool, QStringLiteral("q")));
    for (int i = 0; i < each; ++i) {
        giving.async([&, i] {
            for (std::size_t q = 0; q < 3; ++q) {
                queues[q]->async([&, i, q] {
                    EXPECT_EQ(ran[q]++, i);
                    if (i + 1 == each)
                        done[q] = true;
                });
            }
        });
    }
    EXPECT_TRUE(waitUntil([&] { return done[0] && done[1] && done[2]; }));
}

TEST(WorkerPool, AQueueThatEndsLeavesTheOthersAlone)
{
    const auto pool = aPool();
    PooledSerialQueue staying(pool, QStringLiteral("staying"));
    std::atomic<int> ran = 0;
    for (int i = 0; i < 100; ++i) {
        PooledSerialQueue leaving(pool, QStringLiteral("leaving"));
        staying.async([&] { ++ran; });
        leaving.async([] {});
        leaving.async([] {});
    }
    EXPECT_TRUE(waitUntil([&] { return ran == 100; }));
}

TEST(WorkerPool, WorkWaitsWhereThereIsNoThread)
{
    const auto pool = aPool();
    PooledSerialQueue queue(pool, QStringLiteral("q"));
    std::atomic<int> ran = 0;
    {
        const ThreadShortage shortage;
        queue.async([&] { ++ran; });
    }
    queue.async([&] { ++ran; });
    EXPECT_TRUE(waitUntil([&] { return ran == 2; }));
}

} // namespace spotwell
