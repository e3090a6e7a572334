#include "platform/linux/PosixSocketStreams.h"

#include "tests/fakes/LoopbackPeer.h"
#include "tests/fakes/Printers.h"

#include <gtest/gtest.h>

#include <array>
#include <functional>
#include <string>
#include <vector>

namespace spotwell
{

namespace
{

const QString loopback = QStringLiteral("127.0.0.1");

/// Keeps the events of a pair, and reads what comes unless told otherwise.
struct Client final : StreamDelegate {
    explicit Client(std::uint32_t port, const QString& host = loopback)
        : pair(streams.createPairWithSocketToHost(host, port))
    {
        pair.input->setDelegate(this);
        pair.input->open();
        pair.output->setDelegate(this);
        pair.output->open();
    }

    void handleEvent(Stream& stream, int eventCode) override
    {
        const bool isInput = &stream == pair.input.get();
        EXPECT_TRUE(isInput || &stream == pair.output.get());
        events.push_back((isInput ? "in " : "out ") + std::to_string(eventCode));
        if (eventCode == static_cast<int>(StreamEvent::errorOccurred))
            error = stream.errorDescription();
        if (onEvent)
            onEvent(eventCode);
        if (pair.input && isInput && eventCode == static_cast<int>(StreamEvent::hasBytesAvailable) && reads)
            read(readSize);
    }
    std::ptrdiff_t read(std::size_t size)
    {
        std::vector<std::byte> buffer(size);
        const std::ptrdiff_t n = pair.input->read(buffer);
        if (n > 0)
            received.append(reinterpret_cast<const char*>(buffer.data()), n);
        readCounts.push_back(n);
        return n;
    }
    bool saw(const std::string& event) const { return std::count(events.begin(), events.end(), event) > 0; }
    void close()
    {
        pair.output->close();
        pair.output.reset();
        pair.input->close();
        pair.input.reset();
    }
    void write(const QByteArray& text)
    {
        EXPECT_EQ(pair.output->write({text.constData(), static_cast<std::size_t>(text.size())}), text.size());
    }

    PosixSocketStreams streams;
    StreamPair pair;
    std::vector<std::string> events;
    std::vector<std::ptrdiff_t> readCounts;
    QByteArray received;
    QString error;
    bool reads = true;
    std::size_t readSize = 16383;
    std::function<void(int)> onEvent;
};

} // namespace

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
    Client client(node.port());
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
    Client client(node.port(), QStringLiteral(" localhost "));
    ASSERT_TRUE(node.accept());
    EXPECT_TRUE(waitUntil([&] { return client.saw("in 1"); }));
}

TEST(PosixSocketStreams, BytesAreOfferedAgainAsLongAsSomeRemain)
{
    LoopbackPeer node;
    Client client(node.port());
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
    Client client(node.port());
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
    Client client(node.port());
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

TEST(PosixSocketStreams, AResetIsAnErrorBehindWhatCameBefore)
{
    LoopbackPeer node;
    Client client(node.port());
    ASSERT_TRUE(node.accept());
    ASSERT_TRUE(waitUntil([&] { return client.saw("in 1"); }));
    node.reset();
    ASSERT_TRUE(waitUntil([&] { return client.saw("in 8"); }));
    EXPECT_FALSE(client.error.isEmpty());
    EXPECT_FALSE(client.saw("in 16"));
    EXPECT_EQ(client.pair.input->status(), StreamStatus::error);
    EXPECT_FALSE(client.pair.output->hasSpaceAvailable());
}

TEST(PosixSocketStreams, ARefusedConnectionIsAnError)
{
    LoopbackPeer node;
    const std::uint16_t port = node.port();
    node.stopListening();
    Client client(port);
    ASSERT_TRUE(waitUntil([&] { return client.saw("in 8"); }));
    EXPECT_EQ(client.error, QString::fromLocal8Bit(std::strerror(ECONNREFUSED)));
    EXPECT_EQ(client.events, (std::vector<std::string>{"in 8", "out 8"}));
}

TEST(PosixSocketStreams, AHostThatIsNoneIsAnError)
{
    for (const QString& host : {QString(), QStringLiteral("  "), QStringLiteral("256.256.256.256")}) {
        Client client(7300, host);
        EXPECT_TRUE(client.events.empty());
        ASSERT_TRUE(waitUntil([&] { return client.saw("in 8"); }));
        EXPECT_FALSE(client.error.isEmpty());
    }
}

TEST(PosixSocketStreams, WhatWasWrittenLeavesBeforeTheSocketCloses)
{
    for (const bool unread : {false, true}) {
        LoopbackPeer node;
        Client client(node.port());
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
    Client client(node.port());
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
        Client client(node.port());
        client.close();
    }
    Client other(node.port());
    ASSERT_TRUE(node.accept());
    EXPECT_TRUE(waitUntil([&] { return other.saw("in 1"); }));
}

TEST(PosixSocketStreams, MayBeClosedInsideAnyEvent)
{
    for (const int when : {2, 4, 16}) {
        LoopbackPeer node;
        Client client(node.port());
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

TEST(PosixSocketStreams, AHeldStreamSlowsTheNodeByTcp)
{
    LoopbackPeer node;
    Client client(node.port());
    client.pair.input->holdEvents(true);
    ASSERT_TRUE(node.accept());
    ASSERT_TRUE(waitUntil([&] { return client.saw("out 4"); }));
    const QByteArray block(65536, 'x');
    qsizetype sent = 0;
    // Until the connection has taken nothing for a while; a peer that buffered without end would never get
    // there.
    int refused = 0;
    ASSERT_TRUE(waitUntil([&] {
        const qsizetype now = node.send(block);
        sent += now;
        refused = now == 0 ? refused + 1 : 0;
        return refused > 100 || sent > 64 * 1024 * 1024;
    }));
    EXPECT_LT(sent, 16 * 1024 * 1024);
    EXPECT_FALSE(client.saw("in 2"));
    client.pair.input->holdEvents(false);
    EXPECT_TRUE(waitUntil([&] { return client.received.size() == sent; }));
}

TEST(PosixSocketStreams, HasNoSpaceWhileBytesHaveNotLeft)
{
    LoopbackPeer node;
    Client client(node.port());
    ASSERT_TRUE(node.accept());
    ASSERT_TRUE(waitUntil([&] { return client.saw("out 4"); }));
    const QByteArray block(65536, 'x');
    qsizetype taken = 0;
    ASSERT_TRUE(waitUntil([&] {
        const std::ptrdiff_t n =
            client.pair.output->write({block.constData(), static_cast<std::size_t>(block.size())});
        taken += n > 0 ? n : 0;
        return n < 0;
    }));
    EXPECT_FALSE(client.pair.output->hasSpaceAvailable());
    client.events.clear();
    ASSERT_TRUE(waitUntil([&] { return node.heard().size() == taken; }));
    EXPECT_TRUE(waitUntil([&] { return client.saw("out 4"); })) << "space is told of again";
    EXPECT_TRUE(client.pair.output->hasSpaceAvailable());
}

TEST(PosixSocketStreams, AreDroppedWithALookUpUnderWay)
{
    for (int i = 0; i < 20; ++i) {
        Client client(7300, QStringLiteral("localhost"));
    }
    // The late answers of those twenty find nobody; a fresh connection is none the worse.
    LoopbackPeer node;
    Client client(node.port());
    EXPECT_TRUE(node.accept());
}

} // namespace spotwell
