#pragma once

#include "platform/UrlSession.h"
#include "platform/linux/UrlAccount.h"

#include <condition_variable>
#include <deque>
#include <mutex>
#include <thread>

namespace spotwell
{

/// The thread that runs the completion handlers one at a time, in the order of push(). Callable from any
/// thread.
class UrlCallbackQueue
{
public:
    UrlCallbackQueue() = default;
    ~UrlCallbackQueue();
    UrlCallbackQueue(const UrlCallbackQueue&) = delete;
    UrlCallbackQueue& operator=(const UrlCallbackQueue&) = delete;

    /// Begins the thread unless it runs. When the system has none to give, what waits goes on waiting and the
    /// next begin() or push() tries again.
    void begin();
    /// Hands over the end of a transfer and what it has booked, which is given back once it was handled.
    /// Begins the thread.
    void push(UrlSession::CompletionHandler handler, UrlResult result, UrlBooking booking);
    /// As UrlSession::pause().
    bool pause(Seconds duration);
    /// Drops what waits, ends a pause and waits for the running handler; what is pushed later is dropped too.
    void end();

private:
    struct Completion {
        UrlSession::CompletionHandler handler;
        UrlResult result;
        UrlBooking booking;
    };

    void beginThread();
    void run();

    std::mutex mutex_;
    std::condition_variable changed_;
    std::deque<Completion> waiting_;
    bool ending_ = false;
    std::thread thread_;
};

} // namespace spotwell
