#pragma once

#include "platform/UrlSession.h"

#include <condition_variable>
#include <cstddef>
#include <deque>
#include <mutex>
#include <thread>

namespace spotwell
{

/// What a URL session holds at most, whatever the servers send and however long the handlers take.
struct UrlSessionLimits {
    /// Bytes of one body, decoded.
    qsizetype body = 32 * 1024 * 1024;
    /// Bytes of all bodies: those that arrive, those that wait and the one that is being handled.
    qsizetype held = 64 * 1024 * 1024;
    /// Bodies that wait for their handler.
    std::size_t waiting = 64;
};

/// The thread that runs the completion handlers one at a time, in the order of push(), and the account of the
/// bytes of bodies that the session holds. It begins with the first push(). Callable from any thread.
class UrlCallbackQueue
{
public:
    explicit UrlCallbackQueue(const UrlSessionLimits& limits) : limits_(limits) {}
    ~UrlCallbackQueue();
    UrlCallbackQueue(const UrlCallbackQueue&) = delete;
    UrlCallbackQueue& operator=(const UrlCallbackQueue&) = delete;

    /// Books `bytes` of a body; false when that would be more than the session may hold.
    [[nodiscard]] bool reserve(qsizetype bytes);
    /// Gives back what was booked.
    void release(qsizetype bytes);
    /// Hands over the end of a transfer, whose body is booked. When enough wait already, an error takes the
    /// place of the body, so that nothing overtakes and the handler is still called.
    void push(UrlSession::CompletionHandler handler, UrlResult result);
    /// As UrlSession::pause().
    bool pause(Seconds duration);
    /// Drops what waits, ends a pause and waits for the running handler; what is pushed later is dropped too.
    void end();

private:
    struct Completion {
        UrlSession::CompletionHandler handler;
        UrlResult result;
    };

    void run();

    const UrlSessionLimits limits_;
    std::mutex mutex_;
    std::condition_variable changed_;
    std::deque<Completion> waiting_;
    qsizetype held_ = 0;
    bool ending_ = false;
    std::thread thread_;
};

/// The error of an answer for which the session has no room.
[[nodiscard]] QString tooManyAnswersWaiting();

} // namespace spotwell
