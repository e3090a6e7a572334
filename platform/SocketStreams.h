// SPDX-FileCopyrightText: 2026 the spotwell developers
// SPDX-License-Identifier: MIT

#pragma once

#include <QString>

#include <cstddef>
#include <cstdint>
#include <memory>
#include <span>

namespace spotwell
{

/// What can happen on a stream. The numbers are those written to the diagnostics log.
enum class StreamEvent : int {
    none = 0,
    openCompleted = 1,
    hasBytesAvailable = 2,
    hasSpaceAvailable = 4,
    errorOccurred = 8,
    endEncountered = 16,
};

/// Where a stream stands in its life. The numbers are those written to the diagnostics log.
enum class StreamStatus : int {
    notOpen = 0,
    opening = 1,
    open = 2,
    reading = 3,
    writing = 4,
    atEnd = 5,
    closed = 6,
    error = 7,
};

class Stream;

/// Receives the events of the streams it is set on, on the main thread.
class StreamDelegate
{
public:
    virtual ~StreamDelegate() = default;
    /// `eventCode` is a StreamEvent as a number; codes unknown to this version may come. The handler may
    /// close and destroy either stream of the pair.
    virtual void handleEvent(Stream& stream, int eventCode) = 0;
};

/// One direction of a TCP connection. Main thread only.
class Stream
{
public:
    virtual ~Stream() = default;
    /// Events go to `delegate` from now on; null for nobody.
    virtual void setDelegate(StreamDelegate* delegate) = 0;
    /// Begins to connect, and to deliver events. The connection is made once for the pair.
    virtual void open() = 0;
    /// Ends this direction and the delivery of its events. Closing both directions closes the connection;
    /// what was written before still leaves.
    virtual void close() = 0;
    [[nodiscard]] virtual StreamStatus status() const = 0;
    /// The description of the stream's error; null (QString::isNull) while there is none.
    [[nodiscard]] virtual QString errorDescription() const = 0;
};

/// The receiving direction.
///
/// hasBytesAvailable is level-triggered: it comes again as long as bytes wait. Everything the peer sent
/// before it closed is offered before endEncountered.
class InputStream : public Stream
{
public:
    /// Reads at most `buffer.size()` bytes without waiting. The count read; 0 at the peer's end; negative on
    /// an error or when nothing is there.
    virtual std::ptrdiff_t read(std::span<std::byte> buffer) = 0;
    /// Stops (true) or resumes (false) the delivery of hasBytesAvailable and of what follows it. While held,
    /// the peer is slowed by TCP itself.
    virtual void holdEvents(bool hold) = 0;
};

/// The sending direction.
class OutputStream : public Stream
{
public:
    /// False while not yet connected, and while bytes written before fill what the system takes.
    [[nodiscard]] virtual bool hasSpaceAvailable() const = 0;
    /// Writes without waiting. The count taken, which may be less than asked; negative on an error.
    virtual std::ptrdiff_t write(std::span<const char> bytes) = 0;
};

/// Both directions of one connection; either may be absent when it could not be made.
struct StreamPair {
    std::unique_ptr<InputStream> input;
    std::unique_ptr<OutputStream> output;
};

/// Makes stream pairs. Main thread only.
class SocketStreams
{
public:
    virtual ~SocketStreams() = default;
    /// A pair for `port` on `host` (a name or an address). Nothing is resolved or connected before open(); a
    /// port above 65535 gives no streams.
    virtual StreamPair createPairWithSocketToHost(const QString& host, std::uint32_t port) = 0;
};

} // namespace spotwell
