// SPDX-FileCopyrightText: 2026 the spotwell developers
// SPDX-License-Identifier: MIT

#include "platform/linux/web/UrlCallbackQueue.h"

#include <memory>
#include <utility>

namespace spotwell
{

namespace
{

/// Goes in the opposite order: what it has booked last.
struct Completion {
    UrlBooking booking;
    UrlResult result;
    UrlSession::CompletionHandler handler;
};

} // namespace

void UrlCallbackQueue::begin()
{
    queue_.async([] {});
}

void UrlCallbackQueue::push(UrlSession::CompletionHandler handler, UrlResult result, UrlBooking booking)
{
    // Shared, for a task can be copied and a booking cannot.
    queue_.async([completion = std::make_shared<Completion>(
                      Completion{std::move(booking), std::move(result), std::move(handler)})] {
        completion->handler(completion->result);
    });
}

} // namespace spotwell
