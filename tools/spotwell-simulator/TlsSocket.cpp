// SPDX-FileCopyrightText: 2026 the spotwell developers
// SPDX-License-Identifier: MIT

#include "tools/spotwell-simulator/TlsSocket.h"

#include <QFile>
#include <QSslCertificate>
#include <QSslKey>

#include <sys/socket.h>
#include <unistd.h>
#include <utility>

namespace spotwell::simulator
{
namespace
{

constexpr qint64 mostUnreadPlainBytes = 1 << 16;

QSslKey readKey(const QByteArray& pem)
{
    for (const QSsl::KeyAlgorithm algorithm : {QSsl::Ec, QSsl::Rsa}) {
        QSslKey key{pem, algorithm};
        if (!key.isNull())
            return key;
    }
    return {};
}

} // namespace

std::variant<QSslConfiguration, QString> readTlsIdentity(const QString& certificate, const QString& key)
{
    QByteArray contents[2];
    for (const int index : {0, 1}) {
        QFile file{index == 0 ? certificate : key};
        if (!file.open(QIODevice::ReadOnly))
            return QStringLiteral("%1: %2").arg(file.fileName(), file.errorString());
        contents[index] = file.read(qint64{1} << 20);
    }
    const QList<QSslCertificate> chain = QSslCertificate::fromData(contents[0], QSsl::Pem);
    if (chain.isEmpty())
        return QStringLiteral("%1: no certificate in PEM format").arg(certificate);
    const QSslKey privateKey = readKey(contents[1]);
    if (privateKey.isNull())
        return QStringLiteral("%1: no key in PEM format").arg(key);
    QSslConfiguration identity = QSslConfiguration::defaultConfiguration();
    identity.setLocalCertificateChain(chain);
    identity.setPrivateKey(privateKey);
    identity.setPeerVerifyMode(QSslSocket::VerifyNone);
    return identity;
}

TlsSocket::TlsSocket(int descriptor, const QSslConfiguration& identity) : descriptor_(descriptor)
{
    socket_.setSslConfiguration(identity);
    socket_.setReadBufferSize(mostUnreadPlainBytes);
}

TlsSocket::~TlsSocket()
{
    socket_.disconnect();
    endConnection();
}

void TlsSocket::start(std::function<void()> activity)
{
    activity_ = std::move(activity);
    lastWrite_ = Moment::clock::now();
    lastRead_ = lastWrite_;
    // The socket reports from inside of its own calls, so what it reports is looked at later.
    const auto wakes = [this](auto signal) {
        QObject::connect(
            &socket_, signal, &socket_, [this] { activity_(); }, Qt::QueuedConnection);
    };
    wakes(&QSslSocket::encrypted);
    wakes(&QSslSocket::readyRead);
    wakes(&QSslSocket::encryptedBytesWritten);
    QObject::connect(&socket_, &QSslSocket::errorOccurred, &socket_,
                     [this](QAbstractSocket::SocketError error) { noteError(error); });
    QObject::connect(
        &socket_, &QSslSocket::disconnected, &socket_, [this] { leave(); }, Qt::QueuedConnection);
    if (!socket_.setSocketDescriptor(descriptor_)) {
        ::close(descriptor_);
        noteError(socket_.error());
        clientLeft_ = true;
        return;
    }
    socket_.setSocketOption(QAbstractSocket::LowDelayOption, 1);
    socket_.startServerEncryption();
}

void TlsSocket::flush()
{
    if (!isOpen_ || clientLeft_ || !socket_.isEncrypted())
        return;
    if (!outgoing_.isEmpty()) {
        written_ += socket_.write(outgoing_);
        lastWrite_ = Moment::clock::now();
        outgoing_.clear();
    }
    socket_.flush();
}

qsizetype TlsSocket::queued() const
{
    return clientLeft_ ? 0 : outgoing_.size() + socket_.bytesToWrite() + socket_.encryptedBytesToWrite();
}

QByteArray TlsSocket::takeReceived()
{
    QByteArray bytes = isOpen_ && socket_.isOpen() ? socket_.readAll() : QByteArray{};
    if (!bytes.isEmpty())
        lastRead_ = Moment::clock::now();
    return bytes;
}

void TlsSocket::noteError(QAbstractSocket::SocketError error)
{
    if (error == QAbstractSocket::RemoteHostClosedError)
        return;
    broken_ = true;
    trouble_ = socket_.errorString();
}

void TlsSocket::leave()
{
    clientLeft_ = true;
    outgoing_.clear();
    activity_();
}

void TlsSocket::shutdownWrite()
{
    if (isOpen_)
        socket_.disconnectFromHost();
}

void TlsSocket::close()
{
    endConnection();
}

void TlsSocket::endConnection()
{
    if (!std::exchange(isOpen_, false))
        return;
    if (socket_.state() == QAbstractSocket::ConnectedState && socket_.isEncrypted())
        socket_.disconnectFromHost();
    socket_.abort();
}

void TlsSocket::reset()
{
    if (!isOpen_)
        return;
    const linger atOnce{1, 0};
    setsockopt(static_cast<int>(socket_.socketDescriptor()), SOL_SOCKET, SO_LINGER, &atOnce, sizeof atOnce);
    isOpen_ = false;
    socket_.abort();
}

} // namespace spotwell::simulator
