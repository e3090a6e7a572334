// SPDX-FileCopyrightText: 2026 the spotwell developers
// SPDX-License-Identifier: MIT

#include "bench/compare/Node.h"

#include "tests/support/WaitUntil.h"

#include <gtest/gtest.h>

#include <arpa/inet.h>
#include <array>
#include <netinet/in.h>
#include <stdexcept>
#include <string>
#include <sys/socket.h>
#include <unistd.h>

namespace spotwell::bench
{

namespace
{

constexpr int bytesOfLine = 77;

TEST(UnreadInTest, FindsTheSocketByItsPorts)
{
    const QByteArray table =
        "  sl  local_address rem_address   st tx_queue rx_queue tr tm->when retrnsmt   uid  timeout inode\n"
        "   0: 0100007F:1F90 00000000:0000 0A 00000000:00000007 00:00000000 00000000     0        0 101 1\n"
        "   1: 0100007F:1F90 0100007F:C001 01 00000011:00000022 00:00000000 00000000     0        0 102 1\n"
        "   2: 0100007F:C001 0100007F:1F90 01 00000000:0000ABCD 00:00000000 00000000     0        0 103 1\n";
    EXPECT_EQ(unreadIn(table, 0xC001, 0x1F90), 0xABCD);
    EXPECT_EQ(unreadIn(table, 0x1F90, 0xC001), 0x22);
    EXPECT_EQ(unreadIn(table, 0xC002, 0x1F90), std::nullopt);
    EXPECT_EQ(unreadIn(table, 0xC001, 0x1F91), std::nullopt);
    EXPECT_EQ(unreadIn({}, 0xC001, 0x1F90), std::nullopt);
}

class NodeTest : public testing::Test
{
protected:
    NodeTest() : client_(::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0))
    {
        sockaddr_in address{};
        address.sin_family = AF_INET;
        address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
        address.sin_port = htons(node_.port());
        EXPECT_EQ(::connect(client_, reinterpret_cast<const sockaddr*>(&address), sizeof address), 0);
        node_.welcome(limit);
    }
    ~NodeTest() override { leave(); }

    void leave()
    {
        ::close(client_);
        client_ = -1;
    }
    void say(const std::string& text) const { (void)::send(client_, text.data(), text.size(), 0); }
    [[nodiscard]] std::string heard(std::size_t bytes) const
    {
        std::string text(bytes, '\0');
        const ssize_t count = ::recv(client_, text.data(), bytes, MSG_WAITALL);
        text.resize(count > 0 ? static_cast<std::size_t>(count) : 0);
        return text;
    }

    static constexpr std::chrono::seconds limit{10};
    Node node_;
    int client_;
};

TEST_F(NodeTest, GreetsWhoeverSaysALine)
{
    EXPECT_EQ(heard(7), "login: ");
    say("N0");
    say("CALL\n");
    node_.logIn(limit);
    EXPECT_EQ(heard(29), "\r\nGood luck in the contest.\r\n");
}

TEST_F(NodeTest, DoesNotGreetWhoSaysNothing)
{
    say("N0CALL");
    EXPECT_THROW(node_.logIn(std::chrono::seconds{0}), std::runtime_error);
    leave();
    EXPECT_THROW(node_.logIn(limit), std::runtime_error);
}

TEST_F(NodeTest, SendsNumberedLinesAndKnowsWhatIsUnread)
{
    EXPECT_EQ(heard(7), "login: ");
    int looks = 0;
    const Sending sending = node_.send(1000, 20, 60, [&] { ++looks; });
    EXPECT_EQ(sending.sent, 20);
    EXPECT_FALSE(sending.fellBehind);
    EXPECT_FALSE(sending.clientLeft);
    EXPECT_GT(looks, 0);
    EXPECT_TRUE(waitUntil([&] { return node_.unread() == 20 * bytesOfLine; })) << node_.unread();
    const std::string lines = heard(20 * bytesOfLine);
    EXPECT_EQ(lines.substr(39, 8), "#0000001");
    EXPECT_EQ(lines.substr(19 * bytesOfLine + 39, 8), "#0000020");
    EXPECT_EQ(node_.unread(), 0);
    // Numbers go on.
    (void)node_.send(1000, 1, 60, [] {});
    EXPECT_EQ(heard(bytesOfLine).substr(39, 8), "#0000021");
}

TEST_F(NodeTest, StopsWhenTooMuchIsUnread)
{
    // Nobody reads: after a second and some looks there is more than a second's lines.
    const Sending sending = node_.send(100, 1000, 1, [] {});
    EXPECT_TRUE(sending.fellBehind);
    EXPECT_GT(sending.sent, 100);
    EXPECT_LT(sending.sent, 1000);
}

TEST_F(NodeTest, StopsWhenTheClientLeaves)
{
    leave();
    const Sending sending = node_.send(100, 1000, 1, [] {});
    EXPECT_TRUE(sending.clientLeft);
    EXPECT_LT(sending.sent, 1000);
}

TEST_F(NodeTest, SeesThatTheClientHasLeftAtTheEnd)
{
    ASSERT_EQ(::shutdown(client_, SHUT_WR), 0);
    const Sending sending = node_.send(100, 1, 1, [] {});
    EXPECT_TRUE(sending.clientLeft);
    EXPECT_EQ(sending.sent, 1);
}

} // namespace

} // namespace spotwell::bench
