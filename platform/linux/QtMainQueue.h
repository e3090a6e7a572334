// SPDX-FileCopyrightText: 2026 the spotwell developers
// SPDX-License-Identifier: MIT

#pragma once

#include "platform/Queues.h"

#include <QObject>
#include <QTimer>

#include <chrono>
#include <deque>
#include <mutex>

namespace spotwell
{

/// The main queue on Qt's event loop. To be made on the main thread.
///
/// However many tasks wait, one event stands for them all in Qt's queue. The repeating tasks share one timer,
/// and those that fall due together one wake-up.
class QtMainQueue final : public QObject, public MainQueue
{
public:
    QtMainQueue();

    void async(Task task) override;
    void after(Seconds delay, Task task) override;
    void every(Seconds interval, Task task) override;
    [[nodiscard]] bool isMainThread() const override;

    bool event(QEvent* event) override;

private:
    struct Repeating {
        std::chrono::milliseconds interval;
        std::chrono::steady_clock::time_point due;
        Task task;
    };

    void startTimer();
    void runRepeating();

    std::mutex mutex_; // guards tasks_ and posted_
    std::deque<Task> tasks_;
    bool posted_ = false;
    std::deque<Repeating> repeating_; // grows only, at its end, also while one of its tasks runs
    QTimer timer_;
};

} // namespace spotwell
