// SPDX-FileCopyrightText: 2026 the spotwell developers
// SPDX-License-Identifier: MIT

#include "tests/tools/bridge/telnet/SpotNodeFixture.h"

#include <QRegularExpression>

#include <sys/resource.h>

namespace spotwell::bridge
{
namespace
{

using namespace std::chrono_literals;

class SpotNodeLimitsTest : public SpotNodeFixture
{
protected:
    /// What the system holds for a slow client.
    static constexpr int smallBuffer = 2048;

    SpotNodeLimitsTest()
    {
        limits_.sendBuffer = smallBuffer;
        limits_.lines = 20;
    }
    /// Sends these spots, each of which `others` hear before the next leaves.
    void sends(int from, int to, std::initializer_list<TelnetClient*> others)
    {
        for (int i = from; i <= to; ++i) {
            node_->send(spot(i));
            for (TelnetClient* client : others)
                client->hears(sent(i));
        }
    }
    /// Waits until the system has handed on all that it can to a client that does not read: the node's part
    /// of that, too, counts as taken when it moves.
    static void settles(const TelnetClient& client)
    {
        int unread = -1;
        int sameTurns = 0;
        EXPECT_TRUE(waitUntil([&] {
            const int before = std::exchange(unread, client.unread());
            sameTurns = unread == before ? sameTurns + 1 : 0;
            return sameTurns == 1000;
        }));
    }
    /// Goes through what a slow client heard of spots numbered from `next`: every one is there, in order, or
    /// among those it was told are missing. The number behind the last.
    static int follow(const QByteArray& heard, int next, int& told)
    {
        static const QRegularExpression notice(QStringLiteral(
            "^SPOTWELL: (\\d+) spots? (was|were) left out, for (it was|they were) not taken in time\\.$"));
        EXPECT_TRUE(heard.isEmpty() || heard.endsWith("\r\n"));
        for (const QByteArray& line : heard.split('\n').mid(0, heard.count('\n'))) {
            const auto match = notice.match(QString::fromUtf8(line).trimmed());
            if (match.hasMatch()) {
                told += match.captured(1).toInt();
                next += match.captured(1).toInt();
            } else {
                EXPECT_EQ(line + "\n", sent(next));
                ++next;
            }
        }
        return next;
    }
};

TEST_F(SpotNodeLimitsTest, tellsASlowClientHowManySpotsItMissed)
{
    listens();
    TelnetClient& fast = logsIn("K1A");
    TelnetClient& slow = logsIn("N1SLOW", smallBuffer);
    TelnetClient& alsoFast = logsIn("K2B");
    sends(1, 1000, {&fast, &alsoFast});
    QByteArray heard;
    EXPECT_TRUE(
        waitUntil([&] { return slow.read(), heard += slow.takeHeard(), heard.endsWith(sent(1000)); }));
    int told = 0;
    EXPECT_EQ(follow(heard, 1, told), 1001);
    EXPECT_GT(told, 500);
    EXPECT_GE(heard.count("SPOTWELL: "), 1);
    // It has caught up, and goes on as if nothing had been.
    node_->send(spot(1001));
    slow.hears(sent(1001));
    EXPECT_EQ(log_.lines.size(), 3);
}

TEST_F(SpotNodeLimitsTest, dropsAClientThatTakesNothing)
{
    listens();
    TelnetClient& fast = logsIn("K1A");
    TelnetClient& stuck = logsIn("N1STUCK", smallBuffer);
    sends(1, 500, {&fast});
    settles(stuck);
    now_ += 59'999ms;
    looksAtTheClock();
    sends(501, 600, {&fast});
    looksAtTheClock();
    EXPECT_EQ(log_.lines.size(), 2);
    now_ += 1ms;
    logs(QStringLiteral("telnet: dropped N1STUCK from 127.0.0.1: it took nothing for 60 s"));
    sends(601, 700, {&fast});
    stuck.isReset();
    EXPECT_EQ(log_.lines.size(), 3);
}

TEST_F(SpotNodeLimitsTest, givesAClientThatTakesSomethingItsTimeAgain)
{
    limits_.lines = 2000;
    listens();
    TelnetClient& fast = logsIn("K1A");
    TelnetClient& slow = logsIn("N1SLOW", smallBuffer);
    sends(1, 1500, {&fast});
    QByteArray heard;
    for (int i = 1; i <= 4; ++i) {
        now_ += 59s;
        looksAtTheClock();
        EXPECT_TRUE(waitUntil([&] {
            slow.read(1024);
            return heard += slow.takeHeard(), heard.size() >= i * 20'000;
        }));
    }
    EXPECT_EQ(log_.lines.size(), 2);
    settles(slow);
    now_ += 60s;
    logs(QStringLiteral("telnet: dropped N1SLOW from 127.0.0.1: it took nothing for 60 s"));
    int told = 0;
    (void)follow(heard.left(heard.lastIndexOf('\n') + 1), 1, told);
    EXPECT_EQ(told, 0);
}

TEST_F(SpotNodeLimitsTest, dropsNobodyForWhomNothingWaits)
{
    listens();
    TelnetClient& client = logsIn("N0CALL");
    sends(1, 10, {&client});
    now_ += 48h;
    sends(11, 12, {&client});
    now_ += 48h;
    client.says("\r\n");
    client.hears(prompt_);
    EXPECT_EQ(log_.lines.size(), 1);
}

TEST_F(SpotNodeLimitsTest, dropsNobodyToWhomASpotHasYetToBeSent)
{
    bool comes = false;
    node_ = std::make_unique<SpotNode>(clock_, log_, limits_, [&] {
        if (std::exchange(comes, false))
            node_->send(spot(1));
        return now_;
    });
    ASSERT_EQ(node_->listen(QHostAddress(QHostAddress::LocalHost), 0), QString{});
    TelnetClient& client = logsIn("N0CALL");
    connects().hears("login: ");
    // The clock is read only for this one's time now; the spot comes in between.
    comes = true;
    client.hears(sent(1));
    EXPECT_EQ(log_.lines.size(), 1);
}

TEST_F(SpotNodeLimitsTest, dropsAClientThatDoesNotLogIn)
{
    listens();
    TelnetClient& client = connects();
    client.hears("login: ");
    client.says("\r\n");
    client.hears("login: ");
    now_ += 299'999ms;
    looksAtTheClock();
    EXPECT_EQ(log_.lines, QStringList{});
    now_ += 1ms;
    logs(QStringLiteral("telnet: dropped a client from 127.0.0.1: it gave no callsign for 300 s"));
    client.isReset();
}

TEST_F(SpotNodeLimitsTest, looksAtNoClockWhileNothingWaits)
{
    listens();
    TelnetClient& client = logsIn("N0CALL");
    // The look that finds nothing to watch is the last.
    client.says("\r\n");
    client.hears(prompt_);
    int before = timesRead_;
    int sameTurns = 0;
    EXPECT_TRUE(waitUntil([&] {
        sameTurns = before == timesRead_ ? sameTurns + 1 : 0;
        before = timesRead_;
        return sameTurns == 100;
    }));
    client.says("\r\n");
    client.hears(prompt_);
    EXPECT_EQ(timesRead_, before);
}

TEST_F(SpotNodeLimitsTest, closesOnWhoDoesNotLeaveAfterTheFarewell)
{
    listens();
    TelnetClient& client = logsIn("N0CALL");
    client.says("bye\r\n");
    client.hears("73 de SPOTWELL\r\n");
    client.hearsTheEnd();
    now_ += 4'999ms;
    looksAtTheClock();
    EXPECT_EQ(log_.lines.size(), 1);
    now_ += 1ms;
    logs(QStringLiteral("telnet: N0CALL from 127.0.0.1 left"));
}

TEST_F(SpotNodeLimitsTest, answersOnlyAsFastAsTheAnswersAreTaken)
{
    limits_.lines = 100;
    listens();
    for (int i = 1; i <= 100; ++i)
        node_->send(spot(i));
    TelnetClient& client = logsIn("N0CALL", smallBuffer);
    TelnetClient& other = logsIn("K1A");
    constexpr int asked = 50;
    client.says(QByteArray("sh/dx 100\r\n").repeated(asked));
    for (int i = 0; i < 20; ++i) {
        other.says("\r\n");
        other.hears("K1A de SPOTWELL 03-Feb-2027 0905Z spotwell >\r\n");
    }
    clock_.advance(Seconds{3600});
    QByteArray heard;
    EXPECT_TRUE(waitUntil([&] {
        client.read();
        heard += client.takeHeard();
        return heard.count("spotwell >") == asked;
    }));
    EXPECT_EQ(heard.count("DX de "), 100 * asked);
    const auto early = heard.count("0905Z spotwell >");
    EXPECT_GT(early, 0);
    EXPECT_LT(early, 10);
    EXPECT_EQ(heard.count("1005Z spotwell >"), asked - early);
}

TEST_F(SpotNodeLimitsTest, answersASlowClientThatEndedItsSideToTheEnd)
{
    limits_.lines = 100;
    listens();
    for (int i = 1; i <= 100; ++i)
        node_->send(spot(i));
    TelnetClient& client = logsIn("N0CALL", smallBuffer);
    client.says(QByteArray("sh/dx 100\r\n").repeated(5));
    client.endsItsSide();
    settles(client);
    for (int answer = 0; answer < 5; ++answer) {
        for (int i = 1; i <= 100; ++i)
            client.hears(sent(i));
        client.hears(prompt_);
    }
    client.hearsTheEnd();
    logs(QStringLiteral("telnet: N0CALL from 127.0.0.1 left"));
}

TEST_F(SpotNodeLimitsTest, saysGoodbyeHoweverFullTheWayIs)
{
    listens();
    // For one of them it is the farewell that finds no room.
    constexpr int most = 120;
    for (int count = 1; count <= most; ++count)
        logsIn("N0CALL", smallBuffer).says(QByteArray("\r\n").repeated(count) + "bye\r\n");
    settles(clients_.back());
    int count = 0;
    for (TelnetClient& client : clients_) {
        client.hears(prompt_.repeated(++count) + "73 de SPOTWELL\r\n");
        client.hearsTheEnd();
    }
}

TEST_F(SpotNodeLimitsTest, doesNotWaitForSlowClientsWhenItStops)
{
    listens();
    TelnetClient& fast = logsIn("K1A");
    TelnetClient& slow = logsIn("N1SLOW", smallBuffer);
    sends(1, 500, {&fast});
    node_->stop();
    fast.hears("73 de SPOTWELL\r\n");
    fast.hearsTheEnd();
    // It still gets what was on its way, as far as that goes.
    EXPECT_TRUE(waitUntil([&] { return slow.read(), slow.ended(); }));
    EXPECT_FALSE(slow.takeHeard().contains("73 de"));
    EXPECT_EQ(log_.lines.size(), 4);
}

TEST_F(SpotNodeLimitsTest, turnsAwayClientsForWhomThereIsNoRoom)
{
    limits_.clients = 2;
    listens();
    TelnetClient& first = logsIn("K1A");
    TelnetClient& second = logsIn("K2B");
    for (int i = 0; i < 3; ++i) {
        TelnetClient& third = connects();
        third.hears("Sorry, there is no room for a further client. 73 de SPOTWELL\r\n");
        third.hearsTheEnd();
    }
    sends(1, 3, {&first, &second});
    EXPECT_EQ(log_.lines.mid(2),
              QStringList{QStringLiteral("telnet: 2 clients are connected, further ones are turned away")});
    first.leaves();
    logs(QStringLiteral("telnet: K1A from 127.0.0.1 left"));
    TelnetClient& third = logsIn("K3C");
    sends(4, 6, {&second, &third});
    connects().hears("Sorry, ");
    EXPECT_EQ(log_.lines.filter(QStringLiteral("turned away")).size(), 2);
}

TEST_F(SpotNodeLimitsTest, hasRoomInPlaceOfWhoDoesNotLogIn)
{
    limits_.clients = 3;
    listens();
    TelnetClient& member = logsIn("K1A");
    TelnetClient& early = connects();
    early.hears("login: ");
    now_ += 1s;
    TelnetClient& late = connects();
    late.hears("login: ");

    now_ += limits_.dallying - 1s - 1ms;
    connects().hears("Sorry, there is no room for a further client. 73 de SPOTWELL\r\n");
    now_ += 1ms;
    TelnetClient& further = logsIn("K2B");
    early.isReset();
    logs(QStringLiteral(
        "telnet: dropped a client from 127.0.0.1: it gave no callsign, and others have no room"));
    connects().hears("Sorry, ");
    late.logsIn("K3C");
    now_ += limits_.dallying;
    connects().hears("Sorry, ");
    sends(1, 3, {&member, &further, &late});
}

TEST_F(SpotNodeLimitsTest, acceptsAgainWhenTheSystemHasRoomAgain)
{
    limits_.acceptPause = 2ms;
    listens();
    TelnetClient& first = logsIn("K1A");
    // UndefinedBehaviorSanitizer needs a descriptor where it meets a class for the first time: here is one
    // chance.
    sends(1, 10, {&first});
    // The system completes the connection; to accept it takes a descriptor more.
    TelnetClient& second = connects();
    rlimit before{};
    ASSERT_EQ(getrlimit(RLIMIT_NOFILE, &before), 0);
    const int next = dup(0);
    ::close(next);
    const rlimit none{static_cast<rlim_t>(next), before.rlim_max};
    ASSERT_EQ(setrlimit(RLIMIT_NOFILE, &none), 0);
    const bool noted = waitUntil([&] { return log_.lines.size() == 2; });
    sends(11, 20, {&first});
    ASSERT_EQ(setrlimit(RLIMIT_NOFILE, &before), 0);
    ASSERT_TRUE(noted);
    EXPECT_EQ(log_.lines[1],
              QStringLiteral("telnet: no further client can be accepted for now: Too many open files"));
    EXPECT_EQ(log_.lines.size(), 2);
    second.hears("login: ");
    second.logsIn("K2B");
    sends(21, 22, {&first, &second});
}

} // namespace
} // namespace spotwell::bridge
