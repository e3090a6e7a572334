// SPDX-FileCopyrightText: 2026 the spotwell developers
// SPDX-License-Identifier: MIT

#include "platform/linux/web/UrlTransfer.h"
#include "tests/support/Sanitizers.h"
#include "tests/support/web/UrlTransfers.h"

#include <QNetworkAccessManager>
#include <gtest/gtest.h>

#include <atomic>
#include <dirent.h>
#include <set>
#include <thread>

namespace spotwell
{

namespace
{

using namespace std::chrono_literals;
using namespace Qt::StringLiterals;
using Connection = LoopbackHttpServer::Connection;
using SteadyClock = std::chrono::steady_clock;

TEST(QtUrlSession, RefusesABodyThatIsTooLarge)
{
    const UrlSessionLimits limits{.body = 1000};
    const std::string largest(1000, 'x');
    LoopbackHttpServer fits(answering("200 OK", largest));
    expectAnswer(get(fits.url(), patient(), limits), 200, QByteArray::fromStdString(largest));
    LoopbackHttpServer tooLarge(answering("200 OK", largest + 'x'));
    expectError(get(tooLarge.url(), patient(), limits), u"The answer is larger than 1000 bytes."_s);
    LoopbackHttpServer endless([](Connection& connection, const std::string&) {
        connection.send("HTTP/1.1 500 Oh\r\n\r\n");
        while (connection.send(std::string(1000, 'x'))) {
        }
    });
    expectError(get(endless.url(), patient(), limits), u"The answer is larger than 1000 bytes."_s);
}

TEST(QtUrlSession, CountsABodyAsDecoded)
{
    const UrlSessionLimits limits{.body = 1'000'000};
    const QByteArray largest(1'000'000, ' ');
    LoopbackHttpServer fits(answering("200 OK", gzip(largest), "Content-Encoding: gzip\r\n"));
    expectAnswer(get(fits.url(), patient(), limits), 200, largest);
    LoopbackHttpServer tooLarge(answering("200 OK", gzip(largest + ' '), "Content-Encoding: gzip\r\n"));
    const QString reason = u"The answer is larger than 1000000 bytes."_s;
    expectError(get(tooLarge.url(), patient(), limits), reason);
    LoopbackHttpServer bomb(
        answering("200 OK", gzip(QByteArray(20'000'000, ' ')), "Content-Encoding: gzip\r\n"));
    expectError(get(bomb.url(), patient(), limits), reason);
}

TEST(QtUrlSession, TakesThirtyTwoMebibytesAndNoMore)
{
    const std::string largest(32 * 1024 * 1024, 'x');
    LoopbackHttpServer fits(answering("200 OK", largest));
    expectAnswer(get(fits.url()), 200, QByteArray::fromStdString(largest));
    LoopbackHttpServer tooLarge(answering("200 OK", largest + 'x'));
    expectError(get(tooLarge.url()), u"The answer is larger than 33554432 bytes."_s);
}

TEST(QtUrlSession, TakesABodyOfAnySizeWithASmallBuffer)
{
    QByteArray body;
    for (int i = 0; i < 100'000; ++i)
        body += QByteArray::number(i * 7919 % 100'003);
    const auto chunked = [](const std::string& bytes, const std::string& headers) {
        return [=](Connection& connection, const std::string&) {
            connection.send("HTTP/1.1 200 OK\r\nTransfer-Encoding: chunked\r\n" + headers + "\r\n");
            for (std::size_t sent = 0; sent < bytes.size(); sent += 0x1000) {
                const std::string piece = bytes.substr(sent, 0x1000);
                connection.send(QByteArray::number(piece.size(), 16).toStdString() + "\r\n" + piece + "\r\n");
            }
            connection.send("0\r\n\r\n");
        };
    };
    const std::string plain = body.toStdString();
    const std::string packed = gzip(body);
    const std::string encoding = "Content-Encoding: gzip\r\n";
    for (const LoopbackHttpServer::Handler& handler :
         {answering("200 OK", plain), answering("200 OK", packed, encoding),
          LoopbackHttpServer::Handler(chunked(plain, {})),
          LoopbackHttpServer::Handler(chunked(packed, encoding))}) {
        LoopbackHttpServer server(handler);
        expectAnswer(get(server.url(), patient(), {.buffer = 1000}), 200, body);
    }
}

TEST(QtUrlSession, CopesWithTheBodiesOfRedirectionsAndRefusals)
{
    LoopbackHttpServer server([&](Connection& connection, const std::string& head) {
        if (head.starts_with("GET /refused "))
            connection.answer("401 Unauthorized", std::string(60'000, 'x'));
        else if (head.starts_with("GET /old "))
            connection.answer("302 Found", std::string(400'000, 'x'), "Location: /new\r\n");
        else
            connection.answer("200 OK", "found");
    });
    expectAnswer(get(server.url(u"/refused"_s)), 401, QByteArray(60'000, 'x'));
    expectAnswer(get(server.url(u"/old"_s)), 200, "found");
}

TEST(UrlTransfer, BoundsWhatTheClientKeepsForIt)
{
    LoopbackHttpServer server(answering("200 OK", "body"));
    UrlCallbackQueue callbacks;
    QNetworkAccessManager manager;
    QNetworkReply* const reply = manager.get(QNetworkRequest(QUrl(server.url())));
    (new UrlTransfer(*reply, patient(), {.buffer = 5000}, {}, callbacks, {}, {}))->start();
    EXPECT_EQ(reply->readBufferSize(), 5000);
}

TEST(QtUrlSession, HandlesAnswersInTheOrderTheTransfersEnd)
{
    Gate slowMayEnd;
    LoopbackHttpServer server([&slowMayEnd](Connection& connection, const std::string& head) {
        if (head.starts_with("GET /slow "))
            slowMayEnd.wait();
        connection.answer("200 OK", "body");
    });
    Results results;
    QtUrlSession session(patient(), u"test"_s);
    session.dataTask(server.url(u"/slow"_s), results.handler(u"slow"_s));
    session.dataTask(server.url(u"/quick"_s), results.handler(u"quick"_s));
    results.wait(1);
    slowMayEnd.open();
    results.wait(2);
    EXPECT_EQ(results.names(), (std::vector{u"quick"_s, u"slow"_s}));
}

TEST(QtUrlSession, HandlesAnswersOneAtATimeOnAThreadOfItsOwn)
{
    LoopbackHttpServer server(answering("200 OK", "body"));
    Results results;
    std::atomic<int> running = 0;
    std::atomic<int> together = 0;
    std::mutex mutex;
    std::vector<std::thread::id> threads;
    QtUrlSession session(patient(), u"test"_s);
    for (int i = 0; i < 20; ++i) {
        session.dataTask(server.url(), [&](const UrlResult& result) {
            together = std::max(together.load(), ++running);
            session.pause(Seconds{0.002});
            {
                const std::lock_guard lock(mutex);
                threads.push_back(std::this_thread::get_id());
            }
            --running;
            results.add({}, result);
        });
    }
    for (const UrlResult& result : results.wait(20))
        expectAnswer(result, 200, "body");
    EXPECT_EQ(together, 1);
    EXPECT_EQ(std::count(threads.begin(), threads.end(), threads.front()), 20);
    EXPECT_NE(threads.front(), std::this_thread::get_id());
}

TEST(QtUrlSession, HandlesAnswersOfAllHostsOneAtATimeOnOneThread)
{
    LoopbackHttpServer first(answering("200 OK", "body"));
    LoopbackHttpServer second(answering("200 OK", "body"));
    LoopbackHttpServer third(answering("200 OK", "body"));
    Results results;
    std::atomic<int> running = 0;
    std::atomic<bool> together = false;
    std::mutex mutex;
    std::set<std::thread::id> threads;
    QtUrlSession session(patient(), u"test"_s);
    constexpr std::size_t each = 8;
    for (std::size_t i = 0; i < each; ++i) {
        for (const LoopbackHttpServer* server : {&first, &second, &third}) {
            session.dataTask(server->url(), [&](const UrlResult& result) {
                if (++running > 1)
                    together = true;
                session.pause(Seconds{0.005});
                {
                    const std::lock_guard lock(mutex);
                    threads.insert(std::this_thread::get_id());
                }
                --running;
                results.add({}, result);
            });
        }
    }
    for (const UrlResult& result : results.wait(3 * each))
        expectAnswer(result, 200, "body");
    EXPECT_FALSE(together);
    const std::lock_guard lock(mutex);
    EXPECT_EQ(threads.size(), 1U);
}

TEST(QtUrlSession, TransfersGoOnWhileAHandlerTakesItsTime)
{
    LoopbackHttpServer server(answering("200 OK", "body"));
    Results results;
    constexpr Seconds limit{sanitized ? 2.0 : 0.5};
    QtUrlSession session({{}, limit, limit}, u"test"_s);
    session.dataTask(server.url(), [&](const UrlResult& result) {
        // From within a handler too.
        session.dataTask(server.url(), results.handler(u"second"_s));
        session.dataTask(server.url(), results.handler(u"third"_s));
        EXPECT_TRUE(session.pause(limit + Seconds{1.0}));
        results.add(u"first"_s, result);
    });
    for (const UrlResult& result : results.wait(3))
        expectAnswer(result, 200, "body");
    EXPECT_EQ(results.names().front(), u"first"_s);
}

TEST(QtUrlSession, HoldsNoMoreThanItsLimit)
{
    Gate begun;
    Gate mayEnd;
    LoopbackHttpServer server([&mayEnd](Connection& connection, const std::string& head) {
        if (head.starts_with("GET /rest ")) {
            // Most of a body for which there is no room; the client does not wait for the rest.
            connection.send("HTTP/1.1 200 OK\r\nContent-Length: 3000\r\n\r\n" + std::string(2000, 'x'));
            EXPECT_TRUE(connection.waitForClose());
            mayEnd.open();
        } else {
            connection.answer("200 OK", std::string(1000, 'x'));
        }
    });
    Results results;
    QtUrlSession session(patient(), u"test"_s, {.body = 3000, .start = 2000, .held = 2500, .answer = 100});
    session.dataTask(server.url(), [&](const UrlResult& result) {
        begun.open();
        EXPECT_TRUE(mayEnd.wait());
        results.add({}, result);
    });
    ASSERT_TRUE(begun.wait());
    session.dataTask(server.url(u"/rest"_s), results.handler());
    const std::vector<UrlResult> both = results.wait(2);
    expectAnswer(both[0], 200, QByteArray(1000, 'x'));
    expectError(both[1], u"Too many answers are waiting to be handled."_s);
    // All room is given back.
    for (std::size_t i = 3; i < 8; ++i) {
        session.dataTask(server.url(), results.handler());
        expectAnswer(results.wait(i).back(), 200, QByteArray(1000, 'x'));
    }
}

TEST(UrlCallbackQueue, PausesForAsLongAsAsked)
{
    UrlCallbackQueue queue;
    Results results;
    queue.push(
        [&](const UrlResult& result) {
            const auto start = SteadyClock::now();
            EXPECT_TRUE(queue.pause(Seconds{0.1}));
            EXPECT_GE(SteadyClock::now() - start, 100ms);
            results.add({}, result);
        },
        {}, {});
    results.wait(1);
}

std::size_t threadCount()
{
    std::size_t count = 0;
    DIR* const directory = ::opendir("/proc/self/task");
    while (::readdir(directory) != nullptr)
        ++count;
    ::closedir(directory);
    return count;
}

TEST(QtUrlSession, StartsNoThreadBeforeItIsAsked)
{
    const std::size_t before = threadCount();
    const QtUrlSession session(patient(), u"test"_s);
    EXPECT_EQ(threadCount(), before);
}

} // namespace

} // namespace spotwell
