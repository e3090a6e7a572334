// SPDX-FileCopyrightText: 2026 the spotwell developers
// SPDX-License-Identifier: MIT

#include "platform/linux/SocketConnection.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <chrono>
#include <cstring>
#include <netinet/in.h>
#include <netinet/tcp.h>
#include <poll.h>
#include <sys/ioctl.h>
#include <unistd.h>
#include <utility>

namespace spotwell
{

using namespace std::chrono_literals;

namespace
{

// The kernel's receive buffer. It bounds what waits for the program; beyond it the peer's own TCP has to
// wait.
constexpr int receiveBufferBytes = 64 * 1024;
// RFC 8305, section 5.
constexpr auto connectionAttemptDelay = 250ms;
// What is read and thrown away at the end, so that closing does not reset the connection under the last
// words.
constexpr int drainedBytes = 256 * 1024;

void setOption(int fd, int level, int name, int value)
{
    // An option that cannot be set costs comfort only.
    (void)::setsockopt(fd, level, name, &value, sizeof value);
}

QString describe(int error)
{
    return QString::fromLocal8Bit(std::strerror(error));
}

int pendingError(int fd)
{
    int error = 0;
    socklen_t length = sizeof error;
    return ::getsockopt(fd, SOL_SOCKET, SO_ERROR, &error, &length) == 0 ? error : errno;
}

} // namespace

SocketConnection::SocketConnection(std::shared_ptr<HostResolver> resolver, QString host, std::uint16_t port)
    : resolver_(std::move(resolver)), host_(std::move(host)), port_(port)
{
}

SocketConnection::~SocketConnection()
{
    closeSocket();
}

void SocketConnection::open(Side& side)
{
    if (side.status != StreamStatus::notOpen)
        return;
    side.status = StreamStatus::opening;
    if (std::exchange(started_, true))
        return;
    resolver_->lookUp(host_, port_, weak_from_this(), [this](const HostLookup& lookup) { lookedUp(lookup); });
}

void SocketConnection::lookedUp(const HostLookup& lookup)
{
    if (input.status == StreamStatus::closed && output.status == StreamStatus::closed)
        return;
    if (lookup.addresses.empty()) {
        fail(lookup.error);
        return;
    }
    addresses_ = lookup.addresses;
    nextAttempt_.setSingleShot(true);
    QObject::connect(&nextAttempt_, &QTimer::timeout, &nextAttempt_, [this] { tryNextAddress(); });
    tryNextAddress();
}

void SocketConnection::tryNextAddress()
{
    if (nextAddress_ == addresses_.size())
        return;
    const SocketAddress& address = addresses_[nextAddress_++];
    if (nextAddress_ < addresses_.size())
        nextAttempt_.start(connectionAttemptDelay);

    const int fd =
        ::socket(address.storage.ss_family, SOCK_STREAM | SOCK_NONBLOCK | SOCK_CLOEXEC, IPPROTO_TCP);
    if (fd < 0) {
        attemptFailed(errno);
        return;
    }
    setOption(fd, SOL_SOCKET, SO_RCVBUF, receiveBufferBytes);
    // Answers are single short lines; each leaves at once.
    setOption(fd, IPPROTO_TCP, TCP_NODELAY, 1);
    if (::connect(fd, address.get(), address.length) != 0 && errno != EINPROGRESS) {
        const int error = errno;
        ::close(fd);
        attemptFailed(error);
        return;
    }
    Attempt& attempt = attempts_.emplace_back();
    attempt.fd = fd;
    attempt.notifier = std::make_unique<QSocketNotifier>(fd, QSocketNotifier::Write);
    QObject::connect(attempt.notifier.get(), &QSocketNotifier::activated, attempt.notifier.get(),
                     [this, fd] { attemptReady(fd); });
}

void SocketConnection::attemptReady(int fd)
{
    const auto self = shared_from_this();
    const auto attempt =
        std::find_if(attempts_.begin(), attempts_.end(), [fd](const Attempt& a) { return a.fd == fd; });
    if (attempt == attempts_.end())
        return;
    // This call comes from the notifier, which must outlive it.
    attempt->notifier->setEnabled(false);
    attempt->notifier.release()->deleteLater();
    attempts_.erase(attempt);
    if (const int error = pendingError(fd)) {
        ::close(fd);
        attemptFailed(error);
    } else {
        connected(fd);
    }
}

void SocketConnection::attemptFailed(int error)
{
    if (nextAddress_ < addresses_.size())
        tryNextAddress();
    else if (attempts_.empty())
        fail(describe(error));
}

void SocketConnection::connected(int fd)
{
    nextAttempt_.stop();
    for (Attempt& other : attempts_) {
        other.notifier.reset();
        ::close(other.fd);
    }
    attempts_.clear();
    fd_ = fd;

    readNotifier_ = std::make_unique<QSocketNotifier>(fd, QSocketNotifier::Read);
    readNotifier_->setEnabled(false);
    QObject::connect(readNotifier_.get(), &QSocketNotifier::activated, readNotifier_.get(),
                     [this] { readable(); });
    writeNotifier_ = std::make_unique<QSocketNotifier>(fd, QSocketNotifier::Write);
    QObject::connect(writeNotifier_.get(), &QSocketNotifier::activated, writeNotifier_.get(),
                     [this] { writable(); });

    for (Side* side : {&input, &output}) {
        if (side->status == StreamStatus::opening) {
            side->status = StreamStatus::open;
            deliver(*side, StreamEvent::openCompleted);
        }
    }
    if (readNotifier_ && input.status == StreamStatus::open)
        readNotifier_->setEnabled(!inputHeld_);
}

void SocketConnection::readable()
{
    const auto self = shared_from_this();
    int waiting = 0;
    if (::ioctl(fd_, FIONREAD, &waiting) == 0 && waiting > 0) {
        deliver(input, StreamEvent::hasBytesAvailable);
        return;
    }
    char next = 0;
    const ssize_t seen = ::recv(fd_, &next, 1, MSG_PEEK | MSG_DONTWAIT);
    if (seen > 0) {
        deliver(input, StreamEvent::hasBytesAvailable);
    } else if (seen == 0) {
        readNotifier_->setEnabled(false);
        input.status = StreamStatus::atEnd;
        deliver(input, StreamEvent::endEncountered);
    } else if (errno != EAGAIN && errno != EWOULDBLOCK && errno != EINTR) {
        fail(describe(errno));
    }
}

void SocketConnection::writable()
{
    const auto self = shared_from_this();
    writeNotifier_->setEnabled(false);
    deliver(output, StreamEvent::hasSpaceAvailable);
}

void SocketConnection::fail(const QString& description)
{
    const auto self = shared_from_this();
    error_ = description;
    if (readNotifier_)
        readNotifier_->setEnabled(false);
    // Both directions have failed before either is told.
    std::array<Side*, 2> failed{};
    for (Side* side : {&input, &output}) {
        if (side->status != StreamStatus::notOpen && side->status != StreamStatus::closed) {
            side->status = StreamStatus::error;
            failed[side == &input ? 0 : 1] = side;
        }
    }
    for (Side* side : failed) {
        if (side && side->status == StreamStatus::error)
            deliver(*side, StreamEvent::errorOccurred);
    }
}

void SocketConnection::deliver(Side& side, StreamEvent event)
{
    if (side.stream && side.delegate)
        side.delegate->handleEvent(*side.stream, static_cast<int>(event));
}

std::ptrdiff_t SocketConnection::read(std::span<std::byte> buffer)
{
    if (fd_ < 0)
        return -1;
    ssize_t got = 0;
    do
        got = ::recv(fd_, buffer.data(), buffer.size(), MSG_DONTWAIT);
    while (got < 0 && errno == EINTR);
    return got;
}

std::ptrdiff_t SocketConnection::write(std::span<const char> bytes)
{
    if (fd_ < 0 || output.status != StreamStatus::open)
        return -1;
    ssize_t sent = 0;
    do
        sent = ::send(fd_, bytes.data(), bytes.size(), MSG_DONTWAIT | MSG_NOSIGNAL);
    while (sent < 0 && errno == EINTR);
    writeNotifier_->setEnabled(true);
    return sent;
}

bool SocketConnection::hasSpaceAvailable() const
{
    if (fd_ < 0 || output.status != StreamStatus::open)
        return false;
    pollfd entry{fd_, POLLOUT, 0};
    return ::poll(&entry, 1, 0) == 1 && (entry.revents & (POLLOUT | POLLERR | POLLHUP)) == POLLOUT;
}

void SocketConnection::holdInput(bool hold)
{
    inputHeld_ = hold;
    if (readNotifier_ && input.status == StreamStatus::open)
        readNotifier_->setEnabled(!hold);
}

void SocketConnection::closeOutput()
{
    output.status = StreamStatus::closed;
    if (writeNotifier_)
        writeNotifier_->setEnabled(false);
    if (fd_ >= 0)
        ::shutdown(fd_, SHUT_WR);
    if (input.status == StreamStatus::closed)
        closeSocket();
}

void SocketConnection::closeInput()
{
    input.status = StreamStatus::closed;
    if (readNotifier_)
        readNotifier_->setEnabled(false);
    if (output.status == StreamStatus::closed)
        closeSocket();
}

void SocketConnection::closeSocket()
{
    nextAttempt_.stop();
    for (Attempt& attempt : attempts_) {
        attempt.notifier.reset();
        ::close(attempt.fd);
    }
    attempts_.clear();
    // This may run inside a call from one of the notifiers.
    for (auto* notifier : {&readNotifier_, &writeNotifier_}) {
        if (*notifier) {
            (*notifier)->setEnabled(false);
            (*notifier)->disconnect();
            notifier->release()->deleteLater();
        }
    }
    if (fd_ < 0)
        return;
    // Closing with bytes unread would reset the connection, and with it what was written last.
    std::array<char, 4096> scratch;
    for (int left = drainedBytes; left > 0;) {
        const ssize_t got = ::recv(fd_, scratch.data(), scratch.size(), MSG_DONTWAIT);
        if (got <= 0)
            break;
        left -= static_cast<int>(got);
    }
    ::close(fd_);
    fd_ = -1;
}

} // namespace spotwell
