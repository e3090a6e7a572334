// SPDX-FileCopyrightText: 2026 the spotwell developers
// SPDX-License-Identifier: MIT

#include "tests/support/web/LoopbackIdentity.h"
#include "tests/tools/simulator/WebFixture.h"
#include "tools/spotwell-simulator/TlsSocket.h"

#include <QFile>
#include <QSslSocket>
#include <QTemporaryDir>

namespace spotwell::simulator
{
namespace
{

/// A service that speaks TLS, and a client that believes its certificate.
class WebTlsTest : public WebFixture
{
protected:
    WebTlsTest()
    {
        write(u"certificate.pem"_qs, loopbackCertificate);
        write(u"key.pem"_qs, loopbackKey);
    }
    void write(const QString& name, const QByteArray& text)
    {
        QFile file{path(name)};
        EXPECT_TRUE(file.open(QIODevice::WriteOnly));
        file.write(text);
    }
    [[nodiscard]] QString path(const QString& name) const { return folder_.filePath(name); }
    void servesTls(const QByteArray& text, ConnectionLimits limits = {})
    {
        auto identity = readTlsIdentity(path(u"certificate.pem"_qs), path(u"key.pem"_qs));
        ASSERT_TRUE(std::holds_alternative<QSslConfiguration>(identity));
        serves("service https\n" + text, limits, std::get<QSslConfiguration>(identity));
    }
    void connectsSecurely()
    {
        QSslConfiguration trusting = QSslConfiguration::defaultConfiguration();
        trusting.setCaCertificates({QSslCertificate{loopbackCertificate}});
        client_.setSslConfiguration(trusting);
        client_.connectToHostEncrypted(u"127.0.0.1"_qs, node_->port());
        EXPECT_TRUE(waitUntil([&] { return client_.isEncrypted(); }));
    }
    void hears(const QByteArray& expected)
    {
        waitUntil([&] { return client_.bytesAvailable() >= expected.size() || hasEnded(); });
        EXPECT_EQ(client_.read(expected.size()).toStdString(), expected.toStdString());
    }
    [[nodiscard]] bool hasEnded() const { return client_.state() == QAbstractSocket::UnconnectedState; }

    QTemporaryDir folder_;
    QSslSocket client_;
};

TEST_F(WebTlsTest, answersRequestsOnOneConnection)
{
    servesTls("expect request \"GET /a\"\nbody \"abc\"\n");
    connectsSecurely();
    for (int i = 0; i < 3; ++i) {
        client_.write(get("/a"));
        hears(ok(3) + "abc");
    }
    client_.disconnectFromHost();
    waitsFor(u"disconnect"_qs, 1);
    EXPECT_EQ(farewell(), u"client closed"_qs);
    EXPECT_EQ(failure(), QString{});
    EXPECT_EQ(events(u"sent"_qs).size(), 3U);
}

TEST_F(WebTlsTest, closesAndResets)
{
    servesTls("answer\nbody \"abc\"\nclose\nend\nanswer\nreset\nend\n");
    connectsSecurely();
    client_.write(get());
    hears(ok(3).chopped(2) + "Connection: close\r\n\r\nabc");
    EXPECT_TRUE(waitUntil([&] { return hasEnded(); }));
    EXPECT_EQ(client_.error(), QAbstractSocket::RemoteHostClosedError);
    waitsFor(u"disconnect"_qs, 1);
    EXPECT_EQ(farewell(), u"service closed"_qs);
    connectsSecurely();
    client_.write(get());
    EXPECT_TRUE(waitUntil([&] { return hasEnded(); }));
    waitsFor(u"disconnect"_qs, 2);
    EXPECT_EQ(farewell(), u"service reset"_qs);
}

TEST_F(WebTlsTest, sendsMuchWithoutHoarding)
{
    constexpr qint64 size = 5'000'000;
    servesTls("filler 5000000\n");
    connectsSecurely();
    client_.write(get());
    qint64 taken = 0;
    qsizetype most = 0;
    EXPECT_TRUE(waitUntil(
        [&] {
            taken += client_.readAll().size();
            if (!node_->connections().empty())
                most = std::max(most, node_->connections().front()->queued());
            return taken >= size + ok(size).size();
        },
        std::chrono::seconds{90}));
    EXPECT_EQ(taken, size + ok(size).size());
    // The records around the bytes are counted, too.
    EXPECT_LE(most, 2 * 65'536);
}

TEST_F(WebTlsTest, saysWhyTlsBroke)
{
    servesTls("body \"abc\"\n");
    ScriptedClient& plain = connects();
    plain.says(get());
    EXPECT_TRUE(waitUntil([&] { return plain.read(), plain.ended(); }));
    waitsFor(u"disconnect"_qs, 1);
    EXPECT_EQ(farewell(), u"client reset"_qs);
    EXPECT_FALSE(events(u"disconnect"_qs)[0][u"why"].toString().isEmpty());
    connectsSecurely();
    client_.write(get());
    hears(ok(3) + "abc");
}

TEST_F(WebTlsTest, saysWhatIsWrongWithTheFiles)
{
    const auto errorOf = [&](const QString& certificate, const QString& key) {
        const auto identity = readTlsIdentity(path(certificate), path(key));
        const auto* error = std::get_if<QString>(&identity);
        return error ? *error : QString{};
    };
    const QString certificate = u"certificate.pem"_qs;
    const QString key = u"key.pem"_qs;
    EXPECT_EQ(errorOf(certificate, key), QString{});
    EXPECT_EQ(errorOf(u"none"_qs, key), path(u"none: No such file or directory"_qs));
    EXPECT_EQ(errorOf(certificate, u"none"_qs), path(u"none: No such file or directory"_qs));
    EXPECT_EQ(errorOf(key, key), path(u"key.pem: no certificate in PEM format"_qs));
    EXPECT_EQ(errorOf(certificate, certificate), path(u"certificate.pem: no key in PEM format"_qs));
}

} // namespace
} // namespace spotwell::simulator
