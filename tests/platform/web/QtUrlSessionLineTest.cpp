// SPDX-FileCopyrightText: 2026 the spotwell developers
// SPDX-License-Identifier: MIT

#include "tests/support/Sanitizers.h"
#include "tests/support/WaitUntil.h"
#include "tests/support/web/UrlTransfers.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <filesystem>
#include <fstream>
#include <memory>
#include <set>
#include <string>
#include <vector>

namespace spotwell
{

namespace
{

using namespace std::chrono_literals;
using namespace Qt::StringLiterals;
using Connection = LoopbackHttpServer::Connection;
using SteadyClock = std::chrono::steady_clock;

QString numberedPath(int number)
{
    return u"/%1"_s.arg(number);
}

std::string pathOf(const std::string& head)
{
    return head.substr(4, head.find(' ', 4) - 4);
}

/// A whole answer in one piece, which the kernel does not hold back as it does the second of two.
void answerAtOnce(Connection& connection, const std::string& body)
{
    connection.send("HTTP/1.1 200 OK\r\nContent-Length: " + std::to_string(body.size()) + "\r\n\r\n" + body);
}

/// The threads of this process with a name, by their numbers.
std::set<std::string> threadsNamed(const std::string& name)
{
    std::set<std::string> found;
    for (const auto& thread : std::filesystem::directory_iterator("/proc/self/task")) {
        std::string own;
        std::getline(std::ifstream(thread.path() / "comm"), own);
        if (own == name)
            found.insert(thread.path().filename());
    }
    return found;
}

/// Answers each request with its path.
void answerWithThePath(Connection& connection, const std::string& head)
{
    answerAtOnce(connection, pathOf(head));
}

/// A completion handler that holds its session's answers until it may end.
class HoldingHandler
{
public:
    explicit HoldingHandler(Results& results) : results_(results) {}
    UrlSession::CompletionHandler handler(const QString& name = {})
    {
        return [this, name](const UrlResult& result) {
            begun_.open();
            EXPECT_TRUE(mayEnd_.wait());
            results_.add(name, result);
        };
    }
    bool waitUntilItHolds() { return begun_.wait(); }
    void end() { mayEnd_.open(); }

private:
    Results& results_;
    Gate begun_;
    Gate mayEnd_;
};

TEST(UrlHostKey, TellsHostsApart)
{
    EXPECT_EQ(urlHostKey(u"https://api.pota.app/spot/activator"_s), u"https://api.pota.app:443"_s);
    EXPECT_EQ(urlHostKey(u"http://www.dxsummit.fi/api/v1/spots?x#y"_s), u"http://www.dxsummit.fi:80"_s);
    EXPECT_EQ(urlHostKey(u"HTTP://WWW.DxSummit.FI:80"_s), u"http://www.dxsummit.fi:80"_s);
    EXPECT_EQ(urlHostKey(u"http://127.0.0.1:8080/a"_s), u"http://127.0.0.1:8080"_s);
    for (const QString& nonsense : {u""_s, u"nonsense"_s, u"http://"_s, u"ftp://127.0.0.1/"_s})
        EXPECT_EQ(urlHostKey(nonsense), QString());
}

TEST(QtUrlSessionLine, StartsNoMoreThanItsLimitAtOnceAndKeepsTheOrder)
{
    Gate mayAnswer;
    LoopbackHttpServer server([&](Connection& connection, const std::string& head) {
        mayAnswer.wait();
        answerWithThePath(connection, head);
    });
    LoopbackHttpServer other(answerWithThePath);
    Results results;
    Results others;
    QtUrlSession session(patient(), u"test"_s, {.running = 2});
    for (int i = 0; i < 7; ++i)
        session.dataTask(server.url(numberedPath(i)), results.handler());
    ASSERT_TRUE(waitUntil([&] { return server.heads().size() == 2; }));
    // A host whose line is full stops no other.
    session.dataTask(other.url(), others.handler());
    expectAnswer(others.wait(1).front(), 200, "/");
    EXPECT_EQ(server.heads().size(), 2U);
    mayAnswer.open();
    std::vector<QByteArray> bodies;
    for (const UrlResult& result : results.wait(7))
        bodies.push_back(result.body);
    std::sort(bodies.begin(), bodies.end());
    EXPECT_EQ(bodies, (std::vector<QByteArray>{"/0", "/1", "/2", "/3", "/4", "/5", "/6"}));
    for (int pair = 0; pair < 3; ++pair) {
        const std::string path = pathOf(server.heads()[static_cast<std::size_t>(2 * pair)]);
        EXPECT_LE(std::stoi(path.substr(1)) - 2 * pair, 1);
    }
}

TEST(QtUrlSessionLine, TimesNoTaskOutWhileItWaits)
{
    // Two rounds of six, each of which takes more than half the time that a transfer may take.
    constexpr int answerMilliseconds = sanitized ? 3000 : 1000;
    constexpr Seconds limit{sanitized ? 5.4 : 1.8};
    LoopbackHttpServer server([](Connection& connection, const std::string&) {
        connection.waitForClose(answerMilliseconds);
        connection.answer("200 OK", "body");
    });
    Results results;
    QtUrlSession session({{}, limit, limit}, u"test"_s);
    for (int i = 0; i < 12; ++i)
        session.dataTask(server.url(), results.handler());
    for (const UrlResult& result : results.wait(12))
        expectAnswer(result, 200, "body");
}

TEST(QtUrlSessionLine, StartsNothingForAHostWithoutRoom)
{
    struct Row {
        std::size_t body;
        bool startsAnother;
    };
    for (const Row& row : {Row{899, true}, Row{900, false}}) {
        LoopbackHttpServer server(answering("200 OK", std::string(row.body, 'x')));
        LoopbackHttpServer other(answerWithThePath);
        Results results;
        HoldingHandler holding(results);
        QtUrlSession session(patient(), u"test"_s, {.start = 1000, .held = 10000, .answer = 100});
        session.dataTask(server.url(), holding.handler(u"first"_s));
        ASSERT_TRUE(holding.waitUntilItHolds());
        session.dataTask(server.url(), results.handler(u"second"_s));
        session.dataTask(other.url(), results.handler(u"other"_s));
        ASSERT_TRUE(waitUntil([&] { return other.heads().size() == 1; }));
        if (row.startsAnother)
            EXPECT_TRUE(waitUntil([&] { return server.heads().size() == 2; }));
        else
            EXPECT_EQ(server.heads().size(), 1U);
        holding.end();
        for (const UrlResult& result : results.wait(3))
            EXPECT_FALSE(result.error) << result.error->toStdString();
        EXPECT_EQ(results.names().front(), u"first"_s);
    }
}

TEST(QtUrlSessionLine, HandlesHundredsThatWaitedInOrder)
{
    constexpr int count = 300;
    LoopbackHttpServer server(answerWithThePath);
    Results results;
    HoldingHandler holding(results);
    // One at a time, so that they end in the order they were asked for.
    QtUrlSession session(patient(), u"test"_s, {.running = 1});
    session.dataTask(server.url(numberedPath(0)), holding.handler());
    for (int i = 1; i <= count; ++i)
        session.dataTask(server.url(numberedPath(i)), results.handler());
    ASSERT_TRUE(waitUntil([&] { return server.heads().size() == count + 1; }, 60s));
    holding.end();
    const std::vector<UrlResult> all = results.wait(count + 1);
    ASSERT_EQ(all.size(), static_cast<std::size_t>(count + 1));
    for (int i = 0; i <= count; ++i)
        expectAnswer(all[static_cast<std::size_t>(i)], 200, numberedPath(i).toLatin1());
}

TEST(QtUrlSessionLine, FetchesAsFastAsAnswersAreHandledAndLosesNone)
{
    constexpr std::size_t count = 60;
    std::atomic<int> unhandled = 0;
    std::atomic<int> most = 0;
    LoopbackHttpServer server([&](Connection& connection, const std::string&) {
        const int now = ++unhandled;
        most = std::max(most.load(), now);
        answerAtOnce(connection, std::string(1000, 'x'));
    });
    Results results;
    QtUrlSession session(patient(), u"test"_s, {.start = 3000, .held = 100000, .answer = 100, .running = 1});
    for (std::size_t i = 0; i < count; ++i) {
        session.dataTask(server.url(), [&](const UrlResult& result) {
            session.pause(Seconds{0.005});
            --unhandled;
            results.add({}, result);
        });
    }
    for (const UrlResult& result : results.wait(count))
        expectAnswer(result, 200, QByteArray(1000, 'x'));
    // The third is started with 2200 bytes held; a fourth while one is handled and not given back yet.
    EXPECT_LE(most, 4);
}

TEST(QtUrlSessionLine, SharesALineAmongTheHostsBeyondItsLimit)
{
    for (const std::size_t hosts : {1U, 2U}) {
        const bool shares = hosts == 1;
        Gate mayAnswer;
        std::atomic<bool> answered = false;
        LoopbackHttpServer own(answerWithThePath);
        LoopbackHttpServer second([&](Connection& connection, const std::string&) {
            EXPECT_TRUE(mayAnswer.wait());
            connection.waitForClose(200);
            answered = true;
            answerAtOnce(connection, "second");
        });
        LoopbackHttpServer third([&](Connection& connection, const std::string&) {
            EXPECT_EQ(answered, shares);
            answerAtOnce(connection, "third");
        });
        Results results;
        QtUrlSession session(patient(), u"test"_s, {.running = 1, .hosts = hosts});
        session.dataTask(own.url(), results.handler());
        expectAnswer(results.wait(1).front(), 200, "/");
        session.dataTask(second.url(), results.handler());
        session.dataTask(third.url(), results.handler());
        if (!shares)
            expectAnswer(results.wait(2).back(), 200, "third");
        mayAnswer.open();
        expectAnswer(results.wait(3).back(), 200, shares ? "third" : "second");
    }
}

TEST(QtUrlSessionLine, ReportsWhatIsNoWebAddressInOrderBesideOthers)
{
    LoopbackHttpServer server(answerWithThePath);
    Results results;
    QtUrlSession session(patient(), u"test"_s, {.start = 250, .held = 10000, .answer = 100});
    for (int i = 0; i < 20; ++i)
        session.dataTask(u"nonsense%1"_s.arg(i), results.handler());
    const std::vector<UrlResult> all = results.wait(20);
    for (int i = 0; i < 20; ++i)
        expectError(all[static_cast<std::size_t>(i)], u"\"nonsense%1\" is no web address."_s.arg(i));
    session.dataTask(server.url(), results.handler());
    expectAnswer(results.wait(21).back(), 200, "/");
}

TEST(QtUrlSessionLine, GoesOnBehindATransferThatFailed)
{
    // Far more than is taken: the client still reads when the next transfer begins.
    const std::string tooLarge(40'000'000, 'x');
    LoopbackHttpServer server([&](Connection& connection, const std::string& head) {
        if (pathOf(head) == "/large")
            connection.answer("200 OK", tooLarge);
        else
            answerWithThePath(connection, head);
    });
    Results results;
    QtUrlSession session(patient(), u"test"_s, {.body = 1 << 20, .start = 1});
    constexpr std::size_t rounds = 20;
    for (std::size_t i = 0; i < rounds; ++i) {
        session.dataTask(server.url(u"/large"_s), results.handler());
        session.dataTask(server.url(u"/small"_s), results.handler());
    }
    const std::vector<UrlResult> ends = results.wait(2 * rounds);
    for (std::size_t i = 0; i < ends.size(); i += 2) {
        EXPECT_TRUE(ends[i].error.has_value());
        expectAnswer(ends[i + 1], 200, "/small");
    }
}

TEST(QtUrlSessionLine, TakesANewClientBehindATransferThatFailed)
{
    LoopbackHttpServer server([](Connection& connection, const std::string& head) {
        if (pathOf(head) == "/broken")
            connection.close(true);
        else
            answerWithThePath(connection, head);
    });
    Results results;
    QtUrlSession session(patient(), u"test"_s);
    auto clientAfter = [&, count = std::size_t{0}](const QString& path) mutable {
        session.dataTask(server.url(path), results.handler());
        results.wait(++count);
        return threadsNamed("QNetworkAccessM");
    };
    const std::set<std::string> first = clientAfter(u"/one"_s);
    EXPECT_EQ(first.size(), 1U);
    EXPECT_EQ(clientAfter(u"/two"_s), first);
    EXPECT_EQ(clientAfter(u"/broken"_s), first);
    std::set<std::string> second = clientAfter(u"/three"_s);
    // The first one's thread may take a moment more to be gone.
    EXPECT_TRUE(waitUntil([&] { return (second = threadsNamed("QNetworkAccessM")).size() == 1; }));
    EXPECT_NE(second, first);
    EXPECT_EQ(clientAfter(u"/four"_s), second);
}

TEST(QtUrlSessionLine, DropsInTheEndWhatIsInLine)
{
    LoopbackHttpServer server([](Connection& connection, const std::string& head) {
        if (pathOf(head) == "/first")
            answerWithThePath(connection, head);
        else
            connection.waitForClose();
    });
    Results results;
    HoldingHandler holding(results);
    std::atomic<int> handled = 0;
    auto session = std::make_unique<QtUrlSession>(
        patient(), u"test"_s, UrlSessionLimits{.start = 100, .held = 10000, .answer = 100});
    session->dataTask(server.url(u"/first"_s), holding.handler());
    ASSERT_TRUE(holding.waitUntilItHolds());
    const auto counter = std::make_shared<int>();
    for (int i = 0; i < 10; ++i)
        session->dataTask(server.url(), [&handled, counter](const UrlResult&) { ++handled; });
    holding.end();
    session.reset();
    EXPECT_EQ(counter.use_count(), 1);
    EXPECT_EQ(handled, 0);
}

} // namespace

} // namespace spotwell
