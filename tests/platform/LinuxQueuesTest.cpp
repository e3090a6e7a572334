#include "platform/linux/LinuxQueues.h"

#include "tests/fakes/WaitUntil.h"

#include <gtest/gtest.h>

#include <atomic>
#include <mutex>
#include <numeric>
#include <vector>

namespace spotwell
{

using namespace std::chrono_literals;
using SteadyClock = std::chrono::steady_clock;

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
    constexpr auto delay = 200ms;
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
    while (SteadyClock::now() - begin < delay)
        QThread::yieldCurrentThread();
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

TEST(ThreadSerialQueue, RunsOneTaskAtATimeInOrderOffTheMainThread)
{
    std::mutex mutex;
    std::vector<int> ran;
    std::atomic<int> inside = 0;
    ThreadSerialQueue queue(QStringLiteral("com.example.a_queue"));
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

TEST(ThreadSerialQueue, TellsItsThreadByTheEndOfItsLabel)
{
    std::atomic<bool> done = false;
    char name[16] = {};
    ThreadSerialQueue queue(QStringLiteral("com.tarnbrooksoftware.spotwell_queue"));
    queue.async([&] {
        ::pthread_getname_np(::pthread_self(), name, sizeof name);
        done = true;
    });
    ASSERT_TRUE(waitUntil([&] { return done.load(); }));
    EXPECT_STREQ(name, ".spotwell_queue");
}

TEST(ThreadSerialQueue, PausesForItsTime)
{
    std::atomic<bool> done = false;
    std::atomic<bool> whole = false;
    SteadyClock::duration took{};
    ThreadSerialQueue queue(QStringLiteral("q"));
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

TEST(ThreadSerialQueue, EndingCutsAPauseAndDropsTheRest)
{
    std::atomic<bool> pausing = false;
    std::atomic<bool> cut = false;
    std::atomic<bool> second = false;
    const auto begin = SteadyClock::now();
    {
        ThreadSerialQueue queue(QStringLiteral("q"));
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

TEST(ThreadSerialQueue, HasNoThreadUntilItIsUsed)
{
    // Nothing to join, nothing to wait for.
    const ThreadSerialQueue queue(QStringLiteral("q"));
    EXPECT_EQ(queue.label(), QStringLiteral("q"));
}

} // namespace spotwell
