#include "platform/linux/UrlCallbackQueue.h"

#include <system_error>
#include <utility>

namespace spotwell
{

UrlCallbackQueue::~UrlCallbackQueue()
{
    end();
}

void UrlCallbackQueue::begin()
{
    const std::lock_guard lock(mutex_);
    if (!ending_)
        beginThread();
}

void UrlCallbackQueue::beginThread()
{
    if (thread_.joinable())
        return;
    try {
        thread_ = std::thread([this] { run(); });
    } catch (const std::system_error&) {
        // Out of threads for now.
        return;
    }
}

void UrlCallbackQueue::push(UrlSession::CompletionHandler handler, UrlResult result, UrlBooking booking)
{
    const std::lock_guard lock(mutex_);
    if (ending_)
        return;
    waiting_.push_back({std::move(handler), std::move(result), std::move(booking)});
    beginThread();
    changed_.notify_all();
}

bool UrlCallbackQueue::pause(Seconds duration)
{
    std::unique_lock lock(mutex_);
    return !changed_.wait_for(lock, duration, [this] { return ending_; });
}

void UrlCallbackQueue::end()
{
    std::deque<Completion> dropped;
    {
        const std::lock_guard lock(mutex_);
        ending_ = true;
        dropped.swap(waiting_);
        changed_.notify_all();
    }
    if (thread_.joinable())
        thread_.join();
}

void UrlCallbackQueue::run()
{
    std::unique_lock lock(mutex_);
    while (true) {
        changed_.wait(lock, [this] { return ending_ || !waiting_.empty(); });
        if (ending_)
            return;
        {
            Completion completion = std::move(waiting_.front());
            waiting_.pop_front();
            lock.unlock();
            completion.handler(completion.result);
            // What it holds goes first, what it has booked last.
            completion.handler = nullptr;
            completion.result = {};
        }
        lock.lock();
    }
}

} // namespace spotwell
