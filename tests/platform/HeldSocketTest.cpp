// SPDX-FileCopyrightText: 2026 the spotwell developers
// SPDX-License-Identifier: MIT

#include "tests/platform/SocketClient.h"
#include "tests/support/LoopbackPeer.h"
#include "tests/support/Printers.h"

#include <gtest/gtest.h>

namespace spotwell
{

namespace
{

/// Gives the events of everything that came before this call the time to arrive: a whole connection is made,
/// used and ended meanwhile.
void letEventsArrive()
{
    LoopbackPeer node;
    SocketClient other(node.port());
    ASSERT_TRUE(node.accept());
    node.send("x");
    node.close();
    ASSERT_TRUE(waitUntil([&] { return other.saw("in 16"); }));
}

/// Sends until the connection has taken nothing for a while; how much it took. A peer that buffered without
/// end would be stopped at `limit`.
qsizetype fill(LoopbackPeer& node, qsizetype limit)
{
    const QByteArray block(65536, 'x');
    qsizetype sent = 0;
    int refused = 0;
    EXPECT_TRUE(waitUntil([&] {
        const qsizetype now = node.send(block);
        sent += now;
        refused = now == 0 ? refused + 1 : 0;
        return refused > 100 || sent > limit;
    }));
    return sent;
}

struct HeldSocketTest : testing::Test {
    void SetUp() override
    {
        ASSERT_TRUE(node.accept());
        ASSERT_TRUE(waitUntil([this] { return client.saw("out 4"); }));
    }

    LoopbackPeer node;
    SocketClient client{node.port()};
};

} // namespace

using SocketResetTest = HeldSocketTest;

TEST_F(SocketResetTest, IsAnErrorOfBothStreams)
{
    node.reset();
    ASSERT_TRUE(waitUntil([&] { return client.saw("in 8"); }));
    EXPECT_FALSE(client.error.isEmpty());
    EXPECT_FALSE(client.saw("in 16"));
    EXPECT_EQ(client.pair.input->status(), StreamStatus::error);
    EXPECT_FALSE(client.pair.output->hasSpaceAvailable());
}

TEST_F(SocketResetTest, BothStreamsHaveFailedWhenTheFirstIsTold)
{
    int told = 0;
    client.onEvent = [&](int code) {
        if (code != static_cast<int>(StreamEvent::errorOccurred))
            return;
        ++told;
        EXPECT_FALSE(client.pair.output->hasSpaceAvailable()) << told;
        EXPECT_EQ(client.pair.output->status(), StreamStatus::error) << told;
        EXPECT_EQ(client.pair.input->status(), StreamStatus::error) << told;
    };
    node.reset();
    ASSERT_TRUE(waitUntil([&] { return client.saw("out 8"); }));
    EXPECT_EQ(told, 2);
}

TEST_F(SocketResetTest, WhatCameBeforeIsReadFirst)
{
    // Held, so that the bytes and the reset are both there before anything is read.
    client.pair.input->holdEvents(true);
    client.readSize = 7;
    node.send(QByteArray(100, 'x'));
    node.reset();
    letEventsArrive();
    EXPECT_FALSE(client.saw("in 2"));
    EXPECT_FALSE(client.saw("in 8"));
    client.pair.input->holdEvents(false);
    ASSERT_TRUE(waitUntil([&] { return client.saw("in 8"); }));
    EXPECT_EQ(client.received, QByteArray(100, 'x'));
    EXPECT_FALSE(client.saw("in 16"));
    EXPECT_EQ(std::count(client.events.begin(), client.events.end(), "in 8"), 1);
}

TEST_F(HeldSocketTest, TellsOfNothingUntilItIsReleased)
{
    client.pair.input->holdEvents(true);
    node.send(QByteArray(100, 'x'));
    letEventsArrive();
    EXPECT_FALSE(client.saw("in 2"));
    client.pair.input->holdEvents(false);
    EXPECT_TRUE(waitUntil([&] { return client.received.size() == 100; }));
}

TEST_F(HeldSocketTest, HoldsTheEndToo)
{
    for (const bool withBytes : {false, true}) {
        LoopbackPeer peer;
        SocketClient held(peer.port());
        ASSERT_TRUE(peer.accept());
        ASSERT_TRUE(waitUntil([&] { return held.saw("in 1"); }));
        held.pair.input->holdEvents(true);
        if (withBytes)
            peer.send("bye\n");
        peer.close();
        letEventsArrive();
        EXPECT_FALSE(held.saw("in 2"));
        EXPECT_FALSE(held.saw("in 16"));
        held.pair.input->holdEvents(false);
        ASSERT_TRUE(waitUntil([&] { return held.saw("in 16"); }));
        EXPECT_EQ(held.received, withBytes ? QByteArray("bye\n") : QByteArray());
    }
}

TEST_F(HeldSocketTest, SlowsTheNodeByTcp)
{
    // The two buffers, each of which the kernel doubles and overruns by a packet of at most 64 KiB.
    constexpr int sendBuffer = 64 * 1024;
    constexpr qsizetype most = 2 * (128 + 64) * 1024;
    // A reader that keeps up leads the kernel to widen a receive buffer that nobody bounds.
    constexpr std::size_t wholeRead = 1024 * 1024;
    constexpr qsizetype enough = 8 * 1024 * 1024;
    const QByteArray block(wholeRead, 'x');
    qsizetype sent = 0;
    client.onEvent = [&](int code) {
        while (code == static_cast<int>(StreamEvent::hasBytesAvailable) && sent < enough &&
               client.read(wholeRead) > 0)
            sent += node.send(block);
    };
    sent += node.send(block);
    ASSERT_TRUE(waitUntil([&] { return sent >= enough && client.received.size() == sent; }));
    client.pair.input->holdEvents(true);
    node.setSendBuffer(sendBuffer);
    const qsizetype waiting = fill(node, 64 * 1024 * 1024);
    EXPECT_GT(waiting, 0);
    EXPECT_LE(waiting, most);
    client.pair.input->holdEvents(false);
    EXPECT_TRUE(waitUntil([&] { return client.received.size() == sent + waiting; }));
}

} // namespace spotwell
