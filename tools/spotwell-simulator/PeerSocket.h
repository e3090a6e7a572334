// SPDX-FileCopyrightText: 2026 the spotwell developers
// SPDX-License-Identifier: MIT

#pragma once

#include "tools/spotwell-simulator/Report.h"

#include <QByteArray>
#include <QByteArrayView>

#include <functional>

namespace spotwell::simulator
{

/// This side's end of one connection. Never blocks; belongs to the thread of its event loop.
class PeerSocket
{
public:
    PeerSocket() = default;
    virtual ~PeerSocket() = default;
    PeerSocket(const PeerSocket&) = delete;
    PeerSocket& operator=(const PeerSocket&) = delete;

    /// Begins to listen to the client and to send packets without delay. `activity` is called when something
    /// came, when the client left and when waiting bytes could leave; it may close the socket but not destroy
    /// it.
    virtual void start(std::function<void()> activity) = 0;

    /// Puts bytes into the queue; flush() sends them. The caller bounds the queue.
    virtual void queue(QByteArrayView bytes) = 0;
    /// Hands over to the system as much of the queue as it takes now.
    virtual void flush() = 0;
    [[nodiscard]] virtual qsizetype queued() const = 0;
    /// Bytes handed over in all.
    [[nodiscard]] virtual qint64 written() const = 0;
    /// When bytes were last handed over; the time of start() while none were.
    [[nodiscard]] virtual Moment lastWrite() const = 0;
    /// Whether the client's system has confirmed everything that was handed over.
    [[nodiscard]] virtual bool allArrived() const = 0;

    /// Takes what has come, with the moment it was read.
    virtual QByteArray takeReceived() = 0;
    [[nodiscard]] virtual Moment lastRead() const = 0;
    /// Whether the client ended its side or the connection broke. What was queued is lost then.
    [[nodiscard]] virtual bool clientLeft() const = 0;
    /// Whether it ended with an error, a reset for the most part.
    [[nodiscard]] virtual bool broken() const = 0;
    /// That error in words, where there is more to say than that it broke; null otherwise.
    [[nodiscard]] virtual QString trouble() const { return {}; }

    /// Ends the sending direction.
    virtual void shutdownWrite() = 0;
    /// Ends the connection. What was handed over still leaves, if the client's bytes were all read.
    virtual void close() = 0;
    /// Ends the connection with a reset; what has not left is lost.
    virtual void reset() = 0;
    [[nodiscard]] virtual bool isOpen() const = 0;
};

} // namespace spotwell::simulator
