// SPDX-FileCopyrightText: 2026 the spotwell developers
// SPDX-License-Identifier: MIT

#include "tests/integration/support/TlsFront.h"

#include "tests/support/web/LoopbackIdentity.h"

#include <QEventLoop>
#include <QHostAddress>
#include <QSocketNotifier>
#include <QSslCertificate>
#include <QSslConfiguration>
#include <QSslKey>
#include <QSslServer>
#include <QSslSocket>

#include <sys/eventfd.h>
#include <unistd.h>
#include <utility>

namespace spotwell
{

namespace
{

/// Until either side closes; that frees both.
void connectWithEachOther(QTcpSocket& one, QTcpSocket& other)
{
    for (auto [from, to] : {std::pair{&one, &other}, std::pair{&other, &one}}) {
        QObject::connect(from, &QTcpSocket::readyRead, to, [from, to] { to->write(from->readAll()); });
        QObject::connect(from, &QTcpSocket::disconnected, to, &QTcpSocket::disconnectFromHost);
        QObject::connect(from, &QTcpSocket::disconnected, from, &QObject::deleteLater);
    }
}

} // namespace

TlsFront::TlsFront(int listener, QByteArray certificate, std::uint16_t plainPort)
    : listener_(listener),
      certificate_(std::move(certificate)),
      plainPort_(plainPort),
      ending_(::eventfd(0, EFD_CLOEXEC)),
      thread_([this] { run(); })
{
}

TlsFront::~TlsFront()
{
    ::eventfd_write(ending_, 1);
    thread_.join();
    ::close(ending_);
}

void TlsFront::run()
{
    QEventLoop loop;
    QSocketNotifier notifier(ending_, QSocketNotifier::Read);
    QObject::connect(&notifier, &QSocketNotifier::activated, &loop, &QEventLoop::quit);

    QSslConfiguration configuration = QSslConfiguration::defaultConfiguration();
    configuration.setPrivateKey(QSslKey(loopbackKey, QSsl::Ec));
    configuration.setLocalCertificate(QSslCertificate(certificate_));
    QSslServer server;
    server.setSslConfiguration(configuration);
    QObject::connect(&server, &QSslServer::startedEncryptionHandshake, &loop, [this] { ++handshakes_; });
    QObject::connect(&server, &QTcpServer::pendingConnectionAvailable, &server, [&] {
        while (QTcpSocket* const outside = server.nextPendingConnection()) {
            auto* const inside = new QTcpSocket(&server);
            connectWithEachOther(*outside, *inside);
            inside->connectToHost(QHostAddress::LocalHost, plainPort_);
            inside->write(outside->readAll());
        }
    });
    server.setSocketDescriptor(listener_);
    loop.exec();
}

} // namespace spotwell
