// SPDX-FileCopyrightText: 2026 the spotwell developers
// SPDX-License-Identifier: MIT

#include "platform/linux/web/LateUrlSession.h"

#include <utility>

namespace spotwell
{

void LateUrlSession::dataTask(const QString& url, CompletionHandler completionHandler)
{
    if (UrlSession* const session = made_)
        session->dataTask(url, std::move(completionHandler));
    else
        queue_->async([this, url, handler = std::move(completionHandler)]() mutable {
            begin(url, std::move(handler));
        });
}

bool LateUrlSession::pause(Seconds duration)
{
    UrlSession* const session = made_;
    return session != nullptr ? session->pause(duration) : queue_->pause(duration);
}

void LateUrlSession::begin(const QString& url, CompletionHandler completionHandler)
{
    QString error;
    if (!session_)
        session_ = make_(error);
    if (!session_) {
        completionHandler({{}, {}, error});
        return;
    }
    made_ = session_.get(); // before a handler can pause
    session_->dataTask(url, std::move(completionHandler));
}

} // namespace spotwell
