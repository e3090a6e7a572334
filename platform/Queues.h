// SPDX-FileCopyrightText: 2026 the spotwell developers
// SPDX-License-Identifier: MIT

#pragma once

#include "platform/Time.h"

#include <QString>

#include <functional>
#include <memory>

namespace spotwell
{

using Task = std::function<void()>;

/// The main thread's run loop.
///
/// Every task runs on the main thread, tasks of async() in the order they were handed over. Tasks that are
/// still waiting when the queue is destroyed are dropped.
class MainQueue
{
public:
    virtual ~MainQueue() = default;
    /// Runs `task` soon, never inside this call. From any thread; does not wait.
    virtual void async(Task task) = 0;
    /// Runs `task` once, `delay` from now. From any thread.
    virtual void after(Seconds delay, Task task) = 0;
    /// Runs `task` each `interval`, first one interval from now, for the life of the queue. Main thread only.
    virtual void every(Seconds interval, Task task) = 0;
    /// Whether the calling thread is the main thread.
    [[nodiscard]] virtual bool isMainThread() const = 0;
};

/// A worker that runs its tasks one at a time, first in first out, on a thread of its own.
///
/// Destroying it drops the tasks that have not begun, ends a pause at once and waits for the running task.
class SerialQueue
{
public:
    virtual ~SerialQueue() = default;
    /// From any thread; does not wait.
    virtual void async(Task task) = 0;
    /// Holds the calling task for `duration`; to be called from a task of this queue only. Returns false when
    /// the queue is ending, in which case the task should return without further work.
    virtual bool pause(Seconds duration) = 0;
    /// The name the queue was made with.
    [[nodiscard]] virtual QString label() const = 0;
};

/// Makes a serial queue with the given label.
using SerialQueueMaker = std::function<std::unique_ptr<SerialQueue>(const QString& label)>;

} // namespace spotwell
