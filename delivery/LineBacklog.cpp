#include "delivery/LineBacklog.h"

#include <optional>
#include <utility>

namespace spotwell
{

LineBacklog::LineBacklog(Log& log, Deliver deliver) : log_(log), deliver_(std::move(deliver)) {}

void LineBacklog::add(SerialQueue& queue, const QString& line, const QString& source)
{
    bool dropped = false;
    bool lossBegins = false;
    {
        const std::lock_guard guard(mutex_);
        waiting_.push_back({line, source});
        length_ += line.size();
        while (length_ > maximumLength && waiting_.size() > 1) {
            length_ -= waiting_.front().line.size();
            waiting_.pop_front();
            dropped = true;
            lossBegins = lossBegins || !std::exchange(losing_, true);
        }
    }
    if (lossBegins)
        log_.line(
            QStringLiteral("LineBacklog: too many lines are waiting for Logwright, dropping the oldest"));
    // The new line takes over the turn of the one it pushed out, so that turns are bounded, too.
    if (!dropped)
        queue.async([this] { deliverNext(); });
}

void LineBacklog::deliverNext()
{
    std::optional<Waiting> next;
    {
        const std::lock_guard guard(mutex_);
        // A long line may have pushed out several; their other turns find nothing.
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
