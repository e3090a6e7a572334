// SPDX-FileCopyrightText: 2026 the spotwell developers
// SPDX-License-Identifier: MIT

#include "platform/linux/HostResolver.h"

#include "tests/platform/NameServer.h"
#include "tests/platform/SocketClient.h"
#include "tests/support/LoopbackPeer.h"
#include "tests/support/Printers.h"

#include <gtest/gtest.h>

#include <cerrno>
#include <chrono>
#include <cstring>
#include <netdb.h>

namespace spotwell
{

namespace
{

using namespace std::chrono_literals;
using SteadyClock = std::chrono::steady_clock;

const QString silent = QStringLiteral("silent.example.org");

struct HostResolverTest : testing::Test {
    HostResolverTest()
    {
        NameServer::set("node.example.org", {"127.0.0.1"});
        NameServer::set("silent.example.org", {"127.0.0.1"});
    }
    ~HostResolverTest() override
    {
        NameServer::release();
        EXPECT_TRUE(waitUntil([] { return NameServer::waiting() == 0; }));
    }
    HostResolverTest(const HostResolverTest&) = delete;
    HostResolverTest& operator=(const HostResolverTest&) = delete;

    void ask(const QString& host)
    {
        resolver.lookUp(host, 7300, context, [this](const HostLookup& lookup) { answers.push_back(lookup); });
    }
    /// Asks the silent name until no more look-ups are taken.
    void askAllThatGo()
    {
        NameServer::hold("silent.example.org");
        for (int i = 0; i < HostResolver::mostLookUps; ++i)
            ask(silent);
        ASSERT_TRUE(waitUntil([] { return NameServer::waiting() == HostResolver::mostLookUps; }));
    }

    std::shared_ptr<int> context = std::make_shared<int>(0);
    std::vector<HostLookup> answers;
    HostResolver resolver;
};

} // namespace

TEST_F(HostResolverTest, AnswersOnTheMainThreadNeverInsideTheCall)
{
    ask(QStringLiteral("node.example.org"));
    EXPECT_TRUE(answers.empty());
    ASSERT_TRUE(waitUntil([&] { return answers.size() == 1; }));
    EXPECT_EQ(answers[0].addresses.size(), 1U);
    EXPECT_TRUE(answers[0].error.isEmpty());
}

TEST_F(HostResolverTest, SaysWhyANameHasNoAddress)
{
    ask(QStringLiteral("nowhere.example.org"));
    ASSERT_TRUE(waitUntil([&] { return answers.size() == 1; }));
    EXPECT_TRUE(answers[0].addresses.empty());
    EXPECT_EQ(answers[0].error, QString::fromLocal8Bit(::gai_strerror(EAI_NONAME)));
}

TEST_F(HostResolverTest, ASilentNameDelaysNoOther)
{
    NameServer::hold("silent.example.org");
    ask(silent);
    ASSERT_TRUE(waitUntil([] { return NameServer::waiting() == 1; }));
    ask(QStringLiteral("node.example.org"));
    ASSERT_TRUE(waitUntil([&] { return answers.size() == 1; }));
    EXPECT_EQ(NameServer::waiting(), 1);
    NameServer::release();
    EXPECT_TRUE(waitUntil([&] { return answers.size() == 2; }));
}

TEST_F(HostResolverTest, BeyondTheMostAtATimeTheRestFailsAtOnce)
{
    askAllThatGo();
    EXPECT_TRUE(answers.empty());
    ask(silent);
    ask(QStringLiteral("node.example.org"));
    EXPECT_TRUE(answers.empty()) << "never inside the call";
    ASSERT_TRUE(waitUntil([&] { return answers.size() == 2; }));
    for (const HostLookup& answer : answers) {
        EXPECT_TRUE(answer.addresses.empty());
        EXPECT_EQ(answer.error, QString::fromLocal8Bit(std::strerror(EAGAIN)));
    }
    EXPECT_EQ(NameServer::waiting(), HostResolver::mostLookUps);
}

TEST_F(HostResolverTest, LookUpsThatHaveEndedMakeRoom)
{
    askAllThatGo();
    NameServer::release();
    ASSERT_TRUE(waitUntil([&] { return answers.size() == HostResolver::mostLookUps; }));
    answers.clear();
    // A thread makes room just after its answer.
    ASSERT_TRUE(waitUntil([&] {
        ask(QStringLiteral("node.example.org"));
        return !answers.empty() && !answers.back().addresses.empty();
    }));
}

TEST_F(HostResolverTest, WhoHasGoneIsNotAnswered)
{
    NameServer::hold("silent.example.org");
    ask(silent);
    ASSERT_TRUE(waitUntil([] { return NameServer::waiting() == 1; }));
    context.reset();
    NameServer::release();
    ASSERT_TRUE(waitUntil([] { return NameServer::waiting() == 0; }));
    context = std::make_shared<int>(0);
    ask(QStringLiteral("node.example.org"));
    ASSERT_TRUE(waitUntil([&] { return !answers.empty(); }));
    EXPECT_EQ(answers.size(), 1U);
}

TEST_F(HostResolverTest, MayEndWithALookUpUnderWay)
{
    NameServer::hold("silent.example.org");
    {
        HostResolver other;
        other.lookUp(silent, 7300, context, [](const HostLookup&) { ADD_FAILURE() << "answered"; });
        ASSERT_TRUE(waitUntil([] { return NameServer::waiting() == 1; }));
    }
    NameServer::release();
    EXPECT_TRUE(waitUntil([] { return NameServer::waiting() == 0; }));
}

TEST_F(HostResolverTest, ARefusedAddressIsFollowedByTheNext)
{
    NameServer::set("both.example.org", {"::1", "127.0.0.1"});
    LoopbackPeer node;
    SocketClient client(node.port(), QStringLiteral("both.example.org"));
    ASSERT_TRUE(node.accept());
    EXPECT_TRUE(waitUntil([&] { return client.saw("in 1"); }));
    EXPECT_FALSE(client.saw("in 8"));
}

TEST_F(HostResolverTest, RefusedAddressesCostNoTime)
{
    // Forty times the delay between two attempts would be ten seconds.
    std::vector<std::string> addresses(40, "::1");
    addresses.emplace_back("127.0.0.1");
    NameServer::set("many.example.org", addresses);
    LoopbackPeer node;
    const auto begin = SteadyClock::now();
    SocketClient client(node.port(), QStringLiteral("many.example.org"));
    ASSERT_TRUE(node.accept());
    EXPECT_LT(SteadyClock::now() - begin, 5s);
}

TEST_F(HostResolverTest, OnlyTheLastRefusalIsAnError)
{
    NameServer::set("both.example.org", {"::1", "127.0.0.1"});
    LoopbackPeer node;
    const std::uint16_t port = node.port();
    node.stopListening();
    SocketClient client(port, QStringLiteral("both.example.org"));
    ASSERT_TRUE(waitUntil([&] { return client.saw("out 8"); }));
    EXPECT_EQ(client.events, (std::vector<std::string>{"in 8", "out 8"}));
    EXPECT_EQ(client.error, QString::fromLocal8Bit(std::strerror(ECONNREFUSED)));
}

} // namespace spotwell
