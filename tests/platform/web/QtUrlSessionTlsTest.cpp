// SPDX-FileCopyrightText: 2026 the spotwell developers
// SPDX-License-Identifier: MIT

#include "tests/support/web/LoopbackIdentity.h"
#include "tests/support/web/UrlTransfers.h"

#include <QEventLoop>
#include <QSocketNotifier>
#include <QSslCertificate>
#include <QSslConfiguration>
#include <QSslKey>
#include <QSslServer>
#include <QSslSocket>
#include <gtest/gtest.h>

#include <cstdlib>
#include <thread>

namespace spotwell
{

namespace
{

using namespace Qt::StringLiterals;

/// An https server that gives every request the same answer and proves to be 127.0.0.1 by a certificate of
/// its own.
class LoopbackHttpsServer
{
public:
    explicit LoopbackHttpsServer(QByteArray answer) : answer_(std::move(answer)), thread_([this] { run(); })
    {
        started_.wait();
    }
    ~LoopbackHttpsServer()
    {
        wakeUp_.wake();
        thread_.join();
    }
    LoopbackHttpsServer(const LoopbackHttpsServer&) = delete;
    LoopbackHttpsServer& operator=(const LoopbackHttpsServer&) = delete;
    [[nodiscard]] QString url() const { return u"https://127.0.0.1:%1/"_s.arg(port_); }

private:
    void run()
    {
        QEventLoop loop;
        QSslServer server;
        QSslConfiguration configuration = QSslConfiguration::defaultConfiguration();
        configuration.setPrivateKey(QSslKey(loopbackKey, QSsl::Ec));
        configuration.setLocalCertificate(QSslCertificate(loopbackCertificate));
        server.setSslConfiguration(configuration);
        QObject::connect(&server, &QTcpServer::pendingConnectionAvailable, &server, [&] {
            while (QTcpSocket* const socket = server.nextPendingConnection()) {
                QObject::connect(socket, &QTcpSocket::readyRead, socket, [this, socket] {
                    if (socket->readAll().endsWith("\r\n\r\n"))
                        socket->write(answer_);
                });
            }
        });
        QSocketNotifier notifier(wakeUp_.descriptor(), QSocketNotifier::Read);
        QObject::connect(&notifier, &QSocketNotifier::activated, &loop, &QEventLoop::quit);
        server.listen(QHostAddress::LocalHost);
        port_ = server.serverPort();
        started_.open();
        loop.exec();
    }

    const QByteArray answer_;
    quint16 port_ = 0;
    Gate started_;
    WakeUp wakeUp_;
    std::thread thread_;
};

/// Lets the process trust the servers of these tests as long as it lives.
class TrustInLoopback
{
public:
    TrustInLoopback() : before_(QSslConfiguration::defaultConfiguration())
    {
        QSslConfiguration trusting = before_;
        trusting.addCaCertificate(QSslCertificate(loopbackCertificate));
        QSslConfiguration::setDefaultConfiguration(trusting);
    }
    ~TrustInLoopback() { QSslConfiguration::setDefaultConfiguration(before_); }
    TrustInLoopback(const TrustInLoopback&) = delete;
    TrustInLoopback& operator=(const TrustInLoopback&) = delete;

private:
    const QSslConfiguration before_;
};

TEST(QtUrlSessionOverTls, RefusesAServerForWhichNobodyVouches)
{
    LoopbackHttpsServer server("HTTP/1.1 200 OK\r\nContent-Length: 4\r\n\r\nbody");
    expectSomeError(get(server.url()));
}

TEST(QtUrlSessionOverTls, ReadsFromATrustedServer)
{
    const TrustInLoopback trust;
    LoopbackHttpsServer server("HTTP/1.1 200 OK\r\nContent-Length: 4\r\n\r\nbody");
    expectAnswer(get(server.url()), 200, "body");
}

TEST(QtUrlSessionOverTls, FollowsNoRedirectionToPlainHttp)
{
    const TrustInLoopback trust;
    LoopbackHttpServer plain(answering("200 OK", "body"));
    LoopbackHttpsServer server(
        "HTTP/1.1 302 Found\r\nContent-Length: 0\r\nLocation: " + plain.url().toLatin1() + "\r\n\r\n");
    expectSomeError(get(server.url()));
    EXPECT_TRUE(plain.heads().empty());
}

TEST(QtUrlSessionOverTls, IsReachedByARedirectionFromPlainHttp)
{
    const TrustInLoopback trust;
    LoopbackHttpsServer server("HTTP/1.1 200 OK\r\nContent-Length: 4\r\n\r\nbody");
    LoopbackHttpServer plain(
        answering("301 Moved Permanently", "", "Location: " + server.url().toStdString() + "\r\n"));
    expectAnswer(get(plain.url()), 200, "body");
}

TEST(QtUrlSessionOverTls, EndsAHeadThatDoesNotEnd)
{
    const TrustInLoopback trust;
    LoopbackHttpsServer server("HTTP/1.1 200 OK\r\nServer: " + QByteArray(2'000'000, 'x'));
    expectError(get(server.url(), patient(), {.unseen = 1'000'000}),
                u"The server sends too much that is no answer."_s);
}

TEST(QtUrlSession, AsksTheSystemsProxy)
{
    LoopbackHttpServer proxy(answering("200 OK", "by proxy"));
    ::setenv("http_proxy", proxy.url({}).toUtf8().constData(), 1);
    const UrlResult result = get(u"http://spots.invalid/all"_s);
    ::unsetenv("http_proxy");
    expectAnswer(result, 200, "by proxy");
    ASSERT_EQ(proxy.heads().size(), 1U);
    EXPECT_TRUE(proxy.heads().front().starts_with("GET http://spots.invalid/all HTTP/1.1\r\n"));
}

} // namespace

} // namespace spotwell
