// SPDX-FileCopyrightText: 2026 the spotwell developers
// SPDX-License-Identifier: MIT

#pragma once

#include "tools/spotwell-simulator/PeerSocket.h"

#include <QSslConfiguration>
#include <QSslSocket>
#include <QString>

#include <variant>

namespace spotwell::simulator
{

/// Reads a certificate, those that vouch for it behind it, and its key, both as PEM files: what a server
/// speaks TLS with, or what is wrong.
std::variant<QSslConfiguration, QString> readTlsIdentity(const QString& certificate, const QString& key);

/// A TCP connection on which this side speaks TLS as the server.
class TlsSocket final : public PeerSocket
{
public:
    /// Takes over the connected socket `descriptor`.
    TlsSocket(int descriptor, const QSslConfiguration& identity);
    ~TlsSocket() override;
    TlsSocket(const TlsSocket&) = delete;
    TlsSocket& operator=(const TlsSocket&) = delete;

    void start(std::function<void()> activity) override;

    void queue(QByteArrayView bytes) override { outgoing_.append(bytes); }
    void flush() override;
    [[nodiscard]] qsizetype queued() const override;
    [[nodiscard]] qint64 written() const override { return written_; }
    [[nodiscard]] Moment lastWrite() const override { return lastWrite_; }
    [[nodiscard]] bool allArrived() const override { return queued() == 0; }

    QByteArray takeReceived() override;
    [[nodiscard]] Moment lastRead() const override { return lastRead_; }
    [[nodiscard]] bool clientLeft() const override { return clientLeft_; }
    [[nodiscard]] bool broken() const override { return broken_; }
    [[nodiscard]] QString trouble() const override { return trouble_; }

    /// TLS has no half of a connection: it ends as a whole once what waits has left.
    void shutdownWrite() override;
    void close() override;
    void reset() override;
    [[nodiscard]] bool isOpen() const override { return isOpen_; }

private:
    void endConnection();
    void noteError(QAbstractSocket::SocketError error);
    void leave();

    const int descriptor_;
    QSslSocket socket_;
    std::function<void()> activity_;
    QByteArray outgoing_;
    qint64 written_ = 0;
    Moment lastWrite_;
    Moment lastRead_;
    bool isOpen_ = true;
    bool clientLeft_ = false;
    bool broken_ = false;
    QString trouble_;
};

} // namespace spotwell::simulator
