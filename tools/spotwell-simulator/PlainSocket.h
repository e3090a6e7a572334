// SPDX-FileCopyrightText: 2026 the spotwell developers
// SPDX-License-Identifier: MIT

#pragma once

#include "tools/spotwell-simulator/PeerSocket.h"

#include <QSocketNotifier>

#include <memory>

namespace spotwell::simulator
{

/// A TCP connection as it is. Qt's own socket class hides what a scenario needs: half-closing, resetting and
/// knowing what has left.
class PlainSocket final : public PeerSocket
{
public:
    /// Takes over the connected, non-blocking socket `descriptor`.
    explicit PlainSocket(int descriptor) : descriptor_(descriptor) {}
    ~PlainSocket() override;
    PlainSocket(const PlainSocket&) = delete;
    PlainSocket& operator=(const PlainSocket&) = delete;

    void start(std::function<void()> activity) override;

    void queue(QByteArrayView bytes) override { outgoing_.append(bytes); }
    void flush() override;
    [[nodiscard]] qsizetype queued() const override { return outgoing_.size(); }
    [[nodiscard]] qint64 written() const override { return written_; }
    [[nodiscard]] Moment lastWrite() const override { return lastWrite_; }
    [[nodiscard]] bool allArrived() const override;

    QByteArray takeReceived() override;
    [[nodiscard]] Moment lastRead() const override { return lastRead_; }
    [[nodiscard]] bool clientLeft() const override { return clientLeft_; }
    [[nodiscard]] bool broken() const override { return broken_; }

    void shutdownWrite() override;
    void close() override;
    void reset() override;
    [[nodiscard]] bool isOpen() const override { return descriptor_ >= 0; }

private:
    void endConnection();
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
