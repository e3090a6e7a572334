#pragma once

#include "tools/spotwell-simulator/Report.h"

#include <QByteArray>
#include <QByteArrayView>
#include <QSocketNotifier>

#include <functional>
#include <memory>

namespace spotwell::simulator
{

/// The node's end of one TCP connection. Qt's own socket class hides what a scenario needs: half-closing,
/// resetting and knowing what has left. Never blocks; belongs to the thread of its event loop.
class NodeSocket
{
public:
    /// Takes over the connected, non-blocking socket `descriptor`. `activity` is called when something came,
    /// when the client left and when waiting bytes could leave; it may close the socket but not destroy it.
    NodeSocket(int descriptor, std::function<void()> activity);
    ~NodeSocket();
    NodeSocket(const NodeSocket&) = delete;
    NodeSocket& operator=(const NodeSocket&) = delete;

    /// Begins to listen to the client and to send packets without delay.
    void start();

    /// Puts bytes into the queue; flush() sends them. The caller bounds the queue.
    void queue(QByteArrayView bytes) { outgoing_.append(bytes); }
    /// Hands over to the system as much of the queue as it takes now.
    void flush();
    [[nodiscard]] qsizetype queued() const { return outgoing_.size(); }
    /// Bytes handed over in all.
    [[nodiscard]] qint64 written() const { return written_; }
    /// When bytes were last handed over; the time of start() while none were.
    [[nodiscard]] Moment lastWrite() const { return lastWrite_; }
    /// Whether the client's system has confirmed everything that was handed over.
    [[nodiscard]] bool allArrived() const;

    /// Takes what has come, with the moment it was read.
    QByteArray takeReceived();
    [[nodiscard]] Moment lastRead() const { return lastRead_; }
    /// Whether the client ended its side or the connection broke. What was queued is lost then.
    [[nodiscard]] bool clientLeft() const { return clientLeft_; }
    /// Whether it ended with an error, a reset for the most part.
    [[nodiscard]] bool broken() const { return broken_; }

    /// Ends the sending direction.
    void shutdownWrite();
    /// Ends the connection. What was handed over still leaves, if the client's bytes were all read.
    void close();
    /// Ends the connection with a reset; what has not left is lost.
    void reset();
    [[nodiscard]] bool isOpen() const { return descriptor_ >= 0; }

private:
    void readyToRead();
    void readyToWrite();
    void leave(bool broken);

    int descriptor_;
    std::function<void()> activity_;
    std::unique_ptr<QSocketNotifier> reading_;
    std::unique_ptr<QSocketNotifier> writing_;
    QByteArray outgoing_;
    QByteArray received_;
    qint64 written_ = 0;
    Moment lastWrite_;
    Moment lastRead_;
    bool clientLeft_ = false;
    bool broken_ = false;
};

} // namespace spotwell::simulator
