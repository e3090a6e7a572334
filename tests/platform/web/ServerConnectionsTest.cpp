// SPDX-FileCopyrightText: 2026 the spotwell developers
// SPDX-License-Identifier: MIT

#include "platform/linux/web/ServerConnections.h"

#include "tests/support/WaitUntil.h"
#include "tests/support/web/UrlTransfers.h"

#include <QUrl>
#include <gtest/gtest.h>

#include <arpa/inet.h>
#include <netinet/in.h>
#include <string>
#include <sys/socket.h>
#include <unistd.h>

namespace spotwell
{

namespace
{

using namespace Qt::StringLiterals;
using Connection = LoopbackHttpServer::Connection;

/// A connection to a server, for reading.
class Client
{
public:
    explicit Client(const LoopbackHttpServer& server) : descriptor_(::socket(AF_INET, SOCK_STREAM, 0))
    {
        sockaddr_in address{};
        address.sin_family = AF_INET;
        address.sin_port = htons(static_cast<std::uint16_t>(server.port()));
        address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
        EXPECT_EQ(::connect(descriptor_, reinterpret_cast<const sockaddr*>(&address), sizeof address), 0);
        const std::string head = "GET / HTTP/1.1\r\n\r\n";
        EXPECT_EQ(::send(descriptor_, head.data(), head.size(), 0), static_cast<ssize_t>(head.size()));
    }
    ~Client() { ::close(descriptor_); }
    Client(const Client&) = delete;
    Client& operator=(const Client&) = delete;

    /// Waits for exactly `count` bytes; false at the end of the connection.
    bool read(std::size_t count)
    {
        std::string bytes(count, '\0');
        return ::recv(descriptor_, bytes.data(), count, MSG_WAITALL) == static_cast<ssize_t>(count);
    }

private:
    const int descriptor_;
};

void sendThousandBytes(Connection& connection, const std::string&)
{
    connection.send(std::string(1000, 'x'));
    connection.waitForClose();
}

TEST(ServerConnections, CountWhatWasRead)
{
    LoopbackHttpServer server(sendThousandBytes);
    ServerConnections connections;
    connections.add(QUrl(server.url()));
    EXPECT_EQ(connections.countRead(), 0);
    Client first(server);
    Client second(server);
    ASSERT_TRUE(first.read(600));
    EXPECT_EQ(connections.countRead(), 600);
    EXPECT_EQ(connections.countRead(), 0);
    ASSERT_TRUE(first.read(399));
    ASSERT_TRUE(second.read(1));
    EXPECT_EQ(connections.countRead(), 400);
    {
        Client third(server);
        ASSERT_TRUE(third.read(1000));
        EXPECT_EQ(connections.countRead(), 1000);
    }
    // One that has gone takes nothing back.
    EXPECT_EQ(connections.countRead(), 0);
}

TEST(ServerConnections, AreThoseToTheServersAddedOnly)
{
    LoopbackHttpServer server(sendThousandBytes);
    LoopbackHttpServer other(sendThousandBytes);
    Client client(server);
    Client stranger(other);
    ServerConnections connections;
    connections.reset();
    connections.add(QUrl(server.url()));
    ASSERT_TRUE(client.read(10));
    ASSERT_TRUE(stranger.read(20));
    EXPECT_EQ(connections.countRead(), 10);
    connections.reset();
    EXPECT_FALSE(client.read(1000));
    EXPECT_TRUE(stranger.read(980));
    connections.add(QUrl(other.url()));
    EXPECT_EQ(connections.countRead(), 1000);
}

TEST(ServerConnections, FindTheServerOfAName)
{
    LoopbackHttpServer server(sendThousandBytes);
    Client client(server);
    ASSERT_TRUE(client.read(10));
    // Nothing comes back to what has gone before its look-up had ended.
    for (int i = 0; i < 10; ++i)
        ServerConnections().add(QUrl(u"http://localhost/"_s));
    ServerConnections connections;
    connections.add(QUrl(u"http://localhost:%1/"_s.arg(server.port())));
    EXPECT_TRUE(waitUntil([&] { return connections.countRead() == 10; }));
}

TEST(ServerConnections, ForgetTheOldestServerBeyondSixtyFour)
{
    LoopbackHttpServer server(sendThousandBytes);
    Client client(server);
    ServerConnections connections;
    connections.add(QUrl(server.url()));
    for (int i = 1; i < 64; ++i)
        connections.add(QUrl(u"http://127.0.1.%1/"_s.arg(i)));
    connections.add(QUrl(server.url()));
    ASSERT_TRUE(client.read(10));
    EXPECT_EQ(connections.countRead(), 10);
    connections.add(QUrl(u"https://127.0.2.1/"_s));
    ASSERT_TRUE(client.read(10));
    EXPECT_EQ(connections.countRead(), 0);
}

} // namespace

} // namespace spotwell
