// SPDX-FileCopyrightText: 2026 the spotwell developers
// SPDX-License-Identifier: MIT

#pragma once

#include "platform/Queues.h"
#include "platform/UrlSession.h"

#include <QString>

#include <atomic>
#include <functional>
#include <memory>
#include <utility>

namespace spotwell
{

/// A URL session that is made with its first transfer, for what it takes (an HTTP client and its libraries)
/// is not needed by who polls nothing.
///
/// It is made on a queue, since loading libraries can take as long as the disk does. Where that fails the
/// transfer ends with the reason as its error, and the next one tries again.
class LateUrlSession final : public UrlSession
{
public:
    /// Makes the session; when it cannot be made, gives none and says why in `error`.
    using Maker = std::function<std::unique_ptr<UrlSession>(QString& error)>;

    LateUrlSession(std::unique_ptr<SerialQueue> queue, Maker make)
        : make_(std::move(make)), queue_(std::move(queue))
    {
    }

    void dataTask(const QString& url, CompletionHandler completionHandler) override;
    bool pause(Seconds duration) override;

private:
    /// On the queue.
    void begin(const QString& url, CompletionHandler completionHandler);

    const Maker make_;
    std::unique_ptr<UrlSession> session_; // the queue's alone
    std::atomic<UrlSession*> made_ = nullptr;
    std::unique_ptr<SerialQueue> queue_; // last: nothing runs on it when the others go
};

} // namespace spotwell
