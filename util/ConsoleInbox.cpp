// SPDX-FileCopyrightText: 2026 the spotwell developers
// SPDX-License-Identifier: MIT

#include "util/ConsoleInbox.h"

#include "util/ConsoleText.h"

#include <utility>

namespace spotwell
{

namespace
{

/// The characters of an entry in the console: its text behind a line feed.
qsizetype lengthInConsole(const QString& text)
{
    return text.size() + 1;
}

} // namespace

ConsoleInbox::ConsoleInbox(MainQueue& mainQueue, Append append)
    : mainQueue_(mainQueue), append_(std::move(append))
{
}

void ConsoleInbox::add(const QString& text)
{
    bool asks = false;
    {
        const std::lock_guard guard(mutex_);
        waiting_.push_back(text);
        length_ += lengthInConsole(text);
        while (length_ - lengthInConsole(waiting_.front()) >= ConsoleText::trimmingThreshold) {
            length_ -= lengthInConsole(waiting_.front());
            waiting_.pop_front();
        }
        asks = !std::exchange(turnIsDue_, true);
    }
    if (asks)
        mainQueue_.async([this] { turn(); });
}

void ConsoleInbox::turn()
{
    {
        const std::lock_guard guard(mutex_);
        turnIsDue_ = !waiting_.empty();
        if (!turnIsDue_)
            return;
    }
    handOver();
    // Where there was something there will be more; the next turn then needs no waking.
    mainQueue_.after(frame, [this] { turn(); });
}

void ConsoleInbox::handOver()
{
    std::deque<QString> entries;
    {
        const std::lock_guard guard(mutex_);
        entries.swap(waiting_);
        length_ = 0;
    }
    for (const QString& text : entries)
        append_(text);
}

} // namespace spotwell
