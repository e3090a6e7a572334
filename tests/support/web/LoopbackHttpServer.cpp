// SPDX-FileCopyrightText: 2026 the spotwell developers
// SPDX-License-Identifier: MIT

#include "tests/support/web/LoopbackHttpServer.h"

#include <arpa/inet.h>
#include <netinet/in.h>
#include <poll.h>
#include <stdexcept>
#include <sys/socket.h>
#include <unistd.h>

namespace spotwell
{

namespace
{

int listenOnLoopback()
{
    const int listener = ::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    if (::bind(listener, reinterpret_cast<const sockaddr*>(&address), sizeof address) != 0 ||
        ::listen(listener, 64) != 0) {
        ::close(listener);
        throw std::runtime_error("no loopback server");
    }
    return listener;
}

int portOf(int listener)
{
    sockaddr_in address{};
    socklen_t size = sizeof address;
    if (::getsockname(listener, reinterpret_cast<sockaddr*>(&address), &size) != 0)
        throw std::runtime_error("no listening socket");
    return ntohs(address.sin_port);
}

} // namespace

std::string LoopbackHttpServer::Connection::readHead()
{
    std::string head;
    char byte = 0;
    while (!closed_ && ::recv(descriptor_, &byte, 1, 0) == 1) {
        head += byte;
        if (head.ends_with("\r\n\r\n"))
            return head;
    }
    return {};
}

bool LoopbackHttpServer::Connection::send(std::string_view bytes)
{
    while (!bytes.empty()) {
        const ssize_t sent = closed_ ? -1 : ::send(descriptor_, bytes.data(), bytes.size(), MSG_NOSIGNAL);
        if (sent < 0)
            return false;
        bytes.remove_prefix(static_cast<std::size_t>(sent));
    }
    return true;
}

bool LoopbackHttpServer::Connection::answer(const std::string& status, std::string_view body,
                                            const std::string& headers)
{
    return send("HTTP/1.1 " + status + "\r\nContent-Length: " + std::to_string(body.size()) + "\r\n" +
                headers + "\r\n") &&
           send(body);
}

void LoopbackHttpServer::Connection::close(bool hard)
{
    if (hard) {
        const linger now{1, 0};
        ::setsockopt(descriptor_, SOL_SOCKET, SO_LINGER, &now, sizeof now);
        // Unconnects the socket with a reset; the descriptor itself is closed at the end.
        const sockaddr nowhere{AF_UNSPEC, {}};
        ::connect(descriptor_, &nowhere, sizeof nowhere);
    } else {
        ::shutdown(descriptor_, SHUT_RDWR);
    }
    closed_ = true;
}

bool LoopbackHttpServer::Connection::waitForClose(int milliseconds)
{
    pollfd wait{descriptor_, POLLIN | POLLRDHUP, 0};
    return ::poll(&wait, 1, milliseconds) > 0;
}

LoopbackHttpServer::LoopbackHttpServer(Handler handler)
    : LoopbackHttpServer(std::move(handler), listenOnLoopback())
{
}

LoopbackHttpServer::LoopbackHttpServer(Handler handler, int listener)
    : handler_(std::move(handler)),
      listener_(listener),
      port_(portOf(listener)),
      acceptor_([this] { acceptAll(); })
{
}

LoopbackHttpServer::~LoopbackHttpServer()
{
    {
        const std::lock_guard lock(mutex_);
        ending_ = true;
        for (const Connection& connection : connections_)
            ::shutdown(connection.descriptor_, SHUT_RDWR);
    }
    ::shutdown(listener_, SHUT_RDWR);
    acceptor_.join();
    for (std::thread& thread : threads_)
        thread.join();
    for (const Connection& connection : connections_)
        ::close(connection.descriptor_);
    ::close(listener_);
}

QString LoopbackHttpServer::url(const QString& path) const
{
    return QStringLiteral("http://127.0.0.1:%1%2").arg(port_).arg(path);
}

std::vector<std::string> LoopbackHttpServer::heads() const
{
    const std::lock_guard lock(mutex_);
    return heads_;
}

void LoopbackHttpServer::acceptAll()
{
    while (true) {
        const int descriptor = ::accept4(listener_, nullptr, nullptr, SOCK_CLOEXEC);
        if (descriptor < 0)
            return;
        const std::lock_guard lock(mutex_);
        if (ending_) {
            ::close(descriptor);
            return;
        }
        Connection& connection = connections_.emplace_back(descriptor);
        threads_.emplace_back([this, &connection] { serve(connection); });
    }
}

void LoopbackHttpServer::serve(Connection& connection)
{
    for (std::string head = connection.readHead(); !head.empty(); head = connection.readHead()) {
        {
            const std::lock_guard lock(mutex_);
            heads_.push_back(head);
        }
        handler_(connection, head);
    }
    // A connection that the test closed is closed for the client at once, others when the server ends.
    if (!connection.closed_)
        ::shutdown(connection.descriptor_, SHUT_RDWR);
}

} // namespace spotwell
