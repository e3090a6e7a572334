// SPDX-FileCopyrightText: 2026 the spotwell developers
// SPDX-License-Identifier: MIT

#include "tools/spotwell-bridge/LineWriter.h"

#include <algorithm>
#include <cerrno>
#include <fcntl.h>
#include <poll.h>
#include <string>
#include <sys/stat.h>
#include <unistd.h>
#include <utility>

namespace spotwell::bridge
{

namespace
{

using SteadyClock = std::chrono::steady_clock;

/// How many pieces are written before others get their turn: all that may wait, if they are not of one byte.
constexpr int piecesAtOnce = 4096;

bool isWritable(int descriptor, std::chrono::milliseconds patience)
{
    pollfd entry{descriptor, POLLOUT, 0};
    return ::poll(&entry, 1, static_cast<int>(patience.count())) > 0;
}

} // namespace

LineWriter::LineWriter(int descriptor, Handlers handlers, Limits limits)
    : shared_(descriptor), handlers_(std::move(handlers)), limits_(limits)
{
}

LineWriter::~LineWriter()
{
    writable_.reset();
    if (descriptor_ >= 0 && descriptor_ != shared_)
        ::close(descriptor_);
}

void LineWriter::write(const QByteArray& line)
{
    if (failed_)
        return;
    if (descriptor_ < 0)
        open();
    waiting_.push_back(line + '\n');
    waitingBytes_ += static_cast<std::size_t>(line.size()) + 1;
    flush();
    boundWaiting();
}

void LineWriter::finish(std::chrono::milliseconds patience, std::chrono::milliseconds limit)
{
    const auto end = SteadyClock::now() + limit;
    while (!waiting_.empty() && !failed_) {
        const auto left = std::chrono::ceil<std::chrono::milliseconds>(end - SteadyClock::now());
        if (left.count() <= 0 || !isWritable(descriptor_, std::min(patience, left)))
            break;
        flush();
    }
    lost_ += std::exchange(waiting_, {}).size();
    tellLost();
}

/// Not blocking is a property of what is open, and others share that: the terminal's own shell, for one. So a
/// pipe or a terminal is opened anew, where that is possible. Elsewhere pieces that fit are written once
/// poll() says so; of a terminal, such as one of another user, it only says that there is some room.
void LineWriter::open()
{
    descriptor_ = shared_;
    struct stat status {
    };
    const bool isTerminal = ::isatty(shared_) != 0;
    if (::fstat(shared_, &status) != 0 || (!S_ISFIFO(status.st_mode) && !isTerminal))
        return;
    const std::string path = "/proc/self/fd/" + std::to_string(shared_);
    const int own = ::open(path.c_str(), O_WRONLY | O_NONBLOCK | O_NOCTTY | O_CLOEXEC);
    if (own >= 0)
        descriptor_ = own;
    else if (isTerminal)
        longestPiece_ = 1;
}

void LineWriter::flush()
{
    int pieces = 0;
    while (!waiting_.empty() && pieces < piecesAtOnce && isWritable(descriptor_, {}) && flushSome())
        ++pieces;
    if (failed_)
        return;
    if (!waiting_.empty() && !writable_) {
        writable_ = std::make_unique<QSocketNotifier>(descriptor_, QSocketNotifier::Write);
        QObject::connect(writable_.get(), &QSocketNotifier::activated, writable_.get(), [this] { flush(); });
    }
    if (writable_)
        writable_->setEnabled(!waiting_.empty());
    if (waiting_.empty())
        tellLost();
}

/// Writes a piece that is taken whole.
bool LineWriter::flushSome()
{
    const QByteArray& first = waiting_.front();
    const qsizetype piece = std::min<qsizetype>(first.size() - written_, longestPiece_);
    const ssize_t count = ::write(descriptor_, first.constData() + written_, static_cast<std::size_t>(piece));
    if (count < 0 && (errno == EAGAIN || errno == EINTR))
        return false;
    if (count < 0) {
        fail(errno);
        return false;
    }
    written_ += count;
    waitingBytes_ -= static_cast<std::size_t>(count);
    if (written_ == first.size()) {
        waiting_.pop_front();
        written_ = 0;
    }
    return true;
}

void LineWriter::boundWaiting()
{
    const bool losing = lost_ > 0;
    while (waiting_.size() > limits_.lines || waitingBytes_ > limits_.bytes) {
        // A line that was begun is ended.
        const auto oldest = waiting_.begin() + (written_ > 0 ? 1 : 0);
        if (oldest == waiting_.end())
            break;
        waitingBytes_ -= static_cast<std::size_t>(oldest->size());
        waiting_.erase(oldest);
        ++lost_;
    }
    if (!losing && lost_ > 0)
        handlers_.losing();
}

void LineWriter::tellLost()
{
    if (const std::size_t lost = std::exchange(lost_, 0); lost > 0)
        handlers_.lost(lost);
}

void LineWriter::fail(int error)
{
    failed_ = true;
    if (writable_)
        writable_->setEnabled(false);
    waiting_.clear();
    waitingBytes_ = 0;
    handlers_.failed(error);
}

} // namespace spotwell::bridge
