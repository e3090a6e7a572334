// SPDX-FileCopyrightText: 2026 the spotwell developers
// SPDX-License-Identifier: MIT

#include "tools/spotwell-bridge/telnet/NodeClient.h"

#include "tests/tools/bridge/telnet/SpotNodeFixture.h"

#include <QTcpServer>

#include <netinet/tcp.h>

namespace spotwell::bridge
{
namespace
{

using namespace std::chrono_literals;

int optionOf(int descriptor, int level, int option)
{
    int value = -1;
    socklen_t length = sizeof value;
    EXPECT_EQ(getsockopt(descriptor, level, option, &value, &length), 0);
    return value;
}

TEST(NodeLimits, areThese)
{
    const NodeLimits limits;
    EXPECT_EQ(limits.lines, 10'000U);
    EXPECT_EQ(limits.bytes, 2'097'152);
    EXPECT_EQ(limits.clients, 10'000U);
    EXPECT_EQ(limits.dallying, 10s);
    EXPECT_EQ(limits.sendBuffer, 131'072);
    EXPECT_EQ(limits.taking, 60s);
    EXPECT_EQ(limits.login, 300s);
    EXPECT_EQ(limits.leaving, 5s);
    EXPECT_EQ(limits.look, 1s);
    EXPECT_EQ(limits.acceptPause, 1s);
}

TEST(NodeClient, sendsWithoutDelayAndNoticesAVanishedComputer)
{
    QTcpServer server;
    ASSERT_TRUE(server.listen(QHostAddress(QHostAddress::LocalHost), 0));
    server.pauseAccepting();
    ScriptedClient other(server.serverPort());
    const int descriptor =
        accept4(static_cast<int>(server.socketDescriptor()), nullptr, nullptr, SOCK_NONBLOCK | SOCK_CLOEXEC);
    ASSERT_GE(descriptor, 0);

    const FakeClock clock;
    FakeLog log;
    const NodeLimits limits;
    const MonotonicClock monotonic = [] { return std::chrono::steady_clock::time_point{}; };
    const SentLines lines(limits);
    NodeClient client(descriptor, {lines, clock, monotonic, limits, log}, [](const NodeClient&) {});
    client.start();
    EXPECT_EQ(optionOf(descriptor, IPPROTO_TCP, TCP_NODELAY), 1);
    EXPECT_EQ(optionOf(descriptor, SOL_SOCKET, SO_SNDBUF), 2 * limits.sendBuffer) << "socket(7)";
    EXPECT_EQ(optionOf(descriptor, SOL_SOCKET, SO_KEEPALIVE), 1);
    EXPECT_EQ(optionOf(descriptor, IPPROTO_TCP, TCP_KEEPIDLE), 120);
    EXPECT_EQ(optionOf(descriptor, IPPROTO_TCP, TCP_KEEPINTVL), 20);
    EXPECT_EQ(optionOf(descriptor, IPPROTO_TCP, TCP_KEEPCNT), 4);
}

} // namespace
} // namespace spotwell::bridge
