// SPDX-FileCopyrightText: 2026 the spotwell developers
// SPDX-License-Identifier: MIT

#include "tests/tools/bridge/telnet/SpotNodeFixture.h"

#include <QDir>
#include <QTimer>

namespace spotwell::bridge
{
namespace
{

using SpotNodeTest = SpotNodeFixture;

TEST_F(SpotNodeTest, holdsADialogue)
{
    listens();
    TelnetClient& client = connects();
    client.hears("login: ");
    client.says("n0call\r\n");
    client.hears("\r\nHello N0CALL, this is spotwell-bridge " SPOTWELL_VERSION
                 ".\r\nEvery spot that spotwell finds is shown here.\r\n"
                 "Commands are SH/DX [number of spots] and BYE.\r\n");
    client.hears(prompt_);
    client.says("sh/dx\r\n");
    client.hears("There are no spots yet.\r\n" + prompt_);
    node_->send(spot(1));
    node_->send(spot(2));
    client.hears(sent(1) + sent(2));
    client.says("\r\n");
    client.hears(prompt_);
    client.says("sh/dx 1\r\nset/page 0\r\n");
    client.hears(sent(2) + prompt_);
    client.hears("Sorry, \"set/page\" is no command here, only SH/DX and BYE are.\r\n" + prompt_);
    client.says("bye\r\n");
    client.hears("73 de SPOTWELL\r\n");
    client.hearsTheEnd();
    client.leaves();
    logs(QStringLiteral("telnet: N0CALL from 127.0.0.1 left"));
    EXPECT_EQ(log_.lines, (QStringList{QStringLiteral("telnet: N0CALL from 127.0.0.1 logged in"),
                                       QStringLiteral("telnet: N0CALL from 127.0.0.1 left")}));
}

TEST_F(SpotNodeTest, sendsSpotsToThoseLoggedInOnly)
{
    listens();
    node_->send(spot(1));
    TelnetClient& waiting = connects();
    waiting.hears("login: ");
    TelnetClient& first = logsIn("N0CALL");
    node_->send(spot(2));
    first.hears(sent(2));
    TelnetClient& second = logsIn("K1A");
    node_->send(spot(3));
    first.hears(sent(3));
    second.hears(sent(3));
    waiting.says("DL1ABC\r\n");
    EXPECT_TRUE(waiting.hearsUpTo(" spotwell >\r\n").startsWith("\r\nHello DL1ABC, "));
    second.says("sh/dx\r\n");
    second.hears(sent(1) + sent(2) + sent(3));
}

TEST_F(SpotNodeTest, sendsUtf8)
{
    listens();
    TelnetClient& client = logsIn("N0CALL");
    node_->send(QStringLiteral("DX de N0TEST: café \U0001F4E1"));
    client.hears("DX de N0TEST: caf\xC3\xA9 \xF0\x9F\x93\xA1\r\n");
}

TEST_F(SpotNodeTest, sendsNoLineTwiceWithinTenMinutes)
{
    listens();
    TelnetClient& client = logsIn("N0CALL");
    node_->send(spot(1));
    node_->send(spot(1));
    now_ += std::chrono::seconds{600};
    node_->send(spot(1));
    node_->send(spot(2));
    client.hears(sent(1) + sent(2));
    now_ += std::chrono::milliseconds{1};
    node_->send(spot(1));
    node_->send(spot(2));
    client.hears(sent(1));
    // What was not sent again is not shown again either.
    client.says("sh/dx\r\n");
    client.hears(sent(1) + sent(2) + sent(1) + prompt_);
}

TEST_F(SpotNodeTest, countsNoWaitForWhatItHasNotTriedToSend)
{
    listens();
    TelnetClient& client = logsIn("N0CALL");
    // Who is asked for his callsign has the node look at the times again and again.
    connects().hears("login: ");
    now_ += limits_.taking;
    // A timer that is always due fires together with the node's, and before it.
    constexpr int count = 1000;
    int number = 0;
    QTimer arrival;
    arrival.callOnTimeout([&] { node_->send(spot(++number)); });
    arrival.start(0);
    EXPECT_TRUE(waitUntil([&] { return client.read(), number >= count; }));
    arrival.stop();
    for (int i = 1; i <= number && !client.ended(); ++i)
        client.hears(sent(i));
    EXPECT_FALSE(client.ended());
    EXPECT_EQ(log_.lines, QStringList(QStringLiteral("telnet: N0CALL from 127.0.0.1 logged in")));
}

TEST_F(SpotNodeTest, swallowsNegotiation)
{
    listens();
    TelnetClient& client = connects();
    client.hears("login: ");
    client.says(QByteArray("\xFF\xFB\x1F\xFF\xFD\x03N0C\xFF\xFA\x1F\x00\x50\x00\x18\xFF\xF0"
                           "ALL\r\0",
                           22));
    EXPECT_TRUE(client.hearsUpTo(" spotwell >\r\n").startsWith("\r\nHello N0CALL, "));
}

TEST_F(SpotNodeTest, endsAfterTheThirdWrongCallsign)
{
    listens();
    TelnetClient& client = connects();
    client.says("a\r\nb\r\nc\r\nN0CALL\r\n");
    client.hears("login: Sorry, that is not a callsign.\r\nlogin: Sorry, that is not a callsign.\r\nlogin: "
                 "Sorry, that is not a callsign.\r\n73 de SPOTWELL\r\n");
    client.hearsTheEnd();
    EXPECT_EQ(log_.lines, QStringList{});
}

TEST_F(SpotNodeTest, sendsTheLastWordsEvenToWhoGoesOnTalking)
{
    listens();
    TelnetClient& client = logsIn("N0CALL");
    client.says("bye\r\n" + QByteArray(100'000, 'x'));
    client.hears("73 de SPOTWELL\r\n");
    node_->send(spot(1));
    client.hearsTheEnd();
    client.leaves();
    logs(QStringLiteral("telnet: N0CALL from 127.0.0.1 left"));
}

TEST_F(SpotNodeTest, answersWhoEndedHisSideAndThenCloses)
{
    listens();
    for (int i = 1; i <= 100; ++i)
        node_->send(spot(i));
    TelnetClient& client = connects();
    client.says("N0CALL\r\nsh/dx 1\r\nsh/dx 100\r\n\r\nsh/dx 2\r\nunended");
    client.endsItsSide();
    client.hears("login: ");
    EXPECT_TRUE(client.hearsUpTo(prompt_).startsWith("\r\nHello N0CALL, "));
    client.hears(sent(100) + prompt_);
    for (int i = 1; i <= 100; ++i)
        client.hears(sent(i));
    client.hears(prompt_ + prompt_ + sent(99) + sent(100) + prompt_);
    client.hearsTheEnd();
    logs(QStringLiteral("telnet: N0CALL from 127.0.0.1 left"));
}

TEST_F(SpotNodeTest, takesALineOfTenMegabytes)
{
    listens();
    TelnetClient& other = logsIn("K1A");
    TelnetClient& client = logsIn("N0CALL");
    client.says(QByteArray(10'000'000, 'x'));
    node_->send(spot(1));
    client.hears(sent(1));
    client.says("\r\n");
    client.hears("Sorry, that line is too long.\r\n" + prompt_);
    other.hears(sent(1));
}

TEST_F(SpotNodeTest, isNotUpsetByClientsThatBreakAway)
{
    const auto descriptors = [] { return QDir(QStringLiteral("/proc/self/fd")).count(); };
    listens();
    TelnetClient& stays = logsIn("N0CALL");
    const auto before = descriptors();
    for (int i = 0; i < 200; ++i) {
        TelnetClient client(node_->port());
        if (i % 2 == 0)
            client.hears("login: ");
        if (i % 4 == 0)
            client.says("K1A\r\n");
        if (i % 8 == 0)
            client.hears("\r\nHello K1A");
        if (i % 3 == 0)
            client.leaves();
        else
            client.breaksAway();
        node_->send(spot(i));
    }
    for (int i = 0; i < 200; ++i)
        stays.hears(sent(i));
    EXPECT_TRUE(waitUntil([&] { return descriptors() == before; }));
}

TEST_F(SpotNodeTest, saysGoodbyeWhenItStops)
{
    listens();
    TelnetClient& waiting = connects();
    waiting.hears("login: ");
    TelnetClient& client = logsIn("N0CALL");
    node_->send(spot(1));
    node_->stop();
    client.hears(sent(1) + "73 de SPOTWELL\r\n");
    client.hearsTheEnd();
    waiting.hears("\r\n73 de SPOTWELL\r\n");
    waiting.hearsTheEnd();
    EXPECT_EQ(node_->port(), 0);
    EXPECT_EQ(log_.lines.size(), 2);
    node_->send(spot(2));
    node_->stop();
}

TEST_F(SpotNodeTest, isGoneAtOnceWhenDestroyed)
{
    listens();
    TelnetClient& client = logsIn("N0CALL");
    node_->send(spot(1));
    node_.reset();
    client.hearsTheEnd();
}

TEST_F(SpotNodeTest, hasNoPortBeforeItListens)
{
    const SpotNode node(clock_, log_);
    EXPECT_EQ(node.port(), 0);
}

TEST_F(SpotNodeTest, tellsWhyItCannotListen)
{
    listens();
    SpotNode second(clock_, log_);
    EXPECT_EQ(second.listen(QHostAddress(QHostAddress::LocalHost), node_->port()),
              QStringLiteral("The bound address is already in use"));
    EXPECT_EQ(second.port(), 0);
    EXPECT_EQ(second.listen(QHostAddress(QStringLiteral("192.0.2.1")), 7373),
              QStringLiteral("The address is not available"));
}

} // namespace
} // namespace spotwell::bridge
