// SPDX-FileCopyrightText: 2026 the spotwell developers
// SPDX-License-Identifier: MIT

#pragma once

#include "platform/Queues.h"

#include <QString>

#include <condition_variable>
#include <deque>
#include <list>
#include <memory>
#include <mutex>
#include <thread>
#include <utility>

namespace spotwell
{

/// The threads that serial queues share: as many as queues have work at one time, begun when first needed.
///
/// A thread whose task gives work to an idle queue turns to that queue itself once the task is done: work
/// that goes from queue to queue wakes no thread at each step. So what a task gives to another queue begins,
/// at the latest, when the task ends or pauses.
class WorkerPool
{
public:
    /// `name` is what the system's tools show of the threads, at most 15 characters.
    explicit WorkerPool(QString name);
    /// The queues have ended before.
    ~WorkerPool();
    WorkerPool(const WorkerPool&) = delete;
    WorkerPool& operator=(const WorkerPool&) = delete;

private:
    friend class PooledSerialQueue;

    struct Queue {
        std::deque<Task> tasks;
        /// Whether a thread runs a task of it, or is going to.
        bool taken = false;
        bool running = false;
        bool ending = false;
        std::condition_variable changed;
    };
    using QueuePointer = std::shared_ptr<Queue>;
    struct Worker {
        std::thread thread;
        /// The queue that its task gave work to.
        QueuePointer next;
    };

    QueuePointer addQueue();
    void removeQueue(Queue& queue);
    void add(const QueuePointer& queue, Task task);
    bool pause(Queue& queue, Seconds duration);
    void end(Queue& queue);
    void work();

    // With mutex_ held.
    [[nodiscard]] Worker* self();
    /// Whether an idle worker is to be woken.
    [[nodiscard]] bool makeReady(const QueuePointer& queue);
    /// Finds a worker for what is ready: true for an idle one, which is to be woken; a new one where there is
    /// none.
    [[nodiscard]] bool findWorker();
    void beginWorker();
    [[nodiscard]] QueuePointer takeQueue(Worker& worker);
    void runTask(const QueuePointer& queue, std::unique_lock<std::mutex>& lock);

    const QString name_;
    std::mutex mutex_; // guards all below, and the queues
    std::condition_variable found_;
    std::size_t queues_ = 0;
    std::deque<QueuePointer> ready_;
    std::list<Worker> workers_;
    std::size_t idle_ = 0;
    bool ending_ = false;
};

/// A serial queue on the threads of a pool.
class PooledSerialQueue final : public SerialQueue
{
public:
    PooledSerialQueue(std::shared_ptr<WorkerPool> pool, QString label)
        : pool_(std::move(pool)), label_(std::move(label)), queue_(pool_->addQueue())
    {
    }
    ~PooledSerialQueue() override { pool_->removeQueue(*queue_); }
    PooledSerialQueue(const PooledSerialQueue&) = delete;
    PooledSerialQueue& operator=(const PooledSerialQueue&) = delete;

    void async(Task task) override { pool_->add(queue_, std::move(task)); }
    bool pause(Seconds duration) override { return pool_->pause(*queue_, duration); }
    [[nodiscard]] QString label() const override { return label_; }
    /// Drops what waits, ends a pause and waits for the running task; what is added later is dropped, too.
    void end() { pool_->end(*queue_); }

private:
    const std::shared_ptr<WorkerPool> pool_;
    const QString label_;
    const WorkerPool::QueuePointer queue_;
};

} // namespace spotwell
