// SPDX-FileCopyrightText: 2026 the spotwell developers
// SPDX-License-Identifier: MIT

#include "feeds/WebPoller.h"

#include "tests/fakes/FakeServices.h"
#include "tests/fakes/FakeTime.h"
#include "tests/support/Printers.h"

#include <gtest/gtest.h>

#include <memory>
#include <utility>

namespace spotwell
{

namespace
{

using Stamp = WebPollerValues::Stamp;

constexpr Seconds aMicrosecond{1e-6};

struct WebPollerTest : testing::Test {
    void make(Stamp stamp, Seconds gap)
    {
        poller = std::make_unique<WebPoller>(
            WebPollerValues{QStringLiteral("feedTimer"), QStringLiteral("http://feed.example.org/spots"), gap,
                            stamp},
            WebPollerHost{[this] {
                              ++looksAtTheBox;
                              return isOn;
                          },
                          [this] { return option; }, [this]() -> SerialQueue& { return queue; },
                          [this]() -> UrlSession* { return hasSession ? &session : nullptr; },
                          [this](const QByteArray& body, bool flag) {
                              parsed.append(QString::fromUtf8(body) +
                                            (flag ? QStringLiteral(" with") : QStringLiteral(" without")));
                              whileParsing();
                          }},
            lastTime, clock, log);
    }
    /// Ticks each second from now on.
    void start(Stamp stamp, Seconds gap)
    {
        make(stamp, gap);
        mainQueue.every(Seconds{1}, [this] { poller->tick(); });
    }
    void startPota() { start(Stamp::whenHandled, Seconds{30}); }
    void startWsprnet() { start(Stamp::whenIssued, Seconds{120}); }

    void pass(Seconds span)
    {
        mainQueue.advance(span);
        queue.runPending();
    }
    /// How many requests went out in the next `seconds`.
    std::size_t requestsIn(int seconds)
    {
        const std::size_t before = issued;
        for (int i = 0; i < seconds; ++i)
            pass(Seconds{1});
        return issued - before;
    }
    /// Ends the oldest transfer that is under way.
    void answer(const UrlResult& result)
    {
        ASSERT_FALSE(session.requests.empty());
        const auto request = session.requests.front();
        session.requests.pop_front();
        request.second(result);
    }
    void answerBody(const char* body) { answer({QByteArray(body), UrlResponse{200}, std::nullopt}); }
    void answerError() { answer({{}, std::nullopt, QStringLiteral("Host not found")}); }

