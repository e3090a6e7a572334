// SPDX-FileCopyrightText: 2026 the spotwell developers
// SPDX-License-Identifier: MIT

#include "platform/linux/WorkerPool.h"

#include <algorithm>
#include <chrono>
#include <pthread.h>
#include <system_error>

namespace spotwell
{

WorkerPool::WorkerPool(QString name) : name_(std::move(name)) {}

WorkerPool::~WorkerPool()
{
    {
        const std::lock_guard lock(mutex_);
        ending_ = true;
    }
    found_.notify_all();
    for (Worker& worker : workers_)
        worker.thread.join();
}

WorkerPool::QueuePointer WorkerPool::addQueue()
{
    const std::lock_guard lock(mutex_);
    ++queues_;
    return std::make_shared<Queue>();
}

void WorkerPool::removeQueue(Queue& queue)
{
    end(queue);
    const std::lock_guard lock(mutex_);
    --queues_;
}

void WorkerPool::add(const QueuePointer& queue, Task task)
{
    bool wakes = false;
    {
        const std::lock_guard lock(mutex_);
        if (queue->ending)
            return;
        queue->tasks.push_back(std::move(task));
        if (!std::exchange(queue->taken, true))
            wakes = makeReady(queue);
        else if (workers_.empty())
            wakes = findWorker(); // there was none to be had
    }
    if (wakes)
        found_.notify_one();
}

bool WorkerPool::pause(Queue& queue, Seconds duration)
{
    const auto until =
        std::chrono::steady_clock::now() + std::chrono::ceil<std::chrono::steady_clock::duration>(duration);
    std::unique_lock lock(mutex_);
    if (Worker* const worker = self(); worker != nullptr && worker->next) {
        ready_.push_back(std::exchange(worker->next, nullptr));
        if (findWorker())
            found_.notify_one();
    }
    return !queue.changed.wait_until(lock, until, [&queue] { return queue.ending; });
}

void WorkerPool::end(Queue& queue)
{
    std::deque<Task> dropped;
    std::unique_lock lock(mutex_);
    queue.ending = true;
    dropped.swap(queue.tasks);
    queue.changed.notify_all();
    queue.changed.wait(lock, [&queue] { return !queue.running; });
    lock.unlock();
}

WorkerPool::Worker* WorkerPool::self()
{
    const auto worker = std::find_if(workers_.begin(), workers_.end(), [](const Worker& candidate) {
        return candidate.thread.get_id() == std::this_thread::get_id();
    });
    return worker == workers_.end() ? nullptr : &*worker;
}

bool WorkerPool::makeReady(const QueuePointer& queue)
{
    if (Worker* const worker = self(); worker != nullptr && !worker->next) {
        worker->next = queue;
        return false;
    }
    ready_.push_back(queue);
    return findWorker();
}

bool WorkerPool::findWorker()
{
    if (ready_.size() <= idle_)
        return true;
    if (workers_.size() < queues_)
        beginWorker();
    return false;
}

void WorkerPool::beginWorker()
{
    workers_.emplace_back();
    try {
        workers_.back().thread = std::thread([this] { work(); });
    } catch (const std::system_error&) {
        // Out of threads for now: the work waits for one of those there are, or for the next attempt.
        workers_.pop_back();
    }
}

void WorkerPool::work()
{
    ::pthread_setname_np(::pthread_self(), name_.toLatin1().constData());
    std::unique_lock lock(mutex_);
    Worker& worker = *self();
    while (true) {
        if (const QueuePointer queue = takeQueue(worker)) {
            runTask(queue, lock);
        } else if (ending_) {
            return;
        } else {
            ++idle_;
            found_.wait(lock, [this] { return ending_ || !ready_.empty(); });
            --idle_;
        }
    }
}

WorkerPool::QueuePointer WorkerPool::takeQueue(Worker& worker)
{
    QueuePointer queue = std::exchange(worker.next, nullptr);
    if (!queue && !ready_.empty()) {
        queue = std::move(ready_.front());
        ready_.pop_front();
    }
    // What this worker leaves lying may have no other yet.
    if (queue && !ready_.empty() && findWorker())
        found_.notify_one();
    return queue;
}

void WorkerPool::runTask(const QueuePointer& queue, std::unique_lock<std::mutex>& lock)
{
    if (!queue->tasks.empty()) {
        Task task = std::move(queue->tasks.front());
        queue->tasks.pop_front();
        queue->running = true;
        lock.unlock();
        task();
        task = nullptr;
        lock.lock();
        queue->running = false;
    }
    if (queue->ending)
        queue->changed.notify_all();
    if (queue->tasks.empty())
        queue->taken = false;
    else
        ready_.push_back(queue);
}

} // namespace spotwell
