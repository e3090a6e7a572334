// SPDX-FileCopyrightText: 2026 the spotwell developers
// SPDX-License-Identifier: MIT

#include "tests/tools/simulator/NodeFixture.h"

namespace spotwell::simulator
{
namespace
{

/// The numbers in the comment columns of all complete spot lines in `bytes`.
std::vector<int> numbers(const QByteArray& bytes)
{
    std::vector<int> found;
    for (const QByteArray& line : bytes.split('\n')) {
        if (line.startsWith("DX de "))
            found.push_back(line.mid(40, 7).toInt());
    }
    return found;
}

using NodeTrafficTest = NodeFixture;

TEST_F(NodeTrafficTest, sendsTogetherWhatHasNoPauseInBetween)
{
    plays("send \"banner\\r\\n\"\nsend \"more\\r\\n\"\nsend \"login: \"\nstay silent\n");
    ScriptedClient& client = connects();
    client.hears("banner\r\nmore\r\nlogin: ");
    EXPECT_EQ(client.reads.size(), 1U);
    waitsFor(u"sent"_qs, 3);
}

TEST_F(NodeTrafficTest, cutsALineByThePacket)
{
    plays("send \"DX de W3X\"\ncut 0.2\nsend \"YZ: rest\\r\\n\"\ncut\nsend \"next\\r\\n\"\n");
    ScriptedClient& client = connects();
    client.hears("DX de W3XYZ: rest\r\nnext\r\n");
    ASSERT_EQ(client.reads.size(), 3U);
    EXPECT_EQ(client.reads[0], "DX de W3X");
    EXPECT_EQ(client.reads[1], "YZ: rest\r\n");
    const auto sent = events(u"sent"_qs);
    ASSERT_GE(sent.size(), 2U);
    EXPECT_GE(sent[1][u"t"].toDouble() - sent[0][u"t"].toDouble(), 0.2);
}

TEST_F(NodeTrafficTest, cutsOnlyWhenEverythingHasArrived)
{
    plays("repeat 4\nsend \"" + QByteArray(60'000, 'x') + "\"\nend\ncut 0\nsend \"y\"\n");
    ScriptedClient& client = connects(8192);
    EXPECT_TRUE(waitUntil(
        [&] { return !node_->connections().empty() && node_->connections().front()->queued() == 0; }));
    waitsFor(u"sent"_qs, 4);
    for (int turn = 0; turn < 200; ++turn)
        QCoreApplication::processEvents();
    EXPECT_EQ(events(u"sent"_qs).size(), 4U);
    client.hears(QByteArray(240'000, 'x') + 'y');
    waitsFor(u"sent"_qs, 5);
}

TEST_F(NodeTrafficTest, sendsSpotsAtTheirRate)
{
    plays("spots 120 at 400\n");
    ScriptedClient& client = connects();
    EXPECT_TRUE(waitUntil([&] { return client.read(), client.ended(); }));
    const std::vector<int> all = numbers(client.heard());
    ASSERT_EQ(all.size(), 120U);
    for (std::size_t i = 0; i < all.size(); ++i)
        EXPECT_EQ(all[i], static_cast<int>(i) + 1);
    client.leaves();
    ends();

    const auto sent = events(u"sent"_qs);
    ASSERT_EQ(sent.size(), 1U);
    EXPECT_EQ(sent[0][u"lines"].toInt(), 120);
    EXPECT_EQ(sent[0][u"bytes"].toInt(), 120 * 77);
    // The last of 120 is due 119/400 s after the first: never earlier, however busy the machine.
    EXPECT_GE(sent[0][u"t"].toDouble() - events(u"connect"_qs)[0][u"t"].toDouble(), 119.0 / 400.0);
}

TEST_F(NodeTrafficTest, catchesUpWhenTheClientWasSlow)
{
    // Far more than the system buffers is due before the client begins to read.
    plays("spots 3000 at 3000 length 4096\n");
    ScriptedClient& client = connects(8192);
    EXPECT_TRUE(waitUntil(
        [&] { return !node_->connections().empty() && node_->connections().front()->queued() > 0; }));
    EXPECT_TRUE(waitUntil([&] { return client.read(), client.ended(); }));
    EXPECT_EQ(numbers(client.heard()).size(), 3000U);
}

TEST_F(NodeTrafficTest, numbersSpotsThroughASession)
{
    plays("spots 2 as fast as possible\nspots 2 at 1000 stamped\n");
    clock_.time = TimePoint{std::chrono::microseconds{1'795'229'915'901'176}};
    ScriptedClient& client = connects();
    EXPECT_TRUE(waitUntil([&] { return client.read(), client.ended(); }));
    EXPECT_EQ(numbers(client.heard()), (std::vector<int>{1, 2, 3, 4}));
    EXPECT_EQ(client.heard().split('\n')[3].mid(48, 16), "1795229915901176");
}

TEST_F(NodeTrafficTest, floodsWithoutHoardingWhenTheClientDoesNotRead)
{
    constexpr qint64 size = 20'000'000;
    plays("flood 20000000\n");
    ScriptedClient& client = connects(8192);
    EXPECT_TRUE(waitUntil(
        [&] { return !node_->connections().empty() && node_->connections().front()->queued() > 0; }));
    qsizetype most = 0;
    qint64 taken = 0;
    EXPECT_TRUE(waitUntil(
        [&] {
            client.read();
            client.reads.clear();
            taken += client.takeHeard().size();
            if (!node_->connections().empty())
                most = std::max(most, node_->connections().front()->queued());
            return client.ended();
        },
        std::chrono::seconds{90}));
    EXPECT_EQ(taken, size);
    EXPECT_GT(most, 0);
    EXPECT_LE(most, 64 * 80);
}

TEST_F(NodeTrafficTest, floodsWithExactlyTheBytesAskedFor)
{
    plays("flood 161\nflood 100 in one line\n");
    ScriptedClient& client = connects();
    client.hears(floodLine(1) + floodLine(2) + 'F' + QByteArray(100, '='));
    client.hearsTheEnd();
}

TEST_F(NodeTrafficTest, boundsTheQueueOfRepeatedTexts)
{
    plays("repeat forever\nsend \"" + QByteArray(1000, 'x') + "\"\nend\n");
    ScriptedClient& client = connects(8192);
    EXPECT_TRUE(waitUntil(
        [&] { return !node_->connections().empty() && node_->connections().front()->queued() >= 65536; }));
    for (int turn = 0; turn < 200; ++turn)
        QCoreApplication::processEvents();
    EXPECT_LT(node_->connections().front()->queued(), 65536 + 1000);
    client.breaksAway();
    ends();
}

TEST_F(NodeTrafficTest, givesUpOnAClientThatTakesNothing)
{
    plays("flood 50000000\n", ConnectionLimits{Seconds{0.1}, Seconds{2}, 1 << 16});
    connects(8192);
    ends();
    EXPECT_EQ(failure(), u"test.scenario:1 the client's reading: it took no bytes for 0.1 s"_qs);
    EXPECT_EQ(farewell(), u"node reset"_qs);
}

TEST_F(NodeTrafficTest, givesUpOnAClientThatTalksWithoutEnd)
{
    plays("send \"?\"\nwait 60\n", ConnectionLimits{Seconds{30}, Seconds{2}, 10'000});
    ScriptedClient& client = connects();
    client.hears("?");
    client.says(QByteArray(10'000, 'x'));
    waitsFor(u"received"_qs, 3);
    EXPECT_EQ(failure(), QString{});
    client.says("x");
    client.hearsTheEnd();
    client.leaves();
    ends();
    EXPECT_EQ(failure(),
              u"test.scenario:2 the client's text: more than 10000 bytes came that no statement expects"_qs);
}

TEST_F(NodeTrafficTest, stopsSendingToAClientThatLeft)
{
    plays("spots 9000000 at 1000\nflood 10000000000\nwait 3600\nexpect close\n");
    ScriptedClient& client = connects();
    client.hears("DX de ");
    client.breaksAway();
    ends();
    EXPECT_EQ(passed(), 1);
    EXPECT_EQ(failed(), 0);
}

TEST_F(NodeTrafficTest, reportsProgressEverySecond)
{
    // Half a second before and behind the one report.
    plays("spots 75 at 50\n");
    ScriptedClient& client = connects();
    EXPECT_TRUE(waitUntil([&] { return client.read(), client.ended(); }));
    const auto progress = events(u"progress"_qs);
    ASSERT_EQ(progress.size(), 1U);
    EXPECT_GE(progress[0][u"lines"].toInt(), 50);
    EXPECT_EQ(progress[0][u"bytes"].toInt(), progress[0][u"lines"].toInt() * 77);
}

} // namespace
} // namespace spotwell::simulator
