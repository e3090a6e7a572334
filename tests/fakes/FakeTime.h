// SPDX-FileCopyrightText: 2026 the spotwell developers
// SPDX-License-Identifier: MIT

#pragma once

#include "platform/Queues.h"
#include "platform/Time.h"
#include "tests/fakes/Note.h"

#include <algorithm>
#include <deque>
#include <map>
#include <utility>
#include <vector>

namespace spotwell
{

/// A clock that moves only when told.
class FakeClock final : public Clock
{
public:
    /// 2027-02-03T09:05:07Z unless the test says otherwise.
    TimePoint time = std::chrono::sys_days{std::chrono::year{2027} / 2 / 3} + std::chrono::hours{9} +
                     std::chrono::minutes{5} + std::chrono::seconds{7};

    [[nodiscard]] TimePoint now() const override { return time; }
    void advance(Seconds span) { time += std::chrono::round<std::chrono::microseconds>(span); }
};

/// A main queue whose tasks run only inside runPending() and advance().
class FakeMainQueue final : public MainQueue
{
public:
    explicit FakeMainQueue(FakeClock& clock) : clock_(clock) {}

    void async(Task task) override { pending_.push_back(std::move(task)); }
    void after(Seconds delay, Task task) override { add(delay, Seconds{0}, std::move(task)); }
    void every(Seconds interval, Task task) override
    {
        note(QStringLiteral("every %1 s").arg(interval.count()));
        intervals.push_back(interval);
        add(interval, interval, std::move(task));
    }
    [[nodiscard]] bool isMainThread() const override { return onMainThread; }

    /// Runs what async() holds, and what that adds, until nothing is left.
    void runPending()
    {
        while (!pending_.empty()) {
            Task task = std::move(pending_.front());
            pending_.pop_front();
            task();
        }
    }

    /// Moves the clock on by `span`, running each timer at its moment and what is pending before and after
    /// it.
    void advance(Seconds span)
    {
        const TimePoint end = clock_.time + std::chrono::round<std::chrono::microseconds>(span);
        runPending();
        while (true) {
            const auto next =
                std::min_element(timers_.begin(), timers_.end(), [](const Timer& a, const Timer& b) {
                    return std::pair{a.due, a.order} < std::pair{b.due, b.order};
                });
            if (next == timers_.end() || next->due > end)
                break;
            clock_.time = std::max(clock_.time, next->due);
            Task task = next->task;
            if (next->interval > Seconds{0}) {
                next->due += std::chrono::round<std::chrono::microseconds>(next->interval);
                next->order = nextOrder_++;
            } else {
                timers_.erase(next);
            }
            task();
            runPending();
        }
        clock_.time = end;
    }

    [[nodiscard]] std::size_t pendingCount() const { return pending_.size(); }
    /// How many timers wait, repeating ones included.
    [[nodiscard]] std::size_t timerCount() const { return timers_.size(); }

    bool onMainThread = true;
    /// The intervals given to every(), in order.
    std::vector<Seconds> intervals;
    Note note = ignore;

private:
    struct Timer {
        TimePoint due;
        long order;
        Seconds interval;
        Task task;
    };

    void add(Seconds delay, Seconds interval, Task task)
    {
        timers_.push_back({clock_.time + std::chrono::round<std::chrono::microseconds>(delay), nextOrder_++,
                           interval, std::move(task)});
    }

    FakeClock& clock_;
    std::deque<Task> pending_;
    std::vector<Timer> timers_;
    long nextOrder_ = 0;
};

/// A serial queue whose tasks run only inside runPending(); its pauses take no time and are counted.
class FakeSerialQueue final : public SerialQueue
{
public:
    explicit FakeSerialQueue(QString label = {}) : label_(std::move(label)) {}

    void async(Task task) override
    {
        note(QStringLiteral("work for ") + label_);
        pending_.push_back(std::move(task));
    }
    bool pause(Seconds duration) override
    {
        pauses.push_back(duration);
        return !ending;
    }
    [[nodiscard]] QString label() const override { return label_; }

    void runPending()
    {
        while (runOne()) {
        }
    }
    bool runOne()
    {
        if (pending_.empty())
            return false;
        Task task = std::move(pending_.front());
        pending_.pop_front();
        task();
        return true;
    }
    [[nodiscard]] std::size_t pendingCount() const { return pending_.size(); }

    std::vector<Seconds> pauses;
    bool ending = false;
    Note note = ignore;

private:
    QString label_;
    std::deque<Task> pending_;
};

} // namespace spotwell
