// SPDX-FileCopyrightText: 2026 the spotwell developers
// SPDX-License-Identifier: MIT

#include "tools/spotwell-bridge/N1mmSender.h"

#include "tests/fakes/SharedLog.h"
#include "tests/support/WaitUntil.h"

#include <QNetworkProxy>
#include <QUdpSocket>
#include <gtest/gtest.h>

#include <vector>

namespace spotwell::bridge
{

namespace
{

using namespace Qt::Literals::StringLiterals;
using namespace std::chrono_literals;

const N1mmSender::TimePoint start{1h};

/// Takes datagrams on a loopback address.
class Receiver : public QUdpSocket
{
public:
    explicit Receiver(QHostAddress::SpecialAddress address = QHostAddress::LocalHost)
    {
        setProxy(QNetworkProxy::NoProxy);
        EXPECT_TRUE(bind(QHostAddress(address), 0));
    }
};

/// Name servers by hand: look-ups wait until the test answers them.
class N1mmSenderTest : public testing::Test
{
protected:
    N1mmSender make(const QString& host, std::uint16_t port)
    {
        return {Target{host, port},
                [this](const QString& name, N1mmSender::LookedUp lookedUp) {
                    names.append(name);
                    lookUps.push_back(std::move(lookedUp));
                },
                log};
    }
    static HostLookup found(const QString& address) { return resolveHost(address, 1); }
    static QByteArray next(QUdpSocket& socket)
    {
        if (!waitUntil([&socket] { return socket.hasPendingDatagrams(); }))
            return {};
        QByteArray datagram(socket.pendingDatagramSize(), ' ');
        socket.readDatagram(datagram.data(), datagram.size());
        return datagram;
    }

    SharedLog log;
    QStringList names;
    std::vector<N1mmSender::LookedUp> lookUps;
};

TEST_F(N1mmSenderTest, SendsToLiteralAddresses)
{
    for (const QHostAddress::SpecialAddress address :
         {QHostAddress::LocalHost, QHostAddress::LocalHostIPv6}) {
        Receiver receiver(address);
        N1mmSender sender = make(QHostAddress(address).toString(), receiver.localPort());
        sender.begin(start);
        sender.send("<spot/>", start);
        EXPECT_EQ(next(receiver), "<spot/>");
    }
    EXPECT_TRUE(names.isEmpty());
    EXPECT_TRUE(log.lines().isEmpty());
}

TEST_F(N1mmSenderTest, LooksNamesUpAtMostOnceAMinute)
{
    Receiver receiver;
    N1mmSender sender = make(u"shack.example"_s, receiver.localPort());
    sender.begin(start);
    EXPECT_EQ(names, QStringList{u"shack.example"_s}) << "before there is something to send";
    sender.send("lost", start + 1s);
    sender.send("lost", start + 61s);
    EXPECT_EQ(names.size(), 1) << "the first is still under way";
    lookUps[0](found(u"127.0.0.1"_s));
    sender.send("one", start + 59'999ms);
    EXPECT_EQ(next(receiver), "one");
    EXPECT_EQ(names.size(), 1);
    sender.send("two", start + 60s);
    EXPECT_EQ(next(receiver), "two") << "by the address that is known";
    EXPECT_EQ(names.size(), 2);
    EXPECT_TRUE(log.lines().isEmpty());
}

TEST_F(N1mmSenderTest, FollowsANameToAnotherProtocol)
{
    Receiver receiver(QHostAddress::LocalHostIPv6);
    N1mmSender sender = make(u"shack.example"_s, receiver.localPort());
    sender.begin(start);
    lookUps[0](found(u"127.0.0.1"_s));
    sender.send("elsewhere", start + 1s);
    sender.send("elsewhere", start + 60s);
    lookUps[1](found(u"::1"_s));
    sender.send("here", start + 61s);
    EXPECT_EQ(next(receiver), "here");
}

TEST_F(N1mmSenderTest, PrefersIPv4)
{
    Receiver receiver;
    N1mmSender sender = make(u"shack.example"_s, receiver.localPort());
    sender.begin(start);
    HostLookup both = found(u"::1"_s);
    both.addresses.push_back(found(u"127.0.0.1"_s).addresses.front());
    lookUps[0](both);
    sender.send("here", start);
    EXPECT_EQ(next(receiver), "here");
}

TEST_F(N1mmSenderTest, TellsOfTroubleAndItsEndOnce)
{
    Receiver receiver;
    const QString target = u"shack.example:%1"_s.arg(receiver.localPort());
    N1mmSender sender = make(u"shack.example"_s, receiver.localPort());
    sender.begin(start);
    lookUps[0]({{}, u"Name or service not known"_s});
    sender.send("lost", start + 60s);
    lookUps[1]({{}, u"Name or service not known"_s});
    EXPECT_EQ(log.lines(), QStringList{u"spots do not reach %1: Name or service not known"_s.arg(target)});
    sender.send("lost", start + 120s);
    lookUps[2](found(u"127.0.0.1"_s));
    EXPECT_EQ(log.lines().size(), 1);
    sender.send("one", start + 121s);
    EXPECT_EQ(next(receiver), "one");
    EXPECT_EQ(log.lines().mid(1), QStringList{u"spots are sent to %1 again"_s.arg(target)});
    // A name server in trouble does not take away an address that is known.
    sender.send("two", start + 180s);
    lookUps[3]({{}, u"Temporary failure in name resolution"_s});
    EXPECT_EQ(next(receiver), "two");
    sender.send("three", start + 181s);
    EXPECT_EQ(next(receiver), "three");
    EXPECT_EQ(log.lines().size(), 2);
}

TEST_F(N1mmSenderTest, TellsWhatTheNetworkRefuses)
{
    N1mmSender sender = make(u"::1"_s, 12060);
    sender.send(QByteArray(70'000, 'x'), start);
    sender.send(QByteArray(70'000, 'x'), start);
    ASSERT_EQ(log.lines().size(), 1);
    EXPECT_TRUE(log.lines().first().startsWith(u"spots do not reach [::1]:12060: "_s));
    sender.send("x", start);
    EXPECT_EQ(log.lines().mid(1), QStringList{u"spots are sent to [::1]:12060 again"_s});
}

} // namespace

} // namespace spotwell::bridge
