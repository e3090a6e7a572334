// SPDX-FileCopyrightText: 2026 the spotwell developers
// SPDX-License-Identifier: MIT

#pragma once

#include <QObject>
#include <QString>

#include <cstdint>
#include <functional>
#include <memory>
#include <mutex>
#include <sys/socket.h>
#include <vector>

namespace spotwell
{

/// A socket address with its length.
struct SocketAddress {
    sockaddr_storage storage{};
    socklen_t length = 0;

    [[nodiscard]] const sockaddr* get() const { return reinterpret_cast<const sockaddr*>(&storage); }
};

/// The outcome of a look-up: at least one address, or the error's description.
struct HostLookup {
    std::vector<SocketAddress> addresses;
    QString error;
};

/// Resolves host names off the main thread.
///
/// A look-up runs on a detached thread, because nothing can interrupt the system's resolver and the program
/// must be able to end while a name server stays silent.
class HostResolver
{
public:
    using Handler = std::function<void(const HostLookup&)>;

    HostResolver();
    ~HostResolver();
    HostResolver(const HostResolver&) = delete;
    HostResolver& operator=(const HostResolver&) = delete;

    /// The most look-ups at a time. Silent name servers hold each for a while, however often it is asked
    /// again.
    static constexpr int mostLookUps = 16;

    /// Looks `host` up for TCP on `port`; `handler` runs on the main thread, never inside this call, unless
    /// `context` has gone by then.
    void lookUp(const QString& host, std::uint16_t port, std::weak_ptr<void> context, Handler handler);

private:
    struct Mailbox;
    std::shared_ptr<Mailbox> mailbox_;
};

/// The addresses of `host` by the system's resolver. Waits for it; any thread.
[[nodiscard]] HostLookup resolveHost(const QString& host, std::uint16_t port);

} // namespace spotwell
