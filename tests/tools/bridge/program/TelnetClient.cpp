// SPDX-FileCopyrightText: 2026 the spotwell developers
// SPDX-License-Identifier: MIT

#include "tests/tools/bridge/program/TelnetClient.h"

#include <arpa/inet.h>
#include <array>
#include <netinet/in.h>
#include <poll.h>
#include <stdexcept>
#include <sys/socket.h>
#include <unistd.h>

namespace spotwell::bridge
{

TelnetClient::TelnetClient(std::uint16_t port, int receiveBuffer)
    : socket_(::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0))
{
    if (receiveBuffer > 0)
        (void)::setsockopt(socket_, SOL_SOCKET, SO_RCVBUF, &receiveBuffer, sizeof receiveBuffer);
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    address.sin_port = htons(port);
    if (::connect(socket_, reinterpret_cast<const sockaddr*>(&address), sizeof address) != 0)
        throw std::runtime_error("cannot connect");
}

TelnetClient::~TelnetClient()
{
    ::close(socket_);
}

void TelnetClient::say(const std::string& line)
{
    const std::string bytes = line + "\r\n";
    (void)::send(socket_, bytes.data(), bytes.size(), MSG_NOSIGNAL);
}

bool TelnetClient::logIn()
{
    if (!hears("login: "))
        return false;
    say("N0CALL");
    return hears("spotwell >\r\n");
}

bool TelnetClient::hears(const std::string& text)
{
    std::size_t from = 0;
    while (heard_.find(text, from) == std::string::npos) {
        // What was searched holds the beginning of it at most.
        from = heard_.size() < text.size() ? 0 : heard_.size() - text.size() + 1;
        if (hearMore() != Step::more)
            return false;
    }
    return true;
}

bool TelnetClient::hearsExactly(std::string_view text)
{
    while (heard_.size() < text.size()) {
        if (hearMore() != Step::more)
            return false;
    }
    const bool same = heard_.compare(0, text.size(), text) == 0;
    heard_.erase(0, text.size());
    return same;
}

bool TelnetClient::hearsEnd()
{
    Step step = Step::more;
    while (step == Step::more)
        step = hearMore();
    return step == Step::end;
}

TelnetClient::Step TelnetClient::hearMore()
{
    constexpr int patience = 20'000;
    pollfd entry{socket_, POLLIN, 0};
    if (::poll(&entry, 1, patience) <= 0)
        return Step::nothing;
    std::array<char, 65536> bytes;
    const ssize_t count = ::recv(socket_, bytes.data(), bytes.size(), 0);
    if (count <= 0)
        return Step::end;
    heard_.append(bytes.data(), static_cast<std::size_t>(count));
    return Step::more;
}

} // namespace spotwell::bridge
