// SPDX-FileCopyrightText: 2026 the spotwell developers
// SPDX-License-Identifier: MIT

#pragma once

#include "platform/Queues.h"

#include <QString>

#include <deque>
#include <functional>
#include <mutex>

namespace spotwell
{

/// What other threads have for the console, in the order of their calls, until the main thread appends it.
///
/// Waking the main thread costs more than appending an entry does, so it is woken once for all entries that
/// come within a frame; the first after a quiet frame wakes it at once. While the main thread is busy the
/// oldest entries make room, once those behind them fill the console by themselves: nothing is lost that the
/// console would still hold.
class ConsoleInbox
{
public:
    /// Appends one entry to the console; called on the main thread.
    using Append = std::function<void(const QString& text)>;

    /// How long entries are gathered.
    static constexpr Seconds frame{0.060};

    ConsoleInbox(MainQueue& mainQueue, Append append);

    /// Has `text` appended soon. From any thread; does not wait.
    void add(const QString& text);
    /// Appends what waits, now, so that what the main thread appends next comes behind it. Main thread only.
    void handOver();

private:
    void turn();

    MainQueue& mainQueue_;
    Append append_;
    std::mutex mutex_; // guards all below
    std::deque<QString> waiting_;
    // What the waiting entries will take in the console, in characters.
    qsizetype length_ = 0;
    // Whether the main thread is going to take a turn without being asked for it.
    bool turnIsDue_ = false;
};

} // namespace spotwell
