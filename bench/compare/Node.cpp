// SPDX-FileCopyrightText: 2026 the spotwell developers
// SPDX-License-Identifier: MIT

#include "bench/compare/Node.h"

#include <QFile>
#include <QList>

#include <algorithm>
#include <arpa/inet.h>
#include <array>
#include <cerrno>
#include <linux/sockios.h>
#include <netinet/in.h>
#include <netinet/tcp.h>
#include <poll.h>
#include <stdexcept>
#include <string_view>
#include <sys/ioctl.h>
#include <sys/resource.h>
#include <sys/socket.h>
#include <system_error>
#include <thread>
#include <unistd.h>

namespace spotwell::bench
{

namespace
{

using namespace std::chrono_literals;
using SteadyClock = std::chrono::steady_clock;

constexpr simulator::SpotFormat stamped{simulator::SpotFormat::shortest,
                                        simulator::SpotFormat::Comment::stamped};
constexpr int bytesOfLine = simulator::SpotFormat::shortest + 2;
// One who is woken for each line cannot send more.
constexpr auto shortestPause = 1ms;

/// While it lives, the calling thread is served before others, where the system allows it: the node stands
/// for another machine, which a busy program here does not hold up.
class Precedence
{
public:
    Precedence() { static_cast<void>(::setpriority(PRIO_PROCESS, 0, first)); }
    ~Precedence() { static_cast<void>(::setpriority(PRIO_PROCESS, 0, 0)); }
    Precedence(const Precedence&) = delete;
    Precedence& operator=(const Precedence&) = delete;

private:
    static constexpr int first = -20;
};

void demand(bool fine, const char* what)
{
    if (!fine)
        throw std::system_error(errno, std::generic_category(), what);
}

void say(int descriptor, std::string_view text)
{
    demand(::send(descriptor, text.data(), text.size(), MSG_NOSIGNAL) == static_cast<ssize_t>(text.size()),
           "send");
}

} // namespace

Node::Node() : listener_(::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0))
{
    demand(listener_ >= 0, "socket");
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    socklen_t size = sizeof address;
    auto* const generic = reinterpret_cast<sockaddr*>(&address);
    demand(::bind(listener_, generic, size) == 0, "bind");
    demand(::listen(listener_, 1) == 0, "listen");
    demand(::getsockname(listener_, generic, &size) == 0, "port");
    port_ = ntohs(address.sin_port);
}

Node::~Node()
{
    ::close(client_);
    ::close(listener_);
}

void Node::await(int descriptor, std::chrono::seconds limit, const char* what) const
{
    pollfd entry{descriptor, POLLIN, 0};
    const auto milliseconds = std::chrono::duration_cast<std::chrono::milliseconds>(limit).count();
    if (::poll(&entry, 1, static_cast<int>(milliseconds)) != 1)
        throw std::runtime_error(std::string("the node waits in vain for ") + what);
}

void Node::welcome(std::chrono::seconds limit)
{
    await(listener_, limit, "a connection");
    sockaddr_in address{};
    socklen_t size = sizeof address;
    client_ = ::accept4(listener_, reinterpret_cast<sockaddr*>(&address), &size, SOCK_CLOEXEC);
    demand(client_ >= 0, "accept");
    clientPort_ = ntohs(address.sin_port);
    constexpr int on = 1;
    demand(::setsockopt(client_, IPPROTO_TCP, TCP_NODELAY, &on, sizeof on) == 0, "no delay");
    say(client_, "login: ");
}

void Node::logIn(std::chrono::seconds limit)
{
    std::string heard;
    while (heard.find('\n') == std::string::npos) {
        await(client_, limit, "a callsign");
        std::array<char, 1024> bytes{};
        const ssize_t count = ::recv(client_, bytes.data(), bytes.size(), 0);
        if (count <= 0)
            throw std::runtime_error("the client left before it logged in");
        heard.append(bytes.data(), static_cast<std::size_t>(count));
    }
    say(client_, "\r\nGood luck in the contest.\r\n");
}

Sending Node::send(int rate, int count, int mostSeconds, const std::function<void()>& look)
{
    const Precedence precedence;
    Sending sending;
    const std::int64_t mostUnread = std::int64_t{rate} * bytesOfLine * mostSeconds;
    const auto begin = SteadyClock::now();
    auto nextLook = begin;
    const auto dueAt = [&](int line) {
        return begin + std::chrono::nanoseconds(std::int64_t{1'000'000'000} * line / rate);
    };
    while (sending.sent < count && !sending.clientLeft && !sending.fellBehind) {
        QByteArray packet;
        while (sending.sent < count && dueAt(sending.sent) <= SteadyClock::now()) {
            packet += lines_.next(stamped, std::chrono::time_point_cast<std::chrono::microseconds>(
                                               std::chrono::system_clock::now()));
            ++sending.sent;
        }
        const ssize_t taken = ::send(client_, packet.constData(), static_cast<std::size_t>(packet.size()),
                                     MSG_NOSIGNAL | MSG_DONTWAIT);
        sending.clientLeft = taken < 0 && errno != EAGAIN;
        sending.fellBehind = !sending.clientLeft && taken != packet.size();
        if (const auto now = SteadyClock::now(); now >= nextLook) {
            nextLook = now + 100ms;
            look();
            sending.fellBehind = sending.fellBehind || unread() > mostUnread;
        }
        std::this_thread::sleep_until(
            std::max(dueAt(sending.sent), rate > 1000 ? SteadyClock::now() + shortestPause : begin));
    }
    char byte = 0;
    sending.clientLeft =
        sending.clientLeft || ::recv(client_, &byte, sizeof byte, MSG_PEEK | MSG_DONTWAIT) == 0;
    return sending;
}

std::int64_t Node::unread() const
{
    int notSent = 0; // not what is unacknowledged: that has mostly arrived
    demand(::ioctl(client_, SIOCOUTQNSD, &notSent) == 0, "what was not sent");
    QFile table(QStringLiteral("/proc/net/tcp"));
    if (!table.open(QIODevice::ReadOnly))
        throw std::runtime_error("no table of sockets");
    return notSent + unreadIn(table.readAll(), clientPort_, port_).value_or(0);
}

std::optional<std::int64_t> unreadIn(const QByteArray& table, std::uint16_t port, std::uint16_t peerPort)
{
    // "sl local_address rem_address st tx_queue:rx_queue ...", addresses and numbers hexadecimal.
    constexpr int local = 1;
    constexpr int peer = 2;
    constexpr int queues = 4;
    const auto behindColon = [](const QByteArray& field) {
        return field.mid(field.indexOf(':') + 1).toLongLong(nullptr, 16);
    };
    for (const QByteArray& line : table.split('\n')) {
        const QList<QByteArray> fields = line.simplified().split(' ');
        if (fields.size() > queues && behindColon(fields[local]) == port &&
            behindColon(fields[peer]) == peerPort)
            return behindColon(fields[queues]);
    }
    return std::nullopt;
}

} // namespace spotwell::bench
