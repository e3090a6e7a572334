// SPDX-FileCopyrightText: 2026 the spotwell developers
// SPDX-License-Identifier: MIT

#include "tests/integration/support/PrivateNetwork.h"

#include "tests/integration/support/FeedIdentities.h"
#include "tests/support/bus/ChildProcess.h"

#include <QDir>
#include <QFile>

#include <array>
#include <cstring>
#include <poll.h>
#include <stdexcept>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

namespace spotwell
{

namespace
{

void writeFile(const QString& path, const QByteArray& text)
{
    QFile file(path);
    if (!file.open(QIODevice::WriteOnly) || file.write(text) != text.size())
        throw std::runtime_error("cannot write " + path.toStdString());
}

int listenAt(const QByteArray& path)
{
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    if (path.size() >= static_cast<qsizetype>(sizeof address.sun_path))
        throw std::runtime_error("too long a path");
    std::memcpy(address.sun_path, path.constData(), static_cast<std::size_t>(path.size()));
    const int listener = ::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0);
    if (::bind(listener, reinterpret_cast<const sockaddr*>(&address), sizeof address) != 0 ||
        ::listen(listener, 1) != 0) {
        ::close(listener);
        throw std::runtime_error("no socket");
    }
    return listener;
}

bool hasSomething(int descriptor)
{
    constexpr int milliseconds = 20'000;
    pollfd wait{descriptor, POLLIN, 0};
    return ::poll(&wait, 1, milliseconds) == 1;
}

} // namespace

std::optional<QString> PrivateNetwork::refusal()
{
    ChildProcess launcher({PRIVATE_NETWORK});
    const auto reason = launcher.readLine();
    return launcher.wait() == 0 ? std::nullopt
                                : std::optional(QString::fromStdString(reason.value_or(std::string())));
}

PrivateNetwork::PrivateNetwork(const QString& directory, const QStringList& hosts) : directory_(directory)
{
    QDir().mkpath(directory_ + QStringLiteral("/certs"));
    know(hosts);
    writeFile(directory_ + QStringLiteral("/nsswitch.conf"), "passwd: files\ngroup: files\nhosts: files\n");
    writeFile(directory_ + QStringLiteral("/certs/") + QString::fromLatin1(authorityFileName),
              authorityCertificate);
    receiver_ = listenAt(QFile::encodeName(directory_ + QStringLiteral("/listeners")));
}

PrivateNetwork::~PrivateNetwork()
{
    ::close(receiver_);
}

void PrivateNetwork::know(const QStringList& hosts) const
{
    QByteArray names = "127.0.0.1 localhost\n";
    for (const QString& host : hosts)
        names += "127.0.0.1 " + host.toLatin1() + '\n';
    writeFile(directory_ + QStringLiteral("/hosts"), names);
}

QStringList PrivateNetwork::launcher() const
{
    return {QStringLiteral(PRIVATE_NETWORK), directory_};
}

PrivateNetwork::Listeners PrivateNetwork::takeListeners(bool served) const
{
    const int connection =
        hasSomething(receiver_) ? ::accept4(receiver_, nullptr, nullptr, SOCK_CLOEXEC) : -1;
    std::array<int, 3> listeners{};
    char content = 0;
    iovec bytes{&content, 1};
    alignas(cmsghdr) std::array<char, CMSG_SPACE(sizeof listeners)> control{};
    msghdr message{};
    message.msg_iov = &bytes;
    message.msg_iovlen = 1;
    message.msg_control = control.data();
    message.msg_controllen = control.size();
    if (connection < 0 || ::recvmsg(connection, &message, MSG_CMSG_CLOEXEC) != 1)
        throw std::runtime_error("nobody comes to the private network");
    const cmsghdr* const rights = CMSG_FIRSTHDR(&message);
    if (rights == nullptr || rights->cmsg_len != CMSG_LEN(sizeof listeners))
        throw std::runtime_error("no listeners");
    std::memcpy(listeners.data(), CMSG_DATA(rights), sizeof listeners);
    if (!served) {
        // A socket that listens stops to do so, and can begin again.
        for (const int listener : {listeners[0], listeners[1]})
            ::shutdown(listener, SHUT_RDWR);
    }
    ::close(connection);
    return {listeners[0], listeners[1], listeners[2]};
}

} // namespace spotwell
