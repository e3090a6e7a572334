// SPDX-FileCopyrightText: 2026 the spotwell developers
// SPDX-License-Identifier: MIT

#include "platform/linux/web/ServerConnections.h"

#include <QHostInfo>
#include <QUrl>

#include <algorithm>
#include <cstdlib>
#include <dirent.h>
#include <fcntl.h>
#include <linux/tcp.h>
#include <memory>
#include <netinet/in.h>
#include <sys/ioctl.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <unistd.h>

namespace spotwell
{

namespace
{

constexpr std::size_t mostServers = 64;

/// Zero where the kernel does not tell.
std::uint64_t bytesRead(int descriptor)
{
    tcp_info info{};
    socklen_t size = sizeof info;
    int unread = 0;
    if (::getsockopt(descriptor, IPPROTO_TCP, TCP_INFO, &info, &size) != 0 ||
        ::ioctl(descriptor, FIONREAD, &unread) != 0)
        return 0;
    const auto waiting = static_cast<std::uint64_t>(unread);
    return info.tcpi_bytes_received - std::min<std::uint64_t>(info.tcpi_bytes_received, waiting);
}

std::uint64_t inode(int descriptor)
{
    struct stat status {
    };
    return ::fstat(descriptor, &status) == 0 ? status.st_ino : 0;
}

} // namespace

ServerConnections::~ServerConnections()
{
    for (const auto& [lookUp, port] : lookUps_)
        QHostInfo::abortHostLookup(lookUp);
}

void ServerConnections::add(const QUrl& url)
{
    const auto port = static_cast<quint16>(url.port(url.scheme() == QLatin1String("https") ? 443 : 80));
    QHostAddress address;
    if (address.setAddress(url.host())) {
        remember({address, port});
        return;
    }
    // The client asks for the same name; one of both look-ups gets the other's answer.
    lookUps_[QHostInfo::lookupHost(url.host(), this, SLOT(rememberAddresses(QHostInfo)))] = port;
}

void ServerConnections::rememberAddresses(const QHostInfo& info)
{
    const auto lookUp = lookUps_.find(info.lookupId());
    if (lookUp == lookUps_.end())
        return;
    for (const QHostAddress& address : info.addresses())
        remember({address, lookUp->second});
    lookUps_.erase(lookUp);
}

void ServerConnections::remember(const Server& server)
{
    if (std::find(servers_.begin(), servers_.end(), server) != servers_.end())
        return;
    servers_.push_back(server);
    if (servers_.size() > mostServers)
        servers_.pop_front();
}

qint64 ServerConnections::countRead()
{
    std::map<std::uint64_t, std::uint64_t> now;
    std::uint64_t more = 0;
    forEach([&](int descriptor) {
        const std::uint64_t key = inode(descriptor);
        const auto before = read_.find(key);
        const std::uint64_t base = before == read_.end() ? 0 : before->second;
        const std::uint64_t total = std::max(base, bytesRead(descriptor));
        now[key] = total;
        more += total - base;
    });
    read_.swap(now);
    return static_cast<qint64>(more);
}

void ServerConnections::reset() const
{
    // Unlike shutdown() it also drops what has come and was not read yet, which the client would still read.
    forEach([](int descriptor) {
        const sockaddr nowhere{AF_UNSPEC, {}};
        (void)::connect(descriptor, &nowhere, sizeof nowhere);
    });
}

void ServerConnections::forEach(const std::function<void(int descriptor)>& visit) const
{
    const std::unique_ptr<DIR, int (*)(DIR*)> directory(::opendir("/proc/self/fd"), ::closedir);
    if (!directory)
        return;
    while (const dirent* const entry = ::readdir(directory.get())) {
        const int descriptor = std::atoi(entry->d_name);
        if (!isConnection(descriptor))
            continue;
        // The number can become another's at any time; a descriptor of our own stays what it is.
        const int own = ::fcntl(descriptor, F_DUPFD_CLOEXEC, 0);
        if (own < 0)
            continue;
        if (isConnection(own))
            visit(own);
        ::close(own);
    }
}

bool ServerConnections::isConnection(int descriptor) const
{
    int protocol = 0;
    socklen_t size = sizeof protocol;
    if (::getsockopt(descriptor, SOL_SOCKET, SO_PROTOCOL, &protocol, &size) != 0 || protocol != IPPROTO_TCP)
        return false;
    sockaddr_storage storage{};
    const auto* const generic = reinterpret_cast<const sockaddr*>(&storage);
    size = sizeof storage;
    if (::getpeername(descriptor, reinterpret_cast<sockaddr*>(&storage), &size) != 0)
        return false;
    const QHostAddress address(generic);
    const quint16 port =
        ntohs(storage.ss_family == AF_INET6 ? reinterpret_cast<const sockaddr_in6*>(generic)->sin6_port
                                            : reinterpret_cast<const sockaddr_in*>(generic)->sin_port);
    return std::any_of(servers_.begin(), servers_.end(), [&](const Server& server) {
        return server.second == port && server.first.isEqual(address, QHostAddress::ConvertV4MappedToIPv4);
    });
}

} // namespace spotwell
