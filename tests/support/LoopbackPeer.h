// SPDX-FileCopyrightText: 2026 the spotwell developers
// SPDX-License-Identifier: MIT

#pragma once

#include "tests/support/WaitUntil.h"

#include <QByteArray>

#include <arpa/inet.h>
#include <cstdint>
#include <cstring>
#include <fcntl.h>
#include <netinet/in.h>
#include <netinet/tcp.h>
#include <sys/socket.h>
#include <unistd.h>

namespace spotwell
{

/// The other end of a TCP connection on loopback, moved by the test: listens, accepts one peer, sends, hears,
/// ends.
class LoopbackPeer
{
public:
    LoopbackPeer() { listen(); }
    /// Takes a socket that listens already.
    explicit LoopbackPeer(int listener) : listener_(listener)
    {
        (void)::fcntl(listener_, F_SETFL, ::fcntl(listener_, F_GETFL) | O_NONBLOCK);
    }
    ~LoopbackPeer()
    {
        close();
        stopListening();
        if (holder_ >= 0)
            ::close(holder_);
    }
    LoopbackPeer(const LoopbackPeer&) = delete;
    LoopbackPeer& operator=(const LoopbackPeer&) = delete;

    [[nodiscard]] std::uint16_t port() const { return port_; }
    void stopListening()
    {
        if (listener_ >= 0)
            ::close(std::exchange(listener_, -1));
    }
    /// Listens at the same port again.
    void listenAgain()
    {
        stopListening();
        listen();
    }
    /// Is ready for another peer: has none, and has heard nothing.
    void forget()
    {
        close();
        heard_.clear();
        ended_ = false;
    }
    /// Runs the event loop until somebody has connected.
    bool accept()
    {
        return waitUntil([this] {
            peer_ = ::accept4(listener_, nullptr, nullptr, SOCK_NONBLOCK | SOCK_CLOEXEC);
            return peer_ >= 0;
        });
    }
    /// Whether somebody waits to be accepted right now; accepts him.
    bool acceptNow()
    {
        peer_ = ::accept4(listener_, nullptr, nullptr, SOCK_NONBLOCK | SOCK_CLOEXEC);
        return peer_ >= 0;
    }
    /// Bounds what waits on this side to be sent. The kernel takes about twice as much, bookkeeping included.
    void setSendBuffer(int bytes) { (void)::setsockopt(peer_, SOL_SOCKET, SO_SNDBUF, &bytes, sizeof bytes); }
    /// Sends as much of `bytes` as the connection takes now; how much that was.
    qsizetype send(const QByteArray& bytes)
    {
        const ssize_t sent =
            ::send(peer_, bytes.constData(), static_cast<std::size_t>(bytes.size()), MSG_NOSIGNAL);
        return sent < 0 ? 0 : sent;
    }
    /// All that was heard so far.
    QByteArray heard()
    {
        char buffer[4096];
        ssize_t got = 0;
        while (peer_ >= 0 && (got = ::recv(peer_, buffer, sizeof buffer, 0)) > 0)
            heard_.append(buffer, got);
        ended_ = ended_ || (peer_ >= 0 && got == 0);
        return heard_;
    }
    /// Whether the other side has ended its direction.
    bool hasEnded()
    {
        heard();
        return ended_;
    }
    void shutdownWrite() { ::shutdown(peer_, SHUT_WR); }
    void close()
    {
        if (peer_ >= 0)
            ::close(std::exchange(peer_, -1));
    }
    /// Closes with a reset.
    void reset()
    {
        const linger atOnce{1, 0};
        ::setsockopt(peer_, SOL_SOCKET, SO_LINGER, &atOnce, sizeof atOnce);
        close();
    }

private:
    void listen()
    {
        // Nobody else on the machine gets the port while nobody listens.
        if (holder_ < 0)
            holder_ = bound();
        listener_ = bound();
        (void)::listen(listener_, 8);
    }
    /// A socket at the port; at a free one where there is none yet.
    int bound()
    {
        const int bound = ::socket(AF_INET, SOCK_STREAM | SOCK_NONBLOCK | SOCK_CLOEXEC, 0);
        const int reuse = 1;
        (void)::setsockopt(bound, SOL_SOCKET, SO_REUSEADDR, &reuse, sizeof reuse);
        sockaddr_in address{};
        address.sin_family = AF_INET;
        address.sin_port = htons(port_);
        address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
        socklen_t length = sizeof address;
        (void)::bind(bound, reinterpret_cast<const sockaddr*>(&address), length);
        (void)::getsockname(bound, reinterpret_cast<sockaddr*>(&address), &length);
        port_ = ntohs(address.sin_port);
        return bound;
    }

    int holder_ = -1;
    int listener_ = -1;
    int peer_ = -1;
    std::uint16_t port_ = 0;
    QByteArray heard_;
    bool ended_ = false;
};

} // namespace spotwell
