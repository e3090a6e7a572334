// SPDX-FileCopyrightText: 2026 the spotwell developers
// SPDX-License-Identifier: MIT

#include "platform/linux/bus/PortalContrast.h"

#include "platform/linux/WorkerPool.h"
#include "tests/fakes/SharedLog.h"
#include "tests/support/bus/BusPeer.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <mutex>
#include <optional>
#include <utility>
#include <vector>

namespace spotwell
{

namespace
{

using namespace Qt::Literals::StringLiterals;
using namespace std::chrono_literals;

const QString standardKey = u"org.freedesktop.appearance contrast"_s;
const QString gnomeKey = u"org.gnome.desktop.a11y.interface high-contrast"_s;

/// Takes tasks from any thread; the test runs them.
class HeldTasks final : public MainQueue
{
public:
    void async(Task task) override
    {
        const std::lock_guard guard(mutex_);
        tasks_.push_back(std::move(task));
    }
    void after(Seconds, Task) override { ADD_FAILURE() << "after"; }
    void every(Seconds, Task) override { ADD_FAILURE() << "every"; }
    [[nodiscard]] bool isMainThread() const override { return false; }

    void run()
    {
        std::vector<Task> tasks;
        {
            const std::lock_guard guard(mutex_);
            tasks.swap(tasks_);
        }
        for (const Task& task : tasks)
            task();
    }

private:
    std::mutex mutex_;
    std::vector<Task> tasks_;
};

/// Keeps tasks until they are run.
class HeldQueue final : public SerialQueue
{
public:
    void async(Task task) override { tasks.push_back(std::move(task)); }
    bool pause(Seconds) override { return false; }
    [[nodiscard]] QString label() const override { return u"held"_s; }

    std::vector<Task> tasks;
};

class PortalContrastTest : public testing::Test
{
protected:
    void makePortal()
    {
        portal.emplace(bus);
        portal->command({u"own"_s, u"org.freedesktop.portal.Desktop"_s});
    }
    void tell(const QString& key, const QString& type, const QString& value)
    {
        portal->command({u"setting"_s, key, type, value});
    }
    /// The answer to a question; absent when it ends without one.
    std::optional<bool> ask()
    {
        std::optional<bool> told;
        bool ended = false;
        contrast.ask([&](bool high) { told = high; });
        // Behind the question on its queue, and behind its answer on the main thread.
        worker->async([&] { mainQueue.async([&] { ended = true; }); });
        EXPECT_TRUE(waitUntil([&] {
            mainQueue.run();
            return ended;
        }));
        return told;
    }

    PrivateBus bus;
    SharedLog log;
    SessionBus sessionBus{log, bus.address()};
    HeldTasks mainQueue;
    std::optional<BusPeer> portal;
    SerialQueue* worker = nullptr;
    PortalContrast contrast{sessionBus, mainQueue, makeWorker(), 60s};

private:
    std::unique_ptr<SerialQueue> makeWorker()
    {
        auto made =
            std::make_unique<PooledSerialQueue>(std::make_shared<WorkerPool>(u"workers"_s), u"portal"_s);
        worker = made.get();
        return made;
    }
};

TEST_F(PortalContrastTest, TakesWhatEitherSettingTells)
{
    makePortal();
    EXPECT_EQ(ask(), std::nullopt);
    tell(standardKey, u"u"_s, u"0"_s);
    EXPECT_EQ(ask(), false);
    tell(standardKey, u"u"_s, u"1"_s);
    EXPECT_EQ(ask(), true);
    tell(gnomeKey, u"b"_s, u"false"_s);
    EXPECT_EQ(ask(), true);
    tell(standardKey, u"u"_s, u"0"_s);
    EXPECT_EQ(ask(), false);
    tell(gnomeKey, u"b"_s, u"true"_s);
    EXPECT_EQ(ask(), true);
    // No preference that is known.
    tell(standardKey, u"u"_s, u"2"_s);
    tell(gnomeKey, u"b"_s, u"false"_s);
    EXPECT_EQ(ask(), false);
}

TEST_F(PortalContrastTest, WithoutAPortalThereIsNoAnswer)
{
    EXPECT_EQ(ask(), std::nullopt);
    bus.kill();
    EXPECT_EQ(ask(), std::nullopt);
}

TEST_F(PortalContrastTest, APortalIsNotStarted)
{
    bus.kill();
    const std::string started = bus.offer("org.freedesktop.portal.Desktop");
    bus.start();
    EXPECT_EQ(ask(), std::nullopt);
    EXPECT_FALSE(std::filesystem::exists(started));
}

TEST_F(PortalContrastTest, AsksOnceAtATimeAndGivesAHungPortalUp)
{
    makePortal();
    portal->command({u"hold"_s});
    auto made = std::make_unique<HeldQueue>();
    std::vector<Task>& tasks = made->tasks;
    PortalContrast other(sessionBus, mainQueue, std::move(made), 1ms);
    for (int times = 0; times < 3; ++times) {
        other.ask([](bool) { ADD_FAILURE() << "answered"; });
        other.ask([](bool) { ADD_FAILURE() << "asked twice"; });
        ASSERT_EQ(tasks.size(), 1U);
        tasks.front()();
        tasks.clear();
        mainQueue.run();
    }
}

TEST_F(PortalContrastTest, EndsWhileThePortalHangs)
{
    makePortal();
    portal->command({u"hold"_s});
    {
        PortalContrast other(
            sessionBus, mainQueue,
            std::make_unique<PooledSerialQueue>(std::make_shared<WorkerPool>(u"others"_s), u"portal"_s),
            std::chrono::hours{1});
        other.ask([](bool) { ADD_FAILURE() << "answered"; });
        EXPECT_EQ(portal->next().value(0), u"call"_s);
    }
    SUCCEED();
}

} // namespace

} // namespace spotwell
