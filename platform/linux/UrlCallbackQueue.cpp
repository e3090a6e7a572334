#include "platform/linux/UrlCallbackQueue.h"

#include <algorithm>
#include <utility>

namespace spotwell
{

QString tooManyAnswersWaiting()
{
    return QStringLiteral("Too many answers are waiting to be handled.");
}

UrlCallbackQueue::~UrlCallbackQueue()
{
    end();
}

bool UrlCallbackQueue::reserve(qsizetype bytes)
{
    const std::lock_guard lock(mutex_);
    if (bytes > limits_.held - held_)
        return false;
    held_ += bytes;
    return true;
}

void UrlCallbackQueue::release(qsizetype bytes)
{
    const std::lock_guard lock(mutex_);
    held_ -= bytes;
}

void UrlCallbackQueue::push(UrlSession::CompletionHandler handler, UrlResult result)
{
    const std::lock_guard lock(mutex_);
    if (ending_)
        return;
    if (!result.error && waiting_.size() >= limits_.waiting) {
        held_ -= result.body.size();
        result = {{}, {}, tooManyAnswersWaiting()};
    }
    waiting_.push_back({std::move(handler), std::move(result)});
    if (!thread_.joinable())
        thread_ = std::thread([this] { run(); });
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
        Completion completion = std::move(waiting_.front());
        waiting_.pop_front();
        lock.unlock();
        const qsizetype size = completion.result.body.size();
        completion.handler(completion.result);
        completion = {};
        lock.lock();
        held_ -= size;
    }
}

} // namespace spotwell
