// SPDX-FileCopyrightText: 2026 the spotwell developers
// SPDX-License-Identifier: MIT

#include "tools/spotwell-bridge/ServiceManager.h"

#include <cerrno>
#include <cstddef>
#include <cstring>
#include <optional>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>
#include <utility>

namespace spotwell::bridge
{

namespace
{

using namespace std::chrono_literals;

constexpr auto resendInterval = 1s;

struct UnixAddress {
    sockaddr_un address{};
    socklen_t length = 0;
};

/// Absent for what is no address of a Unix socket.
std::optional<UnixAddress> readAddress(const QByteArray& text)
{
    const bool isAbstract = text.startsWith('@');
    UnixAddress result;
    // A path ends with a zero, which must fit too; an abstract name begins with one.
    if (text.size() < 2 || !(isAbstract || text.startsWith('/')) ||
        static_cast<std::size_t>(text.size()) >= sizeof result.address.sun_path)
        return std::nullopt;
    result.address.sun_family = AF_UNIX;
    std::memcpy(result.address.sun_path, text.constData(), static_cast<std::size_t>(text.size()));
    if (isAbstract)
        result.address.sun_path[0] = '\0';
    result.length = static_cast<socklen_t>(offsetof(sockaddr_un, sun_path) +
                                           static_cast<std::size_t>(text.size()) + (isAbstract ? 0 : 1));
    return result;
}

} // namespace

ServiceManager::ServiceManager(QByteArray address) : address_(std::move(address)), again_([this] { ready(); })
{
}

void ServiceManager::status(const QString& text)
{
    send("STATUS=" + text.toUtf8());
}

void ServiceManager::ready()
{
    if (!send("READY=1"))
        again_.set(Alarm::Clock::now() + resendInterval);
}

void ServiceManager::stopping()
{
    send("STOPPING=1\nSTATUS=Ending");
}

/// False when it may be taken another time; where there is nobody it never will.
bool ServiceManager::send(const QByteArray& state) const
{
    const auto to = readAddress(address_);
    if (!to)
        return true;
    const int socket = ::socket(AF_UNIX, SOCK_DGRAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0);
    if (socket < 0)
        return false;
    const ssize_t count = ::sendto(socket, state.constData(), static_cast<std::size_t>(state.size()),
                                   MSG_NOSIGNAL, reinterpret_cast<const sockaddr*>(&to->address), to->length);
    const bool isBehind = count < 0 && (errno == EAGAIN || errno == ENOBUFS);
    ::close(socket);
    return !isBehind;
}

} // namespace spotwell::bridge
