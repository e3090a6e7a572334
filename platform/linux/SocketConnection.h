// SPDX-FileCopyrightText: 2026 the spotwell developers
// SPDX-License-Identifier: MIT

#pragma once

#include "platform/SocketStreams.h"
#include "platform/linux/HostResolver.h"

#include <QSocketNotifier>
#include <QTimer>

#include <list>
#include <memory>
#include <span>
#include <vector>

namespace spotwell
{

/// The TCP connection behind one stream pair: the look-up, the attempts, the socket and its events. Main
/// thread only.
class SocketConnection : public std::enable_shared_from_this<SocketConnection>
{
public:
    /// What the connection tells of one direction; null while that direction is not there or not open.
    struct Side {
        Stream* stream = nullptr;
        StreamDelegate* delegate = nullptr;
        StreamStatus status = StreamStatus::notOpen;
    };

    SocketConnection(std::shared_ptr<HostResolver> resolver, QString host, std::uint16_t port);
    ~SocketConnection();
    SocketConnection(const SocketConnection&) = delete;
    SocketConnection& operator=(const SocketConnection&) = delete;

    void open(Side& side);
    void closeInput();
    void closeOutput();

    std::ptrdiff_t read(std::span<std::byte> buffer);
    std::ptrdiff_t write(std::span<const char> bytes);
    [[nodiscard]] bool hasSpaceAvailable() const;
    void holdInput(bool hold);

    [[nodiscard]] const QString& error() const { return error_; }

    Side input;
    Side output;

private:
    struct Attempt {
        int fd = -1;
        std::unique_ptr<QSocketNotifier> notifier;
    };

    void lookedUp(const HostLookup& lookup);
    void tryNextAddress();
    void attemptReady(int fd);
    void attemptFailed(int error);
    void connected(int fd);
    void readable();
    void writable();
    void fail(const QString& description);
    void deliver(Side& side, StreamEvent event);
    void closeSocket();

    std::shared_ptr<HostResolver> resolver_;
    const QString host_;
    const std::uint16_t port_;
    bool started_ = false;
    bool inputHeld_ = false;
    std::vector<SocketAddress> addresses_;
    std::size_t nextAddress_ = 0;
    std::list<Attempt> attempts_;
    QTimer nextAttempt_;
    int fd_ = -1;
    std::unique_ptr<QSocketNotifier> readNotifier_;
    std::unique_ptr<QSocketNotifier> writeNotifier_;
    QString error_;
};

} // namespace spotwell
