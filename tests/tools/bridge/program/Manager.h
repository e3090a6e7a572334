// SPDX-FileCopyrightText: 2026 the spotwell developers
// SPDX-License-Identifier: MIT

#pragma once

#include <QTemporaryDir>
#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstring>
#include <poll.h>
#include <string>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>
#include <utility>

namespace spotwell::bridge
{

/// A service manager's ear.
class Manager
{
public:
    /// Listens at the address `at`, or else at a path of its own.
    explicit Manager(std::string at = {})
        : address_(at.empty() ? folder_.filePath(QStringLiteral("notify")).toStdString() : std::move(at))
    {
        const auto [address, length] = place();
        EXPECT_EQ(::bind(socket_, reinterpret_cast<const sockaddr*>(&address), length), 0);
    }
    ~Manager() { ::close(socket_); }
    Manager(const Manager&) = delete;
    Manager& operator=(const Manager&) = delete;

    [[nodiscard]] const std::string& address() const { return address_; }
    /// What it is told next; empty when nothing comes within `patience`.
    std::string next(int patience = 20'000)
    {
        pollfd entry{socket_, POLLIN, 0};
        std::array<char, 1000> bytes{};
        if (::poll(&entry, 1, patience) <= 0)
            return {};
        const ssize_t count = ::recv(socket_, bytes.data(), bytes.size(), 0);
        return {bytes.data(), static_cast<std::size_t>(std::max<ssize_t>(count, 0))};
    }
    /// Lets others tell it things until it can take no more. How many.
    int fill()
    {
        int count = 0;
        while (tellOnce())
            ++count;
        return count;
    }

private:
    [[nodiscard]] std::pair<sockaddr_un, socklen_t> place() const
    {
        sockaddr_un place{};
        place.sun_family = AF_UNIX;
        std::memcpy(place.sun_path, address_.data(), address_.size());
        const bool isAbstract = place.sun_path[0] == '@';
        if (isAbstract)
            place.sun_path[0] = '\0';
        const std::size_t length = offsetof(sockaddr_un, sun_path) + address_.size() + (isAbstract ? 0 : 1);
        return {place, static_cast<socklen_t>(length)};
    }
    /// With a socket of its own, whose own room is never what is missing.
    bool tellOnce()
    {
        const auto [address, length] = place();
        const int socket = ::socket(AF_UNIX, SOCK_DGRAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0);
        const ssize_t count =
            ::sendto(socket, "x", 1, 0, reinterpret_cast<const sockaddr*>(&address), length);
        ::close(socket);
        return count == 1;
    }

    QTemporaryDir folder_;
    const std::string address_;
    const int socket_ = ::socket(AF_UNIX, SOCK_DGRAM | SOCK_CLOEXEC, 0);
};

} // namespace spotwell::bridge
