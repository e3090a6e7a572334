// SPDX-FileCopyrightText: 2026 the spotwell developers
// SPDX-License-Identifier: MIT

#pragma once

#include "platform/UrlSession.h"
#include "platform/linux/WorkerPool.h"
#include "platform/linux/web/UrlAccount.h"

namespace spotwell
{

/// The thread that runs the completion handlers one at a time, in the order of push(). Callable from any
/// thread.
class UrlCallbackQueue
{
public:
    /// Begins the thread unless it runs. When the system has none to give, what waits goes on waiting and the
    /// next begin() or push() tries again.
    void begin();
    /// Hands over the end of a transfer and what it has booked, which is given back once it was handled.
    /// Begins the thread.
    void push(UrlSession::CompletionHandler handler, UrlResult result, UrlBooking booking);
    /// As UrlSession::pause().
    bool pause(Seconds duration) { return queue_.pause(duration); }
    /// Drops what waits, ends a pause and waits for the running handler; what is pushed later is dropped too.
    void end() { queue_.end(); }

private:
    PooledSerialQueue queue_{std::make_shared<WorkerPool>(QStringLiteral("url-callbacks")),
                             QStringLiteral("url-callbacks")};
};

} // namespace spotwell
