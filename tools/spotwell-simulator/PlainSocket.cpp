// SPDX-FileCopyrightText: 2026 the spotwell developers
// SPDX-License-Identifier: MIT

#include "tools/spotwell-simulator/PlainSocket.h"

#include <array>
#include <cerrno>
#include <linux/sockios.h>
#include <netinet/in.h>
#include <netinet/tcp.h>
#include <sys/ioctl.h>
#include <sys/socket.h>
#include <unistd.h>
#include <utility>

namespace spotwell::simulator
{
namespace
{

bool triesAgain(int error)
{
    return error == EAGAIN || error == EWOULDBLOCK || error == EINTR;
}

} // namespace

PlainSocket::~PlainSocket()
{
    endConnection();
}

void PlainSocket::start(std::function<void()> activity)
{
    activity_ = std::move(activity);
    lastWrite_ = Moment::clock::now();
    lastRead_ = lastWrite_;
    const int yes = 1;
    setsockopt(descriptor_, IPPROTO_TCP, TCP_NODELAY, &yes, sizeof yes);
    reading_ = std::make_unique<QSocketNotifier>(descriptor_, QSocketNotifier::Read);
    writing_ = std::make_unique<QSocketNotifier>(descriptor_, QSocketNotifier::Write);
    writing_->setEnabled(false);
    QObject::connect(reading_.get(), &QSocketNotifier::activated, reading_.get(), [this] { readyToRead(); });
    QObject::connect(writing_.get(), &QSocketNotifier::activated, writing_.get(), [this] { readyToWrite(); });
}

void PlainSocket::flush()
{
    qsizetype sent = 0;
    while (isOpen() && sent < outgoing_.size()) {
        const ssize_t count = send(descriptor_, outgoing_.constData() + sent,
                                   static_cast<std::size_t>(outgoing_.size() - sent), MSG_NOSIGNAL);
        if (count < 0) {
            if (errno == EINTR)
                continue;
            if (!triesAgain(errno))
                leave(true);
            break;
        }
        sent += count;
    }
    if (sent > 0) {
        written_ += sent;
        lastWrite_ = Moment::clock::now();
    }
    // leave() has emptied the queue already.
    outgoing_.remove(0, sent);
    if (isOpen())
        writing_->setEnabled(!outgoing_.isEmpty());
}

bool PlainSocket::allArrived() const
{
    int unconfirmed = 0;
    return !isOpen() || ioctl(descriptor_, SIOCOUTQ, &unconfirmed) != 0 || unconfirmed == 0;
}

QByteArray PlainSocket::takeReceived()
{
    return std::exchange(received_, {});
}

void PlainSocket::readyToRead()
{
    std::array<char, 4096> buffer;
    const ssize_t count = recv(descriptor_, buffer.data(), buffer.size(), 0);
    if (count > 0) {
        received_.append(buffer.data(), count);
        lastRead_ = Moment::clock::now();
    } else if (count == 0 || !triesAgain(errno)) {
        leave(count != 0);
    }
    activity_();
}

void PlainSocket::readyToWrite()
{
    writing_->setEnabled(false);
    activity_();
}

void PlainSocket::leave(bool broken)
{
    clientLeft_ = true;
    broken_ = broken_ || broken;
    outgoing_.clear();
    reading_->setEnabled(false);
}

void PlainSocket::shutdownWrite()
{
    if (isOpen())
        shutdown(descriptor_, SHUT_WR);
}

void PlainSocket::close()
{
    endConnection();
}

void PlainSocket::endConnection()
{
    if (!isOpen())
        return;
    // A notifier may be what called, so both stay until the destructor.
    for (auto* notifier : {reading_.get(), writing_.get()}) {
        if (notifier)
            notifier->setEnabled(false);
    }
    ::close(std::exchange(descriptor_, -1));
}

void PlainSocket::reset()
{
    if (!isOpen())
        return;
    const linger atOnce{1, 0};
    setsockopt(descriptor_, SOL_SOCKET, SO_LINGER, &atOnce, sizeof atOnce);
    close();
}

} // namespace spotwell::simulator
