// SPDX-FileCopyrightText: 2026 the spotwell developers
// SPDX-License-Identifier: MIT

#include "bench/bridge/TelnetClients.h"

#include <algorithm>
#include <arpa/inet.h>
#include <array>
#include <cerrno>
#include <netinet/in.h>
#include <poll.h>
#include <stdexcept>
#include <string_view>
#include <sys/epoll.h>
#include <sys/socket.h>
#include <system_error>
#include <unistd.h>
#include <utility>

namespace spotwell::bench
{

namespace
{

using namespace std::chrono_literals;

constexpr int loginMilliseconds = 20'000;

void demand(int result, const char* what)
{
    if (result < 0)
        throw std::system_error(errno, std::generic_category(), what);
}

/// Hears until `text` has come.
void awaitText(int descriptor, std::string_view text)
{
    std::string heard;
    while (heard.find(text) == std::string::npos) {
        pollfd entry{descriptor, POLLIN, 0};
        std::array<char, 1024> bytes{};
        const ssize_t count =
            ::poll(&entry, 1, loginMilliseconds) == 1 ? ::recv(descriptor, bytes.data(), bytes.size(), 0) : 0;
        if (count <= 0)
            throw std::runtime_error("a telnet client cannot log in");
        heard.append(bytes.data(), static_cast<std::size_t>(count));
    }
}

/// In whole milliseconds, rounded up: one who is woken too early would only wait again.
int millisecondsTo(SpotSource::Clock::time_point until)
{
    const auto rest = std::chrono::ceil<std::chrono::milliseconds>(until - SpotSource::Clock::now());
    return static_cast<int>(std::max<std::int64_t>(0, rest.count()));
}

} // namespace

Socket::Socket(std::uint16_t port, int receiveBuffer)
    : descriptor_(::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0))
{
    demand(descriptor_, "socket");
    if (receiveBuffer != 0)
        demand(::setsockopt(descriptor_, SOL_SOCKET, SO_RCVBUF, &receiveBuffer, sizeof receiveBuffer),
               "receive buffer");
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    address.sin_port = htons(port);
    demand(::connect(descriptor_, reinterpret_cast<const sockaddr*>(&address), sizeof address), "connect");
}

Socket::~Socket()
{
    if (descriptor_ >= 0)
        ::close(descriptor_);
}

Socket::Socket(Socket&& other) noexcept : descriptor_(std::exchange(other.descriptor_, -1)) {}

void Socket::logIn() const
{
    constexpr std::string_view callsign = "N0CALL\r\n";
    awaitText(descriptor_, "login: ");
    demand(static_cast<int>(::send(descriptor_, callsign.data(), callsign.size(), MSG_NOSIGNAL)), "login");
    awaitText(descriptor_, " >\r\n");
}

TelnetClients::TelnetClients(const SpotSource& source, std::uint16_t port, std::size_t count)
    : source_(source), epoll_(::epoll_create1(EPOLL_CLOEXEC))
{
    demand(epoll_, "epoll");
    clients_.reserve(count);
    for (std::size_t i = 0; i < count; ++i) {
        clients_.push_back({Socket(port)});
        clients_.back().socket.logIn();
        epoll_event event{EPOLLIN, {.u64 = i}};
        demand(::epoll_ctl(epoll_, EPOLL_CTL_ADD, clients_.back().socket.descriptor(), &event), "epoll");
    }
}

TelnetClients::~TelnetClients()
{
    ::close(epoll_);
}

void TelnetClients::hear(SpotSource::Clock::time_point until)
{
    std::array<epoll_event, 128> events;
    const int count =
        ::epoll_wait(epoll_, events.data(), static_cast<int>(events.size()), millisecondsTo(until));
    for (int i = 0; i < count; ++i)
        hear(clients_[events[static_cast<std::size_t>(i)].data.u64]);
}

bool TelnetClients::hearAll(std::chrono::milliseconds patience)
{
    while (failed_ == 0 && heardByAll_ < source_.count()) {
        const std::uint64_t before = bytes_;
        hear(SpotSource::Clock::now() + patience);
        if (bytes_ == before)
            return false;
    }
    return failed_ == 0;
}

void TelnetClients::hear(Client& client)
{
    std::array<char, 64 * 1024> bytes;
    const ssize_t count = ::recv(client.socket.descriptor(), bytes.data(), bytes.size(), MSG_DONTWAIT);
    if (count < 0 && (errno == EAGAIN || errno == EINTR))
        return;
    const std::string_view heard(bytes.data(), static_cast<std::size_t>(std::max<ssize_t>(0, count)));
    if (heard.empty() || source_.text().substr(client.position, heard.size()) != heard) {
        fail(client);
        return;
    }
    bytes_ += heard.size();
    client.position += heard.size();
    noteLines(client);
}

void TelnetClients::noteLines(Client& client)
{
    const auto now = SpotSource::Clock::now();
    for (; client.lines < source_.count() && source_.endOf(client.lines) <= client.position; ++client.lines) {
        const double latency =
            std::chrono::duration<double, std::micro>(now - source_.postedAt(client.lines)).count();
        if (client.lines == heard_.size()) {
            heard_.push_back(0);
            latencies_.push_back({latency, latency});
        }
        latencies_[client.lines].last = latency;
        // Everyone hears the lines in their order.
        if (++heard_[client.lines] == clients_.size())
            ++heardByAll_;
    }
}

void TelnetClients::fail(const Client& client)
{
    ++failed_;
    (void)::epoll_ctl(epoll_, EPOLL_CTL_DEL, client.socket.descriptor(), nullptr);
}

} // namespace spotwell::bench
