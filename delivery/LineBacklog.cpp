// SPDX-FileCopyrightText: 2026 the spotwell developers
// SPDX-License-Identifier: MIT

#include "delivery/LineBacklog.h"

#include <optional>
#include <utility>

namespace spotwell
{

LineBacklog::LineBacklog(Log& log, Deliver deliver) : log_(log), deliver_(std::move(deliver)) {}

void LineBacklog::add(SerialQueue& queue, const QString& line, const QString& source)
{
    bool lossBegins = false;
    bool needsTurn = false;
    {
        const std::lock_guard guard(mutex_);
        waiting_.push_back({line, source});
        length_ += line.size();
        while (length_ > maximumLength && waiting_.size() > 1) {
            length_ -= waiting_.front().line.size();
            waiting_.pop_front();
            lossBegins = lossBegins || !std::exchange(losing_, true);
        }
        // Lines that were pushed out leave their turns to those behind, so that turns are bounded, too.
        needsTurn = turns_ < waiting_.size();
        if (needsTurn)
            ++turns_;
    }
    if (lossBegins)
        log_.line(
            QStringLiteral("takeSpotLine: too many lines are waiting for Logwright, dropping the oldest"));
    if (needsTurn)
        queue.async([this] { deliverNext(); });
}

void LineBacklog::deliverNext()
{
    std::optional<Waiting> next;
    {
        const std::lock_guard guard(mutex_);
        --turns_;
        if (waiting_.empty())
            return;
        next = std::move(waiting_.front());
        waiting_.pop_front();
        length_ -= next->line.size();
        losing_ = losing_ && !waiting_.empty();
    }
    deliver_(next->line, next->source);
}

} // namespace spotwell
