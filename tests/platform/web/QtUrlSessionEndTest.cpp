// SPDX-FileCopyrightText: 2026 the spotwell developers
// SPDX-License-Identifier: MIT

#include "tests/platform/ThreadShortage.h"
#include "tests/platform/web/FloodingServer.h"
#include "tests/support/Sanitizers.h"
#include "tests/support/WaitUntil.h"

#include <gtest/gtest.h>

#include <atomic>
#include <memory>
#include <netinet/in.h>
#include <sys/socket.h>
#include <unistd.h>

namespace spotwell
{

namespace
{

using namespace std::chrono_literals;
using namespace Qt::StringLiterals;
using Connection = LoopbackHttpServer::Connection;
using EndClock = std::chrono::steady_clock;

/// A listening socket whose queue is full: who connects waits.
class FullListener
{
public:
    FullListener() : listener_(::socket(AF_INET, SOCK_STREAM, 0))
    {
        sockaddr_in address{};
        address.sin_family = AF_INET;
        address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
        socklen_t size = sizeof address;
        auto* const generic = reinterpret_cast<sockaddr*>(&address);
        EXPECT_EQ(::bind(listener_, generic, size), 0);
        EXPECT_EQ(::listen(listener_, 0), 0);
        EXPECT_EQ(::getsockname(listener_, generic, &size), 0);
        port_ = ntohs(address.sin_port);
        for (int& client : clients_) {
            client = ::socket(AF_INET, SOCK_STREAM | SOCK_NONBLOCK, 0);
            ::connect(client, generic, size);
        }
    }
    ~FullListener()
    {
        for (const int client : clients_)
            ::close(client);
        ::close(listener_);
    }
    FullListener(const FullListener&) = delete;
    FullListener& operator=(const FullListener&) = delete;
    [[nodiscard]] QString url() const { return u"http://127.0.0.1:%1/"_s.arg(port_); }

private:
    const int listener_;
    int port_ = 0;
    int clients_[3] = {};
};

/// Lets its connections hang in the stage that the path names.
void hang(Connection& connection, const std::string& head)
{
    if (head.starts_with("GET /body "))
        connection.send("HTTP/1.1 200 OK\r\nContent-Length: 1000000\r\n\r\nsome");
    else if (head.starts_with("GET /head "))
        connection.send("HTTP/1.1 200 OK\r\nServer: ");
    if (!head.starts_with("GET /silent ")) {
        while (connection.send("x") && !connection.waitForClose(20)) {
        }
    }
    connection.waitForClose();
}

/// How long the end of `session` takes.
std::chrono::milliseconds timeToEnd(std::unique_ptr<QtUrlSession> session)
{
    const auto start = EndClock::now();
    session.reset();
    return std::chrono::duration_cast<std::chrono::milliseconds>(EndClock::now() - start);
}

void recordTime(const char* what, std::chrono::milliseconds took)
{
    EXPECT_LT(took, 10s) << what; // each hangs for half a minute
    std::printf("ended in %lld ms: %s\n", static_cast<long long>(took.count()), what);
}

TEST(QtUrlSessionEnd, IsQuickWhileTransfersHang)
{
    FullListener full;
    LoopbackHttpServer hanging(hang);
    LoopbackHttpServer fine(answering("200 OK", "body"));
    struct Row {
        const char* name;
        QString url;
        std::size_t heads;
    };
    for (const Row& row : {Row{"connecting", full.url(), 0},
                           Row{"shaking hands", hanging.url().replace(u"http:"_s, u"https:"_s), 0},
                           Row{"waiting for a head", hanging.url(u"/silent"_s), 1},
                           Row{"in a dripping head", hanging.url(u"/head"_s), 2},
                           Row{"in a dripping body", hanging.url(u"/body"_s), 3}}) {
        Results results;
        auto session = std::make_unique<QtUrlSession>(patient(), u"test"_s);
        session->dataTask(row.url, [](const UrlResult&) { FAIL(); });
        session->dataTask(fine.url(), results.handler());
        expectAnswer(results.wait(1).front(), 200, "body");
        ASSERT_TRUE(waitUntil([&] { return hanging.heads().size() >= row.heads; }));
        recordTime(row.name, timeToEnd(std::move(session)));
    }
}

TEST(QtUrlSessionEnd, IsQuickWhileAServerFloods)
{
    for (const Flood& flood : floods()) {
        FloodingServer server(flood);
        auto session =
            std::make_unique<QtUrlSession>(patient(), u"test"_s, UrlSessionLimits{.unseen = 1LL << 40});
        for (int i = 0; i < 3; ++i)
            session->dataTask(server.url(), [](const UrlResult&) { FAIL(); });
        ASSERT_TRUE(waitUntil([&] { return server.floods(); }));
        recordTime(flood.name, timeToEnd(std::move(session)));
        EXPECT_TRUE(waitUntil([&] { return server.isRid(); }));
    }
}

TEST(QtUrlSessionEnd, IsQuickWhileHundredsWait)
{
    constexpr int count = 1000;
    std::atomic<int> answered = 0;
    LoopbackHttpServer server([&answered](Connection& connection, const std::string&) {
        const std::string body(5000, 'x');
        connection.send("HTTP/1.1 200 OK\r\nContent-Length: 5000\r\n\r\n" + body);
        ++answered;
    });
    LoopbackHttpServer hanging(hang);
    FloodingServer flooding(floods()[1]);
    Gate pausing;
    std::atomic<bool> pauseResult = true;
    auto session =
        std::make_unique<QtUrlSession>(patient(), u"test"_s, UrlSessionLimits{.unseen = 1LL << 40});
    QtUrlSession& running = *session;
    running.dataTask(server.url(), [&](const UrlResult&) {
        pausing.open();
        pauseResult = running.pause(Seconds{300});
    });
    ASSERT_TRUE(pausing.wait());
    for (int i = 0; i < count; ++i)
        running.dataTask(server.url(), [](const UrlResult&) { FAIL(); });
    running.dataTask(flooding.url(), [](const UrlResult&) { FAIL(); });
    for (const QString& path : {u"/silent"_s, u"/head"_s, u"/body"_s})
        running.dataTask(hanging.url(path), [](const UrlResult&) { FAIL(); });
    ASSERT_TRUE(waitUntil([&] { return answered == count + 1 && flooding.floods(); }, 60s));
    recordTime("a thousand answers wait, a handler pauses, a server floods, others hang",
               timeToEnd(std::move(session)));
    EXPECT_FALSE(pauseResult);
}

TEST(QtUrlSessionEnd, MayComeBeforeAnything)
{
    LoopbackHttpServer server(answering("200 OK", "body"));
    for (int i = 0; i < 20; ++i) {
        auto session = std::make_unique<QtUrlSession>(patient(), u"test"_s);
        for (int task = 0; task < i; ++task)
            session->dataTask(server.url(), [](const UrlResult&) {});
        EXPECT_LT(timeToEnd(std::move(session)), 500ms * slowness);
    }
}

TEST(QtUrlSession, TriesAgainAfterAShortageOfThreads)
{
    LoopbackHttpServer server(answering("200 OK", "body"));
    Results results;
    QtUrlSession session(patient(), u"test"_s, {.running = 1});
    {
        const ThreadShortage shortage;
        session.dataTask(server.url(), results.handler(u"first"_s));
        session.dataTask(server.url(), results.handler(u"second"_s));
    }
    session.dataTask(server.url(), results.handler(u"third"_s));
    for (const UrlResult& result : results.wait(3))
        expectAnswer(result, 200, "body");
    EXPECT_EQ(results.names(), (std::vector{u"first"_s, u"second"_s, u"third"_s}));
}

TEST(QtUrlSession, MayEndInAShortageOfThreads)
{
    const ThreadShortage shortage;
    QtUrlSession session(patient(), u"test"_s);
    session.dataTask(u"http://127.0.0.1/"_s, [](const UrlResult&) { FAIL(); });
}

TEST(UrlCallbackQueue, TriesAgainAfterAShortageOfThreads)
{
    for (const bool byPush : {false, true}) {
        Results results;
        UrlCallbackQueue queue;
        {
            const ThreadShortage shortage;
            queue.push(results.handler(u"first"_s), {}, {});
        }
        EXPECT_TRUE(results.names().empty());
        if (byPush)
            queue.push(results.handler(u"second"_s), {}, {});
        else
            queue.begin();
        results.wait(byPush ? 2 : 1);
        EXPECT_EQ(results.names().front(), u"first"_s);
    }
}

} // namespace

} // namespace spotwell
