// SPDX-FileCopyrightText: 2026 the spotwell developers
// SPDX-License-Identifier: MIT

#pragma once

#include "platform/Log.h"
#include "platform/Queues.h"

#include <QString>

#include <deque>
#include <functional>
#include <mutex>

namespace spotwell
{

/// The lines that wait for the delivery queue, in order and bounded.
///
/// A logger that hangs may hold the delivery for minutes while the node goes on sending. Past the bound the
/// oldest lines are dropped, the newest spots being the ones worth having; the log says so once for each run
/// of losses.
class LineBacklog
{
public:
    /// Delivers one line heard from a node; called on the queue.
    using Deliver = std::function<void(const QString& line, const QString& source)>;

    /// The most characters (UTF-16 units) that wait: some 50,000 lines.
    static constexpr qsizetype maximumLength = qsizetype{4} * 1024 * 1024;

    LineBacklog(Log& log, Deliver deliver);

    /// Hands `line` to `queue`. From any thread; does not wait.
    void add(SerialQueue& queue, const QString& line, const QString& source);

private:
    struct Waiting {
        QString line;
        QString source;
    };

    void deliverNext();

    Log& log_;
    Deliver deliver_;
    std::mutex mutex_;
    std::deque<Waiting> waiting_;
    qsizetype length_ = 0;
    /// How many tasks on the queue are still to take a line.
    std::size_t turns_ = 0;
    bool losing_ = false;
};

} // namespace spotwell