    FakeClock clock;
    FakeMainQueue mainQueue{clock};
    FakeSerialQueue queue;
    /// Counts what it is asked.
    struct CountingSession final : UrlSession {
        explicit CountingSession(std::size_t& counter) : count(counter) {}
        void dataTask(const QString& url, CompletionHandler handler) override
        {
            ++count;
            requests.emplace_back(url, std::move(handler));
        }
        bool pause(Seconds) override { return true; }
        std::size_t& count;
        std::deque<std::pair<QString, CompletionHandler>> requests;
    };
    std::size_t issued = 0;
    CountingSession session{issued};
    FakeLog log;
    std::atomic<TimePoint> lastTime = distantPast;
    bool isOn = true;
    bool option = false;
    bool hasSession = true;
    int looksAtTheBox = 0;
    QStringList parsed;
    Task whileParsing = [] {};
    std::unique_ptr<WebPoller> poller;
};

} // namespace

TEST_F(WebPollerTest, TheFirstRequestGoesOutAtTheFirstTick)
{
    startPota();
    mainQueue.advance(Seconds{0.9});
    EXPECT_EQ(queue.pendingCount(), 0U);
    mainQueue.advance(Seconds{0.1});
    EXPECT_EQ(queue.pendingCount(), 1U);
    EXPECT_EQ(issued, 0U) << "the feed's queue starts the transfer";
    queue.runPending();
    EXPECT_EQ(issued, 1U);
    EXPECT_EQ(session.requests.back().first, QStringLiteral("http://feed.example.org/spots"));
    EXPECT_TRUE(log.lines.isEmpty());
}

TEST_F(WebPollerTest, AFeedThatIsOffPollsNothing)
{
    isOn = false;
    startPota();
    EXPECT_EQ(requestsIn(100), 0U);
    EXPECT_EQ(looksAtTheBox, 100);
    EXPECT_EQ(lastTime.load(), distantPast);
    isOn = true;
    EXPECT_EQ(requestsIn(1), 1U) << "at once, for it has not polled since launch";
    EXPECT_TRUE(log.lines.isEmpty());
}

TEST_F(WebPollerTest, UntilAnAnswerIsHandledEachTickPollsAgain)
{
    startPota();
    EXPECT_EQ(requestsIn(3), 3U);
    EXPECT_EQ(lastTime.load(), distantPast) << "nothing was handled yet";
    answerBody("first");
    EXPECT_EQ(lastTime.load(), clock.now());
    EXPECT_EQ(requestsIn(30), 0U);
    answerBody("second");
    EXPECT_EQ(requestsIn(30), 0U) << "each answer renews the stamp";
    answerBody("third");
    EXPECT_EQ(requestsIn(31), 1U);
    EXPECT_EQ(parsed, (QStringList{QStringLiteral("first without"), QStringLiteral("second without"),
                                   QStringLiteral("third without")}));
}

TEST_F(WebPollerTest, TheStampIsRenewedWhenTheParserHasReturned)
{
    startPota();
    requestsIn(1);
    whileParsing = [&] {
        EXPECT_EQ(lastTime.load(), distantPast);
        EXPECT_EQ(requestsIn(5), 5U) << "one a second, while the parser takes its time";
        EXPECT_EQ(lastTime.load(), distantPast);
    };
    answerBody("long");
    EXPECT_EQ(lastTime.load(), clock.now());
    EXPECT_EQ(requestsIn(30), 0U);
}

TEST_F(WebPollerTest, TheGapHasToBeExceeded)
{
    for (const auto& [stamp, gap] :
         {std::pair{Stamp::whenHandled, Seconds{30}}, std::pair{Stamp::whenIssued, Seconds{120}}}) {
        make(stamp, gap);
        lastTime = clock.now();
        clock.advance(gap);
        poller->tick();
        EXPECT_EQ(queue.pendingCount(), 0U) << gap.count();
        clock.advance(aMicrosecond);
        poller->tick();
        EXPECT_EQ(queue.pendingCount(), 1U) << gap.count();
        queue.runPending();
    }
}

TEST_F(WebPollerTest, AClockThatWasPutBackWaitsUntilItHasCaughtUp)
{
    startPota();
    lastTime = clock.now() + std::chrono::seconds(100);
    EXPECT_EQ(requestsIn(130), 0U);
    EXPECT_EQ(requestsIn(1), 1U);
}

TEST_F(WebPollerTest, AStampOfTheIssueRunsFromThere)
{
    startWsprnet();
    EXPECT_EQ(requestsIn(1), 1U);
    const TimePoint issuedAt = clock.now();
    EXPECT_EQ(lastTime.load(), issuedAt) << "before any answer";
    EXPECT_EQ(requestsIn(120), 0U);
    answerBody("page");
    EXPECT_EQ(lastTime.load(), issuedAt) << "the answer does not touch it";
    EXPECT_EQ(requestsIn(1), 1U);
    EXPECT_EQ(requestsIn(242), 2U) << "with or without an answer";
}

TEST_F(WebPollerTest, OneErrorLineEachTwoMinutesWhileTheNetworkIsDown)
{
    startWsprnet();
    for (int second = 0; second < 600; ++second) {
        pass(Seconds{1});
        while (!session.requests.empty())
            answerError();
    }
    EXPECT_EQ(log.lines, QStringList(5, QStringLiteral("feedTimer:error:[Host not found]")));
    EXPECT_TRUE(parsed.isEmpty());
}

TEST_F(WebPollerTest, AFailedPollIsTriedAgainAfterTheGap)
{
    startPota();
    EXPECT_EQ(requestsIn(1), 1U);
    answerError();
    EXPECT_EQ(lastTime.load(), clock.now());
    EXPECT_EQ(requestsIn(30), 0U);
    EXPECT_EQ(requestsIn(1), 1U);
    answer({{}, UrlResponse{200}, std::nullopt});
    EXPECT_EQ(lastTime.load(), clock.now());
    EXPECT_EQ(requestsIn(30), 0U);
    EXPECT_EQ(log.lines, (QStringList{QStringLiteral("feedTimer:error:[Host not found]"),
                                      QStringLiteral("feedTimer:error:no data")}));
    EXPECT_TRUE(parsed.isEmpty());
}

TEST_F(WebPollerTest, AnErrorStatusWithABodyGoesToTheParser)
{
    startPota();
    requestsIn(1);
    answer({QByteArray("<html>"), UrlResponse{500}, std::nullopt});
    EXPECT_EQ(parsed, QStringList{QStringLiteral("<html> without")});
    EXPECT_TRUE(log.lines.isEmpty());
    requestsIn(31);
    answer({QByteArray("half a body"), UrlResponse{200}, QStringLiteral("Connection closed")});
    EXPECT_EQ(parsed.size(), 1) << "with an error, nothing is parsed";
    EXPECT_EQ(log.lines, QStringList{QStringLiteral("feedTimer:error:[Connection closed]")});
}

TEST_F(WebPollerTest, TheOptionIsReadAtTheTick)
{
    startPota();
    mainQueue.advance(Seconds{1});
    option = true;
    queue.runPending();
    mainQueue.advance(Seconds{1});
    queue.runPending();
    option = false;
    answerBody("first");
    answerBody("second");
    EXPECT_EQ(parsed, (QStringList{QStringLiteral("first without"), QStringLiteral("second with")}));
}

TEST_F(WebPollerTest, AnAnswerUnderWayIsParsedWhenTheFeedWasSwitchedOff)
{
    startPota();
    requestsIn(1);
    isOn = false;
    pass(Seconds{5});
    answerBody("late");
    EXPECT_EQ(parsed, QStringList{QStringLiteral("late without")});
    EXPECT_EQ(lastTime.load(), clock.now());
    EXPECT_EQ(requestsIn(100), 0U);
}

TEST_F(WebPollerTest, WhatIsUnhandledIsBounded)
{
    startPota();
    EXPECT_EQ(requestsIn(WebPoller::mostUnhandled), static_cast<std::size_t>(WebPoller::mostUnhandled));
    EXPECT_TRUE(log.lines.isEmpty());
    EXPECT_EQ(requestsIn(100), 0U);
    EXPECT_EQ(log.lines, QStringList{QStringLiteral("feedTimer:too many answers are waiting")});
    lastTime = distantPast;
    answerBody("one");
    lastTime = distantPast;
    EXPECT_EQ(requestsIn(100), 1U) << "room for one more";
    EXPECT_EQ(log.lines.size(), 2) << "said once each time it is full";
}

TEST_F(WebPollerTest, WithoutASessionNothingHappens)
{
    hasSession = false;
    startPota();
    EXPECT_EQ(requestsIn(WebPoller::mostUnhandled + 10), 0U);
    EXPECT_TRUE(log.lines.isEmpty()) << "nothing waits";
    hasSession = true;
    EXPECT_EQ(requestsIn(1), 1U);
}

} // namespace spotwell
