// SPDX-FileCopyrightText: 2026 the spotwell developers
// SPDX-License-Identifier: MIT

#include "tests/platform/web/FloodingServer.h"
#include "tests/support/WaitUntil.h"

#include <gtest/gtest.h>

#include <limits>
#include <string>

namespace spotwell
{

namespace
{

using namespace Qt::StringLiterals;
using Connection = LoopbackHttpServer::Connection;

const QString tooMuch = u"The server sends too much that is no answer."_s;

TEST(QtUrlSessionFlood, EndsWhenTooMuchWasRead)
{
    for (const Flood& flood : floods()) {
        SCOPED_TRACE(flood.name);
        FloodingServer server(flood);
        Results results;
        QtUrlSession session(patient(), u"test"_s, {.buffer = 16384, .unseen = 200'000});
        session.dataTask(server.url(), results.handler());
        expectError(results.wait(1).front(), tooMuch);
        EXPECT_TRUE(waitUntil([&] { return server.isRid(); }));
        // What the kernel has taken included, and as fast as a loopback connection can be.
        EXPECT_LT(server.sent(), 512 * 1024 * 1024);
        // The same client goes on working.
        session.dataTask(server.url(u"/"_s), results.handler());
        expectAnswer(results.wait(2).back(), 200, "body");
    }
}

TEST(QtUrlSessionFlood, EndsWithTheTimeoutAtTheLatest)
{
    for (const Flood& flood : floods()) {
        SCOPED_TRACE(flood.name);
        FloodingServer server(flood);
        Results results;
        QtUrlSession session({{}, Seconds{0.3}, Seconds{0.5}}, u"test"_s,
                             {.unseen = std::numeric_limits<qint64>::max() / 2});
        session.dataTask(server.url(), results.handler());
        expectSomeError(results.wait(1).front());
        // Qt's thread would otherwise read on for ever.
        EXPECT_TRUE(waitUntil([&] { return server.isRid(); }));
    }
}

TEST(QtUrlSessionFlood, HoldsUpNoOtherServer)
{
    for (const Flood& flood : floods()) {
        SCOPED_TRACE(flood.name);
        FloodingServer server(flood);
        LoopbackHttpServer other(answering("200 OK", "body"));
        Results results;
        QtUrlSession session(patient(), u"test"_s, {.unseen = std::numeric_limits<qint64>::max() / 2});
        session.dataTask(server.url(), results.handler(u"flood"_s));
        ASSERT_TRUE(waitUntil([&] { return server.floods(); }));
        for (std::size_t i = 1; i <= 3; ++i) {
            session.dataTask(other.url(), results.handler(u"other"_s));
            expectAnswer(results.wait(i).back(), 200, "body");
        }
        EXPECT_FALSE(server.isRid());
    }
}

TEST(QtUrlSessionFlood, IsNotWhatALargeHeadIs)
{
    LoopbackHttpServer server(answering("200 OK", "body", "Server: " + std::string(100'000, 'x') + "\r\n"));
    Results results;
    QtUrlSession session(patient(), u"test"_s, {.buffer = 16384, .unseen = 200'000});
    for (std::size_t i = 1; i <= 5; ++i) {
        session.dataTask(server.url(), results.handler());
        expectAnswer(results.wait(i).back(), 200, "body");
    }
}

TEST(QtUrlSessionFlood, IsNotWhatALargeBodyIs)
{
    // As long as the bytes are handed over, all the same how fast.
    const std::string body(10'000'000, 'x');
    const std::string packed = gzip(QByteArray::fromStdString(body));
    LoopbackHttpServer server([&](Connection& connection, const std::string& head) {
        if (head.starts_with("GET /packed ")) {
            connection.answer("200 OK", packed, "Content-Encoding: gzip\r\n");
            return;
        }
        connection.send("HTTP/1.1 200 OK\r\nContent-Length: " + std::to_string(body.size()) + "\r\n\r\n");
        for (std::size_t sent = 0; sent < body.size(); sent += 1'000'000) {
            connection.send(std::string_view(body).substr(sent, 1'000'000));
            connection.waitForClose(60);
        }
    });
    Results results;
    QtUrlSession session(patient(), u"test"_s, {.buffer = 16384, .unseen = 500'000});
    for (const QString& path : {u"/"_s, u"/packed"_s, u"/"_s})
        session.dataTask(server.url(path), results.handler());
    for (const UrlResult& result : results.wait(3))
        expectAnswer(result, 200, QByteArray::fromStdString(body));
}

TEST(QtUrlSessionFlood, IsSeenAtTheTargetOfARedirection)
{
    FloodingServer target(floods().front());
    LoopbackHttpServer server(answering("302 Found", "", "Location: " + target.url().toStdString() + "\r\n"));
    Results results;
    QtUrlSession session(patient(), u"test"_s, {.buffer = 16384, .unseen = 200'000});
    session.dataTask(server.url(), results.handler());
    expectError(results.wait(1).front(), tooMuch);
    EXPECT_TRUE(waitUntil([&] { return target.isRid(); }));
}

} // namespace

} // namespace spotwell
