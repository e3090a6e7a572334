// SPDX-FileCopyrightText: 2026 the spotwell developers
// SPDX-License-Identifier: MIT

#pragma once

#include "cluster/ClusterHost.h"
#include "cluster/LineAssembly.h"
#include "platform/Log.h"
#include "platform/Queues.h"
#include "platform/SocketStreams.h"
#include "platform/TextConverter.h"
#include "platform/Time.h"

#include <QString>

#include <array>
#include <atomic>
#include <cstdint>
#include <memory>
#include <mutex>

namespace spotwell
{

/// The port number in the text of the port field: its leading integer's low 32 bits, 23 when they are 0.
[[nodiscard]] std::uint32_t clusterPort(const QString& text);

/// The one connection to a DX cluster node: plain TCP, telnet in name only.
///
/// Everything runs on the main thread but the treatment of received lines, which the buffer queue does. At
/// most a few reads wait there; beyond that the node is slowed by TCP.
class ClusterSession final : public StreamDelegate, public LoginLine
{
public:
    ClusterSession(ClusterHost& host, SocketStreams& sockets, MainQueue& mainQueue, const Clock& clock,
                   const TextConverter& converter, Log& log);

    /// Connects to the host and port of the fields; what comes of it arrives as stream events.
    void openTelnetConnection();
    /// Says goodbye to the node, closes and drops both streams.
    void closeTelnetConnection();
    /// Writes `text` in UTF-8, up to its first NUL. Lost without a word while there is no connection or no
    /// space.
    void sendTelnet(const QString& text) override;
    void handleEvent(Stream& stream, int eventCode) override;

    [[nodiscard]] bool promptsAreArmed() const override { return connectionJustOpenned; }
    void setLoggedIn() override { loggedIn = true; }

    /// The node of the current connection; empty before the first. From any thread.
    [[nodiscard]] QString telnetHostName() const;
    /// Whether there is a connection, or one is being made: both of its streams exist.
    [[nodiscard]] bool hasStreams() const { return iStream && oStream; }
    /// Whether the login was sent on the current connection.
    [[nodiscard]] bool isLoggedIn() const { return loggedIn; }
    /// The bytes read on the current connection, as a 32-bit number.
    [[nodiscard]] std::int32_t bytesReceived() const { return bytesReceivedOnThisConnection; }
    /// When the streams of the current connection were made; the distant past before the first.
    [[nodiscard]] TimePoint sessionStartupTime() const { return _sessionStartupTime; }
    /// When the last read succeeded or the last open was tried; the distant past before that.
    [[nodiscard]] TimePoint lastRecievedMessageTime() const { return _lastRecievedMessageTime; }

private:
    /// The most reads that wait for their treatment.
    static constexpr int mostWaitingReads = 16;

    void readAvailableBytes();
    void handleError(const Stream& stream);
    void treatLines(const QString& text);
    void readTreated();

    ClusterHost& host_;
    SocketStreams& sockets_;
    MainQueue& mainQueue_;
    const Clock& clock_;
    const TextConverter& converter_;
    Log& log_;
    LineAssembly lineAssembly_;

    mutable std::mutex hostNameMutex_; // guards _telnetHostName
    QString _telnetHostName;
    TimePoint _sessionStartupTime = distantPast;
    TimePoint _lastRecievedMessageTime = distantPast;
    std::array<std::byte, 16384> readBuffer;
    std::unique_ptr<InputStream> iStream;
    std::unique_ptr<OutputStream> oStream;
    /// Once set, set for the life of the process. Read on the buffer queue.
    std::atomic<bool> connectionJustOpenned = false;
    bool loggedIn = false;
    std::int32_t bytesReceivedOnThisConnection = 0;
    std::int32_t _bufferOverRunCount = 0;
    /// Counted down on the buffer queue.
    std::atomic<int> waitingReads_ = 0;
};

} // namespace spotwell
