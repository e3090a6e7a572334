// SPDX-FileCopyrightText: 2026 the spotwell developers
// SPDX-License-Identifier: MIT

#pragma once

#include <QByteArray>
#include <QSocketNotifier>

#include <chrono>
#include <climits>
#include <cstddef>
#include <deque>
#include <functional>
#include <memory>
#include <utility>

namespace spotwell::bridge
{

/// Writes lines to a descriptor that others may share, such as the standard output, without ever waiting for
/// whoever reads it. What is not taken waits; beyond the limits the oldest whole lines are lost. Belongs to
/// the thread of its event loop.
class LineWriter
{
public:
    struct Limits {
        std::size_t lines = 16'384;
        std::size_t bytes = std::size_t{8} << 20;
    };
    struct Handlers {
        /// Lines were lost for the first time since everything was taken.
        std::function<void()> losing;
        /// So many lines were lost; everything is taken now, or the writer has finished.
        std::function<void(std::size_t)> lost;
        /// Nothing can be written any more, for this errno.
        std::function<void(int)> failed;
    };

    LineWriter(int descriptor, Handlers handlers, Limits limits);
    LineWriter(int descriptor, Handlers handlers) : LineWriter(descriptor, std::move(handlers), Limits{}) {}
    ~LineWriter();
    LineWriter(const LineWriter&) = delete;
    LineWriter& operator=(const LineWriter&) = delete;

    /// `line` comes without its line feed.
    void write(const QByteArray& line);
    /// Writes what waits, as long as some of it is taken within `patience`, but not for longer than `limit`.
    void finish(std::chrono::milliseconds patience, std::chrono::milliseconds limit);

private:
    void open();
    void flush();
    bool flushSome();
    void boundWaiting();
    void tellLost();
    void fail(int error);

    const int shared_;
    const Handlers handlers_;
    const Limits limits_;
    int descriptor_ = -1;
    /// What a pipe that poll() calls writable takes whole.
    qsizetype longestPiece_ = PIPE_BUF;
    std::deque<QByteArray> waiting_;
    std::size_t waitingBytes_ = 0;
    /// How much of the first that waits is written.
    qsizetype written_ = 0;
    std::size_t lost_ = 0;
    std::unique_ptr<QSocketNotifier> writable_;
    bool failed_ = false;
};

} // namespace spotwell::bridge
