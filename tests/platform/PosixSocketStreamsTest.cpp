// SPDX-FileCopyrightText: 2026 the spotwell developers
// SPDX-License-Identifier: MIT

#include "platform/linux/PosixSocketStreams.h"

#include "tests/platform/SocketClient.h"
#include "tests/support/LoopbackPeer.h"
#include "tests/support/Printers.h"

#include <gtest/gtest.h>

namespace spotwell
{

TEST(PosixSocketStreams, APortAbove65535GivesNoStreams)
{
    PosixSocketStreams streams;
    EXPECT_FALSE(streams.createPairWithSocketToHost(loopback, 65536).input);
    EXPECT_FALSE(streams.createPairWithSocketToHost(loopback, 4294967295U).output);
    const StreamPair pair = streams.createPairWithSocketToHost(loopback, 65535);
    EXPECT_TRUE(pair.input && pair.output);
    EXPECT_EQ(pair.input->status(), StreamStatus::notOpen);
}

TEST(PosixSocketStreams, TellsOfBothStreamsOpeningAndOfSpace)
{
    LoopbackPeer node;
    SocketClient client(node.port());
    EXPECT_EQ(client.pair.input->status(), StreamStatus::opening);
    EXPECT_EQ(client.pair.output->status(), StreamStatus::opening);
    EXPECT_FALSE(client.pair.output->hasSpaceAvailable());
    EXPECT_TRUE(client.events.empty()) << "never inside open()";
    ASSERT_TRUE(node.accept());
    ASSERT_TRUE(waitUntil([&] { return client.saw("out 4"); }));
    EXPECT_EQ(client.events, (std::vector<std::string>{"in 1", "out 1", "out 4"}));
    EXPECT_EQ(client.pair.input->status(), StreamStatus::open);
    EXPECT_EQ(client.pair.output->status(), StreamStatus::open);
    EXPECT_TRUE(client.pair.output->hasSpaceAvailable());
}

TEST(PosixSocketStreams, ResolvesNames)
{
    LoopbackPeer node;
    // The name may have an IPv6 address first, where nobody listens.
    SocketClient client(node.port(), QStringLiteral(" localhost "));
    ASSERT_TRUE(node.accept());
    EXPECT_TRUE(waitUntil([&] { return client.saw("in 1"); }));
}

TEST(PosixSocketStreams, BytesAreOfferedAgainAsLongAsSomeRemain)
{
    LoopbackPeer node;
    SocketClient client(node.port());
    client.readSize = 10;
    ASSERT_TRUE(node.accept());
    node.send(QByteArray(35, 'x'));
    ASSERT_TRUE(waitUntil([&] { return client.received.size() == 35; }));
    EXPECT_GE(std::count(client.events.begin(), client.events.end(), "in 2"), 4);
    for (const std::ptrdiff_t count : client.readCounts)
        EXPECT_LE(count, 10);
}

TEST(PosixSocketStreams, ReadsWhatStandsInTheSocketBeforeTheEnd)
{
    LoopbackPeer node;
    SocketClient client(node.port());
    client.readSize = 7;
    ASSERT_TRUE(node.accept());
    node.send(QByteArray(100, 'x'));
    node.close();
    ASSERT_TRUE(waitUntil([&] { return client.saw("in 16"); }));
    EXPECT_EQ(client.received, QByteArray(100, 'x'));
    EXPECT_EQ(client.events.back(), "in 16");
    EXPECT_EQ(std::count(client.events.begin(), client.events.end(), "in 16"), 1);
    EXPECT_EQ(client.pair.input->status(), StreamStatus::atEnd);
    EXPECT_EQ(client.read(10), 0) << "a read at the end";
}

TEST(PosixSocketStreams, AHalfClosedPeerStillHearsUs)
{
    LoopbackPeer node;
    SocketClient client(node.port());
    ASSERT_TRUE(node.accept());
    node.send("bye\n");
    node.shutdownWrite();
    ASSERT_TRUE(waitUntil([&] { return client.saw("in 16"); }));
    EXPECT_EQ(client.received, QByteArray("bye\n"));
    EXPECT_TRUE(client.pair.output->hasSpaceAvailable());
    client.write("quit\n");
    client.close();
    ASSERT_TRUE(waitUntil([&] { return node.hasEnded(); }));
    EXPECT_EQ(node.heard(), QByteArray("quit\n"));
}

TEST(PosixSocketStreams, ARefusedConnectionIsAnError)
{
    LoopbackPeer node;
    const std::uint16_t port = node.port();
    node.stopListening();
    SocketClient client(port);
    ASSERT_TRUE(waitUntil([&] { return client.saw("in 8"); }));
    EXPECT_EQ(client.error, QString::fromLocal8Bit(std::strerror(ECONNREFUSED)));
    EXPECT_EQ(client.events, (std::vector<std::string>{"in 8", "out 8"}));
}

TEST(PosixSocketStreams, AHostThatIsNoneIsAnError)
{
    for (const QString& host : {QString(), QStringLiteral("  "), QStringLiteral("256.256.256.256")}) {
        SocketClient client(7300, host);
        EXPECT_TRUE(client.events.empty());
        ASSERT_TRUE(waitUntil([&] { return client.saw("in 8"); }));
        EXPECT_FALSE(client.error.isEmpty());
    }
}

TEST(PosixSocketStreams, WhatWasWrittenLeavesBeforeTheSocketCloses)
{
    for (const bool unread : {false, true}) {
        LoopbackPeer node;
        SocketClient client(node.port());
        client.reads = false;
        client.pair.input->holdEvents(true);
        ASSERT_TRUE(node.accept());
        ASSERT_TRUE(waitUntil([&] { return client.saw("out 4"); }));
        if (unread) {
            // Bytes that nobody reads would turn a plain close into a reset.
            node.send(QByteArray(10'000, 'x'));
        }
        client.write("quit\n");
        client.close();
        ASSERT_TRUE(waitUntil([&] { return node.heard().size() >= 5; }));
        EXPECT_EQ(node.heard(), QByteArray("quit\n"));
    }
}

TEST(PosixSocketStreams, NoEventComesAfterTheClose)
{
    LoopbackPeer node;
    SocketClient client(node.port());
    client.onEvent = [&](int code) {
        if (code == static_cast<int>(StreamEvent::openCompleted))
            client.close();
    };
    ASSERT_TRUE(node.accept());
    ASSERT_TRUE(waitUntil([&] { return node.hasEnded(); }));
    EXPECT_EQ(client.events, std::vector<std::string>{"in 1"});
}

TEST(PosixSocketStreams, MayBeClosedWhileItConnects)
{
    LoopbackPeer node;
    {
        SocketClient client(node.port());
        client.close();
    }
    SocketClient other(node.port());
    ASSERT_TRUE(node.accept());
    EXPECT_TRUE(waitUntil([&] { return other.saw("in 1"); }));
}

TEST(PosixSocketStreams, MayBeClosedInsideAnyEvent)
{
    for (const int when : {2, 4, 16}) {
        LoopbackPeer node;
        SocketClient client(node.port());
        client.onEvent = [&](int code) {
            if (code == when && client.pair.input)
                client.close();
        };
        ASSERT_TRUE(node.accept());
        node.send("x");
        node.shutdownWrite();
        EXPECT_TRUE(waitUntil([&] { return node.hasEnded(); })) << when;
    }
}

TEST(PosixSocketStreams, HasNoSpaceWhileBytesHaveNotLeft)
{
    LoopbackPeer node;
    SocketClient client(node.port());
    ASSERT_TRUE(node.accept());
    ASSERT_TRUE(waitUntil([&] { return client.saw("out 4"); }));
    const QByteArray block(65536, 'x');
    qsizetype taken = 0;
    ASSERT_TRUE(waitUntil([&] {
        const std::ptrdiff_t n =
            client.pair.output->write({block.constData(), static_cast<std::size_t>(block.size())});
        taken += n > 0 ? n : 0;
        // What is on its way may still make space.
        return n < 0 && !client.pair.output->hasSpaceAvailable();
    }));
    client.events.clear();
    ASSERT_TRUE(waitUntil([&] { return node.heard().size() == taken; }));
    EXPECT_TRUE(waitUntil([&] { return client.saw("out 4"); })) << "space is told of again";
    EXPECT_TRUE(client.pair.output->hasSpaceAvailable());
}

TEST(PosixSocketStreams, AreDroppedWithALookUpUnderWay)
{
    for (int i = 0; i < 20; ++i) {
        SocketClient client(7300, QStringLiteral("localhost"));
    }
    // The late answers of those twenty find nobody; a fresh connection is none the worse.
    LoopbackPeer node;
    SocketClient client(node.port());
    EXPECT_TRUE(node.accept());
}

} // namespace spotwell
