// SPDX-FileCopyrightText: 2026 the spotwell developers
// SPDX-License-Identifier: MIT

#include "platform/linux/QtMainQueue.h"

#include <QCoreApplication>
#include <QThread>

#include <algorithm>
#include <chrono>
#include <utility>
#include <vector>

namespace spotwell
{

namespace
{

using namespace std::chrono_literals;

/// Repeating tasks that fall due within this time run together, with the last of them.
constexpr auto sharedMoment = 2ms;

std::chrono::milliseconds wholeMilliseconds(Seconds span)
{
    return std::chrono::ceil<std::chrono::milliseconds>(span);
}

} // namespace

QtMainQueue::QtMainQueue()
{
    timer_.setSingleShot(true);
    timer_.setTimerType(Qt::PreciseTimer);
    QObject::connect(&timer_, &QTimer::timeout, this, [this] { runRepeating(); });
}

void QtMainQueue::async(Task task)
{
    const std::lock_guard guard(mutex_);
    tasks_.push_back(std::move(task));
    if (!std::exchange(posted_, true))
        QCoreApplication::postEvent(this, new QEvent(QEvent::User));
}

void QtMainQueue::after(Seconds delay, Task task)
{
    if (!isMainThread()) {
        // The delay counts from this call, however long the main thread takes to hear of it.
        const auto due = std::chrono::steady_clock::now() + delay;
        async([this, due, task = std::move(task)]() mutable {
            after(std::max(Seconds{0}, Seconds(due - std::chrono::steady_clock::now())), std::move(task));
        });
        return;
    }
    QTimer::singleShot(wholeMilliseconds(delay), Qt::PreciseTimer, this, std::move(task));
}

void QtMainQueue::every(Seconds interval, Task task)
{
    const auto span = std::max(wholeMilliseconds(interval), 1ms);
    repeating_.push_back({span, std::chrono::steady_clock::now() + span, std::move(task)});
    startTimer();
}

void QtMainQueue::startTimer()
{
    const auto next = std::min_element(repeating_.begin(), repeating_.end(),
                                       [](const auto& a, const auto& b) { return a.due < b.due; });
    const auto left = std::chrono::ceil<std::chrono::milliseconds>(next->due + sharedMoment -
                                                                   std::chrono::steady_clock::now());
    timer_.start(std::max(left, 0ms));
}

void QtMainQueue::runRepeating()
{
    const auto now = std::chrono::steady_clock::now();
    std::vector<Task*> due;
    for (Repeating& repeating : repeating_) {
        if (repeating.due > now)
            continue;
        due.push_back(&repeating.task);
        // Turns that were missed, while the computer slept say, are not made up for.
        repeating.due += ((now - repeating.due) / repeating.interval + 1) * repeating.interval;
    }
    // Before the tasks, one of which may run an event loop of its own.
    startTimer();
    for (const Task* task : due)
        (*task)();
}

bool QtMainQueue::isMainThread() const
{
    return QThread::currentThread() == thread();
}

bool QtMainQueue::event(QEvent* event)
{
    // Events are posted under the lock, too, so that it hands over the event itself.
    std::unique_lock guard(mutex_);
    if (event->type() != QEvent::User) {
        guard.unlock();
        return QObject::event(event);
    }
    // Only what waits now, so that other events get their turn; one by one, so that the order also holds
    // where a task runs an event loop of its own.
    posted_ = false;
    for (std::size_t left = tasks_.size(); left > 0 && !tasks_.empty(); --left) {
        Task task = std::move(tasks_.front());
        tasks_.pop_front();
        guard.unlock();
        task();
        task = nullptr;
        guard.lock();
    }
    return true;
}

} // namespace spotwell
