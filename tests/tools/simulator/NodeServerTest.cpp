// SPDX-FileCopyrightText: 2026 the spotwell developers
// SPDX-License-Identifier: MIT

#include "tests/tools/simulator/NodeFixture.h"

namespace spotwell::simulator
{
namespace
{

using NodeServerTest = NodeFixture;

TEST_F(NodeServerTest, givesEachConnectionItsSession)
{
    plays("session\nsend \"1\"\nend\nsession\nsend \"2\"\nend\notherwise\nsend \"3\"\nend\n");
    EXPECT_FALSE(node_->allPlayed());
    const QByteArray expected[]{"1", "2", "3", "3"};
    int count = 0;
    for (const QByteArray& text : expected) {
        ScriptedClient& client = connects();
        client.hears(text);
        client.hearsTheEnd();
        client.leaves();
        ends(++count);
        EXPECT_EQ(node_->allPlayed(), count >= 2);
    }
}

TEST_F(NodeServerTest, playsSeveralSessionsAtATime)
{
    plays("send \"name? \"\nexpect line within 60\nsend \"thanks\"\n");
    ScriptedClient& first = connects();
    ScriptedClient& second = connects();
    first.hears("name? ");
    second.hears("name? ");
    second.says("b\n");
    second.hears("thanks");
    EXPECT_TRUE(first.heard().isEmpty());
    first.says("a\n");
    first.hears("thanks");
}

TEST_F(NodeServerTest, letsFurtherClientsWait)
{
    plays("send \"hi\"\nstay silent\n");
    for (std::size_t i = 0; i < NodeServer::mostConnections; ++i)
        connects().hears("hi");
    ScriptedClient& further = connects();
    for (int turn = 0; turn < 200; ++turn)
        QCoreApplication::processEvents();
    further.read();
    EXPECT_TRUE(further.heard().isEmpty());
    EXPECT_EQ(node_->connections().size(), NodeServer::mostConnections);
    clients_.front().leaves();
    further.hears("hi");
}

TEST_F(NodeServerTest, stopsInTheMiddle)
{
    plays("send \"hi\"\nexpect \"never\" within 60\n");
    ScriptedClient& client = connects();
    client.hears("hi");
    node_->stop();
    client.hearsTheEnd();
    EXPECT_EQ(farewell(), u"node closed"_qs);
    EXPECT_EQ(events_.back()[u"event"].toString(), u"done"_qs);
    EXPECT_EQ(events_.back()[u"connections"].toInt(), 1);
    node_->stop();
    EXPECT_EQ(events(u"done"_qs).size(), 1U);
}

TEST_F(NodeServerTest, saysWhyItCannotListen)
{
    plays("wait 1\n");
    const std::uint16_t taken = node_->port();
    auto parsed = parseScenario("wait 1\n", u"test.scenario"_qs);
    NodeServer second{std::get<Scenario>(std::move(parsed)), clock_, report_, [] {}};
    EXPECT_TRUE(second.listen({QHostAddress::LocalHost, taken}).startsWith(u"127.0.0.1:%1: "_qs.arg(taken)));
}

} // namespace
} // namespace spotwell::simulator
