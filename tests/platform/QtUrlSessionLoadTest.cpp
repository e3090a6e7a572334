#include "tests/platform/UrlSessionTesting.h"

#include <gtest/gtest.h>

#include <atomic>
#include <dirent.h>
#include <memory>
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
    const UrlSessionLimits limits{1000, 100000, 64};
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
    const UrlSessionLimits limits{1'000'000, 10'000'000, 64};
    const QByteArray largest(1'000'000, ' ');
    LoopbackHttpServer fits(answering("200 OK", gzip(largest), "Content-Encoding: gzip\r\n"));
    expectAnswer(get(fits.url(), patient(), limits), 200, largest);
    LoopbackHttpServer tooLarge(answering("200 OK", gzip(largest + ' '), "Content-Encoding: gzip\r\n"));
    expectSomeError(get(tooLarge.url(), patient(), limits));
    LoopbackHttpServer bomb(
        answering("200 OK", gzip(QByteArray(20'000'000, ' ')), "Content-Encoding: gzip\r\n"));
    expectSomeError(get(bomb.url(), patient(), limits));
}

TEST(QtUrlSession, TakesThirtyTwoMebibytesAndNoMore)
{
    const std::string largest(32 * 1024 * 1024, 'x');
    LoopbackHttpServer fits(answering("200 OK", largest));
    expectAnswer(get(fits.url()), 200, QByteArray::fromStdString(largest));
    LoopbackHttpServer tooLarge(answering("200 OK", largest + 'x'));
    expectError(get(tooLarge.url()), u"The answer is larger than 33554432 bytes."_s);
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

TEST(QtUrlSession, TransfersGoOnWhileAHandlerTakesItsTime)
{
    LoopbackHttpServer server(answering("200 OK", "body"));
    Results results;
    QtUrlSession session({{}, Seconds{0.5}, Seconds{0.5}}, u"test"_s);
    session.dataTask(server.url(), [&](const UrlResult& result) {
        // From within a handler too.
        session.dataTask(server.url(), results.handler(u"second"_s));
        session.dataTask(server.url(), results.handler(u"third"_s));
        EXPECT_TRUE(session.pause(Seconds{1.5}));
        results.add(u"first"_s, result);
    });
    for (const UrlResult& result : results.wait(3))
        expectAnswer(result, 200, "body");
    EXPECT_EQ(results.names().front(), u"first"_s);
}

TEST(UrlCallbackQueue, KeepsTheOrderWhenTooManyWait)
{
    UrlCallbackQueue queue({1000, 100000, 2});
    Gate begun;
    Gate mayEnd;
    Results results;
    const UrlResult answer{"body", UrlResponse{200}, {}};
    const auto push = [&](const QString& name) {
        ASSERT_TRUE(queue.reserve(4));
        queue.push(results.handler(name), answer);
    };
    ASSERT_TRUE(queue.reserve(4));
    queue.push(
        [&](const UrlResult& result) {
            begun.open();
            mayEnd.wait();
            results.add(u"0"_s, result);
        },
        answer);
    ASSERT_TRUE(begun.wait());
    for (const QString& name : {u"1"_s, u"2"_s, u"3"_s, u"4"_s})
        push(name);
    // What is an error already stays the error it is.
    queue.push(results.handler(u"5"_s), {{}, {}, u"some error"_s});
    mayEnd.open();
    const std::vector<UrlResult> all = results.wait(6);
    EXPECT_EQ(results.names(), (std::vector{u"0"_s, u"1"_s, u"2"_s, u"3"_s, u"4"_s, u"5"_s}));
    for (const std::size_t kept : {0U, 1U, 2U})
        expectAnswer(all[kept], 200, "body");
    for (const std::size_t refused : {3U, 4U})
        expectError(all[refused], u"Too many answers are waiting to be handled."_s);
    expectError(all[5], u"some error"_s);
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
    QtUrlSession session(patient(), u"test"_s, {3000, 2500, 64});
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

TEST(UrlCallbackQueue, BooksUpToItsLimit)
{
    UrlCallbackQueue queue({1000, 2500, 64});
    EXPECT_TRUE(queue.reserve(2000));
    EXPECT_FALSE(queue.reserve(501));
    EXPECT_TRUE(queue.reserve(500));
    EXPECT_FALSE(queue.reserve(1));
    queue.release(1);
    EXPECT_TRUE(queue.reserve(1));
}

TEST(UrlCallbackQueue, GivesBackWhatWasHandled)
{
    UrlCallbackQueue queue({4, 4, 64});
    Results results;
    for (std::size_t i = 1; i <= 3; ++i) {
        while (!queue.reserve(4))
            std::this_thread::yield();
        queue.push(results.handler(), {"body", UrlResponse{200}, {}});
        expectAnswer(results.wait(i).back(), 200, "body");
    }
}

TEST(UrlCallbackQueue, PausesForAsLongAsAsked)
{
    UrlCallbackQueue queue({});
    Results results;
    queue.push(
        [&](const UrlResult& result) {
            const auto start = SteadyClock::now();
            EXPECT_TRUE(queue.pause(Seconds{0.1}));
            EXPECT_GE(SteadyClock::now() - start, 100ms);
            results.add({}, result);
        },
        {});
    results.wait(1);
}

TEST(QtUrlSession, EndsAtOnceWhileAHandlerPausesAndTransfersRun)
{
    LoopbackHttpServer server([](Connection& connection, const std::string& head) {
        if (head.starts_with("GET /silent "))
            connection.waitForClose();
        else
            connection.answer("200 OK", "body");
    });
    Gate pausing;
    std::atomic<int> handled = 0;
    std::atomic<bool> pauseResult = true;
    auto session = std::make_unique<QtUrlSession>(patient(), u"test"_s);
    QtUrlSession& running = *session;
    for (int i = 0; i < 3; ++i)
        running.dataTask(server.url(u"/silent"_s), [&](const UrlResult&) { ++handled; });
    running.dataTask(server.url(), [&](const UrlResult&) {
        running.dataTask(server.url(), [&](const UrlResult&) { ++handled; });
        pausing.open();
        pauseResult = running.pause(Seconds{300});
    });
    ASSERT_TRUE(pausing.wait());
    const auto start = SteadyClock::now();
    session.reset();
    const auto took = SteadyClock::now() - start;
    EXPECT_LT(took, 1s);
    EXPECT_FALSE(pauseResult);
    EXPECT_EQ(handled, 0);
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
