// SPDX-FileCopyrightText: 2026 the spotwell developers
// SPDX-License-Identifier: MIT

#include "platform/linux/web/UrlTransfer.h"
#include "tests/support/web/UrlTransfers.h"

#include <QCoreApplication>
#include <gtest/gtest.h>

#include <atomic>
#include <cstdlib>
#include <limits>

namespace spotwell
{

namespace
{

using namespace std::chrono_literals;
using namespace Qt::StringLiterals;
using Connection = LoopbackHttpServer::Connection;
using SteadyClock = std::chrono::steady_clock;

bool hasLine(const std::string& head, const std::string& line)
{
    return head.find("\r\n" + line + "\r\n") != std::string::npos;
}

TEST(QtUrlSession, SendsAPlainGet)
{
    LoopbackHttpServer server(answering("200 OK", "body", "Set-Cookie: a=b\r\n"));
    Results results;
    QtUrlSession session(patient(), u"spotwell/1.2.3"_s);
    for (std::size_t i = 1; i <= 2; ++i) {
        session.dataTask(server.url(u"/spot/activator"_s), results.handler());
        expectAnswer(results.wait(i).back(), 200, "body");
    }
    ASSERT_EQ(server.heads().size(), 2U);
    for (const std::string& head : server.heads()) {
        EXPECT_EQ(head.substr(0, head.find("\r\n")), "GET /spot/activator HTTP/1.1");
        EXPECT_TRUE(hasLine(head, "User-Agent: spotwell/1.2.3")) << head;
        EXPECT_TRUE(hasLine(head, "Host: 127.0.0.1:" + std::to_string(server.port()))) << head;
        const std::size_t encodings = head.find("\r\nAccept-Encoding: ");
        ASSERT_NE(encodings, std::string::npos) << head;
        EXPECT_LT(head.find("gzip", encodings), head.find("\r\n", encodings + 2)) << head;
        EXPECT_EQ(head.find("Content-Length"), std::string::npos) << head;
        EXPECT_EQ(head.find("Cookie"), std::string::npos) << head;
        EXPECT_EQ(head.find("If-"), std::string::npos) << head;
        EXPECT_TRUE(hasLine(head, "Cache-Control: no-cache")) << head;
    }
}

TEST(QtUrlSession, LeavesCachingToTheProtocolUnlessTold)
{
    LoopbackHttpServer server(answering("200 OK", "body"));
    expectAnswer(get(server.url(), {}), 200, "body");
    EXPECT_EQ(server.heads().front().find("Cache-Control"), std::string::npos);
}

TEST(QtUrlSession, AsksAgainEachTime)
{
    std::atomic<int> count = 0;
    LoopbackHttpServer server([&count](Connection& connection, const std::string&) {
        connection.answer("200 OK", std::to_string(++count), "Cache-Control: max-age=3600\r\n");
    });
    Results results;
    QtUrlSession session(patient(), u"test"_s);
    session.dataTask(server.url(), results.handler());
    expectAnswer(results.wait(1).back(), 200, "1");
    session.dataTask(server.url(), results.handler());
    expectAnswer(results.wait(2).back(), 200, "2");
}

TEST(QtUrlSession, DecodesCompressedBodies)
{
    const QByteArray text = QByteArray("[{\"spotId\":1}]").repeated(10000);
    LoopbackHttpServer server(answering("200 OK", gzip(text), "Content-Encoding: gzip\r\n"));
    expectAnswer(get(server.url()), 200, text);
}

TEST(QtUrlSession, ReportsABrokenCompressedBody)
{
    std::string broken = gzip(QByteArray("text").repeated(1000));
    broken[12] = '\x7F';
    LoopbackHttpServer server(answering("200 OK", broken, "Content-Encoding: gzip\r\n"));
    const UrlResult result = get(server.url());
    expectSomeError(result);
    EXPECT_FALSE(result.error->endsWith(u": "_s)) << result.error->toStdString();
}

TEST(UrlTransfer, LeavesOutTheColonOfAReasonThatIsNotGiven)
{
    EXPECT_EQ(whole(u"Decompression failed: "_s), u"Decompression failed"_s);
    EXPECT_EQ(whole(u"Host not found: a: b"_s), u"Host not found: a: b"_s);
    EXPECT_EQ(whole(QString()), QString());
}

TEST(QtUrlSession, ReadsChunkedBodies)
{
    LoopbackHttpServer server([](Connection& connection, const std::string&) {
        connection.send(
            "HTTP/1.1 200 OK\r\nTransfer-Encoding: chunked\r\n\r\n3\r\nabc\r\n2\r\nde\r\n0\r\n\r\n");
    });
    expectAnswer(get(server.url()), 200, "abcde");
}

TEST(QtUrlSession, ReadsBodiesUpToTheEndOfTheConnection)
{
    LoopbackHttpServer server([](Connection& connection, const std::string&) {
        connection.send("HTTP/1.0 200 OK\r\n\r\nall there is");
        connection.close();
    });
    expectAnswer(get(server.url()), 200, "all there is");
}

TEST(QtUrlSession, FollowsRedirections)
{
    LoopbackHttpServer server([](Connection& connection, const std::string& head) {
        if (head.starts_with("GET /new "))
            connection.answer("200 OK", "found");
        else
            connection.answer("302 Found", "moved", "Location: /new\r\n");
    });
    expectAnswer(get(server.url(u"/old"_s)), 200, "found");
}

TEST(QtUrlSession, EndsARedirectionInACircle)
{
    LoopbackHttpServer server(answering("302 Found", "", "Location: /\r\n"));
    expectSomeError(get(server.url()));
}

TEST(QtUrlSession, FollowsNoRedirectionToAFile)
{
    LoopbackHttpServer server(answering("302 Found", "", "Location: file:///proc/self/comm\r\n"));
    expectSomeError(get(server.url()));
}

TEST(QtUrlSession, TakesAnErrorStatusForAnAnswer)
{
    struct Row {
        const char* status;
        int code;
    };
    for (const Row& row : {Row{"400 Bad Request", 400}, Row{"401 Unauthorized", 401},
                           Row{"403 Forbidden", 403}, Row{"404 Not Found", 404}, Row{"407 Proxy", 407},
                           Row{"405 Method Not Allowed", 405}, Row{"409 Conflict", 409}, Row{"410 Gone", 410},
                           Row{"418 Teapot", 418}, Row{"429 Too Many Requests", 429},
                           Row{"500 Internal Server Error", 500}, Row{"501 Not Implemented", 501},
                           Row{"502 Bad Gateway", 502}, Row{"503 Service Unavailable", 503}}) {
        LoopbackHttpServer server(answering(row.status, "<html>sorry</html>"));
        expectAnswer(get(server.url()), row.code, "<html>sorry</html>");
    }
}

TEST(QtUrlSession, GivesEmptyBodies)
{
    for (const char* status : {"200 OK", "500 Internal Server Error"}) {
        LoopbackHttpServer server(answering(status, ""));
        expectAnswer(get(server.url()), std::atoi(status), "");
    }
    for (const char* status : {"204 No Content", "304 Not Modified"}) {
        for (const char* headers : {"", "Content-Length: 100\r\n"}) {
            LoopbackHttpServer server([=](Connection& connection, const std::string&) {
                connection.send(std::string("HTTP/1.1 ") + status + "\r\n" + headers + "\r\n");
            });
            expectAnswer(get(server.url()), std::atoi(status), "");
        }
    }
}

TEST(IsHttpStatusError, TellsStatusesFromTransportFailures)
{
    EXPECT_TRUE(isHttpStatusError(QNetworkReply::ContentNotFoundError, 404));
    EXPECT_TRUE(isHttpStatusError(QNetworkReply::UnknownServerError, 502));
    EXPECT_TRUE(isHttpStatusError(QNetworkReply::UnknownContentError, 400));
    EXPECT_FALSE(isHttpStatusError(QNetworkReply::UnknownContentError, 399));
    EXPECT_FALSE(isHttpStatusError(QNetworkReply::UnknownContentError, 200));
    EXPECT_FALSE(isHttpStatusError(QNetworkReply::RemoteHostClosedError, 500));
    EXPECT_FALSE(isHttpStatusError(QNetworkReply::InsecureRedirectError, 404));
    EXPECT_FALSE(isHttpStatusError(QNetworkReply::OperationCanceledError, 503));
    EXPECT_FALSE(isHttpStatusError(QNetworkReply::ContentNotFoundError, 0));
}

TEST(TimerInterval, IsWholeMillisecondsAndNeverNone)
{
    EXPECT_EQ(timerInterval(Seconds{30.0}), 30000);
    EXPECT_EQ(timerInterval(Seconds{0.0001}), 1);
    EXPECT_EQ(timerInterval(Seconds{0.0}), 1);
    EXPECT_EQ(timerInterval(Seconds{-5.0}), 1);
    EXPECT_EQ(timerInterval(Seconds{604800.0}), 604800000);
    EXPECT_EQ(timerInterval(Seconds{1e12}), std::numeric_limits<int>::max());
}

TEST(QtUrlSession, ReportsWhatIsNoWebAddress)
{
    for (const QString& url : {u""_s, u"nonsense"_s, u"http://"_s, u"file:///proc/self/comm"_s, u"qrc:/x"_s,
                               u"data:,x"_s, u"ftp://127.0.0.1/"_s, u"http://127.0.0.1:99999/"_s})
        expectError(get(url), u"\"%1\" is no web address."_s.arg(url));
}

TEST(QtUrlSession, ReportsARefusedConnection)
{
    QString url;
    {
        LoopbackHttpServer gone(answering("200 OK", ""));
        url = gone.url();
    }
    expectError(get(url), u"Connection refused"_s);
}

TEST(QtUrlSession, ReportsAReset)
{
    LoopbackHttpServer server([](Connection& connection, const std::string&) {
        connection.send("HTTP/1.1 200 OK\r\nContent-Length: 100\r\n\r\nsome");
        connection.close(true);
    });
    expectSomeError(get(server.url()));
}

TEST(QtUrlSession, ReportsAClosedConnection)
{
    LoopbackHttpServer server([](Connection& connection, const std::string&) { connection.close(); });
    expectSomeError(get(server.url()));
}

TEST(QtUrlSession, ReportsATruncatedBody)
{
    for (const char* status : {"200 OK", "500 Internal Server Error"}) {
        LoopbackHttpServer server([status](Connection& connection, const std::string&) {
            connection.send(std::string("HTTP/1.1 ") + status + "\r\nContent-Length: 100\r\n\r\nsome");
            connection.close();
        });
        SCOPED_TRACE(status);
        expectError(get(server.url()), u"Connection closed"_s);
    }
}

TEST(QtUrlSession, EndsWithATruncatedChunkedBody)
{
    LoopbackHttpServer server([](Connection& connection, const std::string&) {
        connection.send("HTTP/1.1 200 OK\r\nTransfer-Encoding: chunked\r\n\r\n64\r\nabc");
        connection.close();
    });
    const UrlResult result = get(server.url());
    // The client library tells such an end from a regular one only when it sees the close before the bytes.
    if (!result.error)
        expectAnswer(result, 200, "abc");
    else
        expectSomeError(result);
}

TEST(QtUrlSession, ReportsWhatIsNoHttp)
{
    LoopbackHttpServer server([](Connection& connection, const std::string&) {
        connection.send("login: \r\n\r\n");
        connection.close();
    });
    expectSomeError(get(server.url()));
}

TEST(QtUrlSession, EndsASilentTransferAfterTheRequestTimeout)
{
    LoopbackHttpServer server([](Connection& connection, const std::string&) { connection.waitForClose(); });
    const auto start = SteadyClock::now();
    expectError(get(server.url(), {{}, Seconds{0.25}, Seconds{60}}), u"No data came for 0.25 seconds."_s);
    EXPECT_GE(SteadyClock::now() - start, 230ms);
}

TEST(QtUrlSession, EndsATransferThatFallsSilentAfterTheRequestTimeout)
{
    LoopbackHttpServer server([](Connection& connection, const std::string&) {
        connection.send("HTTP/1.1 200 OK\r\nContent-Length: 100\r\n\r\nsome");
        connection.waitForClose();
    });
    expectError(get(server.url(), {{}, Seconds{0.25}, Seconds{60}}), u"No data came for 0.25 seconds."_s);
}

/// Sends a byte every 20 ms until the client has enough.
void drip(Connection& connection)
{
    while (connection.send("x") && !connection.waitForClose(20)) {
    }
}

TEST(QtUrlSession, EndsADrippingHeadAfterTheRequestTimeout)
{
    LoopbackHttpServer server([](Connection& connection, const std::string&) {
        connection.send("HTTP/1.1 200 OK\r\nServer: ");
        drip(connection);
    });
    expectError(get(server.url(), {{}, Seconds{0.5}, Seconds{60}}), u"No data came for 0.5 seconds."_s);
}

TEST(QtUrlSession, EndsADrippingTransferAfterTheResourceTimeoutOnly)
{
    LoopbackHttpServer server([](Connection& connection, const std::string&) {
        connection.send("HTTP/1.1 200 OK\r\nContent-Length: 1000000\r\n\r\n");
        drip(connection);
    });
    const auto start = SteadyClock::now();
    expectError(get(server.url(), {{}, Seconds{2.5}, Seconds{3}}),
                u"The transfer did not end within 3 seconds."_s);
    EXPECT_GE(SteadyClock::now() - start, 2990ms);
}

TEST(QtUrlSession, NamesTheTimeoutsItIsGiven)
{
    LoopbackHttpServer server([](Connection& connection, const std::string&) { connection.waitForClose(); });
    expectError(get(server.url(), {{}, Seconds{60}, Seconds{0.2}}),
                u"The transfer did not end within 0.2 seconds."_s);
}

} // namespace

} // namespace spotwell

int main(int argc, char** argv)
{
    // The machine's own proxy must not come between the tests and their servers.
    for (const char* name : {"http_proxy", "https_proxy", "all_proxy", "no_proxy", "HTTP_PROXY",
                             "HTTPS_PROXY", "ALL_PROXY", "NO_PROXY"})
        ::unsetenv(name);
    testing::InitGoogleTest(&argc, argv);
    const QCoreApplication application(argc, argv);
    return RUN_ALL_TESTS();
}
