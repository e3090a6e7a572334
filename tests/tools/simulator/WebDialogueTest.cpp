// SPDX-FileCopyrightText: 2026 the spotwell developers
// SPDX-License-Identifier: MIT

#include "tests/tools/simulator/WebFixture.h"

namespace spotwell::simulator
{
namespace
{

using WebDialogueTest = WebFixture;

TEST_F(WebDialogueTest, givesEachRequestItsAnswer)
{
    serves("service http\nanswer\nbody \"1\"\nend\nanswer\nbody \"2\"\nend\notherwise\nbody \"3\"\nend\n");
    EXPECT_FALSE(node_->allPlayed());
    ScriptedClient& first = connects();
    first.says(get());
    first.hears(ok(1) + "1");
    EXPECT_FALSE(node_->allPlayed());
    ScriptedClient& second = connects();
    second.says(get());
    second.hears(ok(1) + "2");
    EXPECT_TRUE(node_->allPlayed());
    first.says(get());
    first.hears(ok(1) + "3");
    second.says(get());
    second.hears(ok(1) + "3");
    EXPECT_EQ(progress_, 4);
}

TEST_F(WebDialogueTest, repeatsTheLastAnswer)
{
    serves("service http\nanswer\nbody \"1\"\nend\nanswer\nbody \"2\"\nend\n");
    ScriptedClient& client = connects();
    for (const char* body : {"1", "2", "2"}) {
        client.says(get());
        client.hears(ok(1) + body);
    }
}

TEST_F(WebDialogueTest, answersAFileWithoutBlocksEveryTime)
{
    serves("service http\nbody \"a\" \"b\"\nbody latin1 \"\xC3\xBC\"\n");
    ScriptedClient& client = connects();
    for (int i = 0; i < 3; ++i) {
        client.says(get());
        client.hears(ok(3) + "ab\xFC");
    }
}

TEST_F(WebDialogueTest, saysNothingButOkByDefault)
{
    serves("service http\nanswer\nend\n");
    ScriptedClient& client = connects();
    client.says(get());
    client.hears(ok(0));
}

TEST_F(WebDialogueTest, reportsWhatHappens)
{
    serves("service http\nexpect request \"GET /a\"\nbody \"x\"\n");
    ScriptedClient& client = connects();
    client.says(get("/a"));
    client.hears(ok(1) + "x");
    client.leaves();
    waitsFor(u"disconnect"_qs, 1);
    EXPECT_EQ(names(), u"listening connect received check sent disconnect"_qs);
    EXPECT_EQ(events_[2][u"request"].toInt(), 1);
    EXPECT_EQ(events_[2][u"bytes"].toInt(), get("/a").size());
    EXPECT_EQ(events_[2][u"text"].toString(), u"GET /a HTTP/1.1\\r\\nHost: localhost\\r\\n\\r\\n"_qs);
    EXPECT_EQ(events_[3][u"at"].toString(), u"test.scenario:2"_qs);
    EXPECT_EQ(events_[3][u"what"].toString(), u"expect request \"GET /a\""_qs);
    EXPECT_EQ(events_[4][u"request"].toInt(), 1);
    EXPECT_EQ(events_[4][u"line"].toInt(), 2);
    EXPECT_EQ(events_[4][u"status"].toInt(), 200);
    EXPECT_EQ(events_[4][u"bytes"].toInt(), ok(1).size() + 1);
    EXPECT_EQ(farewell(), u"client closed"_qs);
    EXPECT_EQ(events_[5][u"passed"].toInt(), 1);
    EXPECT_FALSE(events_[5].contains(u"why"));
}

TEST_F(WebDialogueTest, checksTheRequest)
{
    const struct {
        QByteArray check;
        QString failure;
    } cases[]{
        {"expect request \"GET /a\"", {}},
        {"expect request \"GET /b\"", u"test.scenario:2 expect request \"GET /b\": \"GET /a\" came"_qs},
        {"expect request \"POST /a\"", u"test.scenario:2 expect request \"POST /a\": \"GET /a\" came"_qs},
        {"expect header accept", {}},
        {"expect header Accept \"text/html\"", {}},
        {"expect header Accept \"text\"",
         u"test.scenario:2 expect header Accept \"text\": \"text/html\" came"_qs},
        {"expect header Range", u"test.scenario:2 expect header Range: the request has none"_qs},
        {"expect header Range \"x\"", u"test.scenario:2 expect header Range \"x\": the request has none"_qs},
        {"expect no header Range", {}},
        {"expect no header Accept", u"test.scenario:2 expect no header Accept: \"text/html\" came"_qs},
    };
    for (const auto& c : cases) {
        events_.clear();
        clients_.clear();
        progress_ = 0;
        serves("service http\n" + c.check + "\nbody \"x\"\n");
        ScriptedClient& client = connects();
        client.says(get("/a", "Accept:  text/html \r\n"));
        if (c.failure.isNull())
            client.hears(ok(1) + "x");
        else
            client.hearsTheEnd();
        client.leaves();
        waitsFor(u"disconnect"_qs, 1);
        EXPECT_EQ(failure(), c.failure);
        EXPECT_EQ(farewell(), c.failure.isNull() ? u"client closed"_qs : u"service closed"_qs);
        // The request has had what it gets either way.
        EXPECT_TRUE(node_->allPlayed());
    }
}

TEST_F(WebDialogueTest, answersRequestsThatCameEarlyInTheirTurn)
{
    serves("service http\nanswer\nwait 0.05\nbody \"1\"\nend\nanswer\nbody \"2\"\nend\n");
    ScriptedClient& client = connects();
    client.says(get("/1") + get("/2") + "GET /3 HT");
    client.hears(ok(1) + "1" + ok(1) + "2");
    client.says("TP/1.1\r\nHost: a\r\n\r\n");
    client.hears(ok(1) + "2");
}

TEST_F(WebDialogueTest, takesRequestsByteByByteAndWithBodies)
{
    serves("service http\nbody \"x\"\n");
    ScriptedClient& client = connects();
    for (const char byte : QByteArray{"\r\nPOST /a HTTP/1.1\nHost: a\nContent-Length: 5\n\n12345"}) {
        client.says(QByteArray(1, byte));
        QCoreApplication::processEvents();
    }
    client.hears(ok(1) + "x");
    EXPECT_TRUE(events(u"received"_qs)[0][u"text"].toString().endsWith(u"Content-Length: 5\\n\\n12345"_qs));
}

TEST_F(WebDialogueTest, closesWhenTheClientAsksForIt)
{
    serves("service http\nbody \"x\"\n");
    for (const QByteArray& request :
         {get("/", "Connection: Close\r\n"), QByteArray{"GET / HTTP/1.0\r\n\r\n"}}) {
        ScriptedClient& client = connects();
        client.says(request);
        client.hears(ok(1).chopped(2) + "Connection: close\r\n\r\nx");
        client.hearsTheEnd();
    }
}

TEST_F(WebDialogueTest, sendsNoBodyToHead)
{
    serves("service http\nbody \"xyz\"\n");
    ScriptedClient& client = connects();
    client.says("HEAD / HTTP/1.1\r\nHost: a\r\n\r\n");
    client.hears(ok(3));
    client.says(get());
    client.hears(ok(3) + "xyz");
}

TEST_F(WebDialogueTest, takesTheLongestRequests)
{
    serves("service http\nbody \"x\"\n");
    ScriptedClient& client = connects();
    const QByteArray start = get("/", "Content-Length: 32768\r\nA: ").chopped(2);
    client.says(start + QByteArray(16'384 - start.size() - 4, 'a') + "\r\n\r\n" + QByteArray(32'768, 'b'));
    client.hears(ok(1) + "x");
}

TEST_F(WebDialogueTest, refusesMalformedRequests)
{
    const QByteArray manyHeaders = "GET / HTTP/1.1\r\nHost: a\r\n" + QByteArray{"A: b\r\n"}.repeated(3000);
    const struct {
        QByteArray request;
        QString why;
    } cases[]{
        {"login\r\n\r\n", u"the request line is not a method, a target and a version"_qs},
        {"GET  / HTTP/1.1\r\n\r\n", u"the request line is not a method, a target and a version"_qs},
        {"GET /\x01 HTTP/1.1\r\n\r\n", u"the request line is not a method, a target and a version"_qs},
        {"G(T / HTTP/1.1\r\n\r\n", u"the request line is not a method, a target and a version"_qs},
        {"GET / HTTP/2.0\r\n\r\n", u"the version is neither HTTP/1.1 nor HTTP/1.0"_qs},
        {"GET / HTTP/1.1\r\n\r\n", u"it names no host"_qs},
        {"GET / HTTP/1.1\r\nHost: a\r\nAccept\r\n\r\n", u"a header line has no name"_qs},
        {"GET / HTTP/1.1\r\nHost: a\r\n folded: b\r\n\r\n", u"a header line has no name"_qs},
        {"GET / HTTP/1.1\r\nHost: a\r\nContent-Length: x\r\n\r\n", u"its Content-Length is no number"_qs},
        {"GET / HTTP/1.1\r\nHost: a\r\nContent-Length: 32769\r\n\r\n",
         u"its body has more than 32768 bytes"_qs},
        {"GET / HTTP/1.1\r\nHost: a\r\nTransfer-Encoding: chunked\r\n\r\n",
         u"the length of its body is not announced"_qs},
        {manyHeaders, u"its head has more than 16384 bytes"_qs},
        {manyHeaders + "\r\n", u"its head has more than 16384 bytes"_qs},
        {QByteArray(20'000, 'x'), u"its head has more than 16384 bytes"_qs},
    };
    serves("service http\nbody \"x\"\n");
    int count = 0;
    for (const auto& c : cases) {
        events_.clear();
        ScriptedClient& client = connects();
        client.says(c.request);
        client.hears("HTTP/1.1 400 Bad Request\r\nContent-Length: 0\r\nConnection: close\r\n\r\n");
        client.hearsTheEnd();
        client.leaves();
        waitsFor(u"disconnect"_qs, 1);
        EXPECT_EQ(failure(), u"test.scenario:2 request: "_qs + c.why) << c.request.left(60).constData();
        EXPECT_TRUE(waitUntil([&] { return failed() == count + 1; }));
        ++count;
    }
    EXPECT_EQ(fetchBody(), "x");
    EXPECT_EQ(events(u"received"_qs)[0][u"request"].toInt(), 1);
}

TEST_F(WebDialogueTest, noticesAClientThatLeavesInTheMiddleOfARequest)
{
    serves("service http\nbody \"x\"\n");
    ScriptedClient& client = connects();
    client.says("GET / HT");
    client.leaves();
    waitsFor(u"disconnect"_qs, 1);
    EXPECT_EQ(failure(), u"test.scenario:2 request: the client left in the middle of it"_qs);
    EXPECT_EQ(farewell(), u"client closed"_qs);
}

TEST_F(WebDialogueTest, boundsWhatWaitsForAnAnswer)
{
    serves("service http\nwait 60\n");
    ScriptedClient& client = connects();
    client.says(get() + QByteArray(65'536, 'x'));
    client.says("y");
    waitsFor(u"disconnect"_qs, 1);
    EXPECT_EQ(failure(),
              u"test.scenario:2 the client's requests: more than 65536 bytes wait for an answer"_qs);
}

TEST_F(WebDialogueTest, letsFurtherClientsWait)
{
    serves("service http\nbody \"x\"\n");
    for (std::size_t i = 0; i < Server::mostConnections; ++i) {
        ScriptedClient& client = connects();
        client.says(get());
        client.hears(ok(1) + "x");
    }
    ScriptedClient& further = connects();
    further.says(get());
    for (int turn = 0; turn < 200; ++turn)
        QCoreApplication::processEvents();
    further.read();
    EXPECT_TRUE(further.heard().isEmpty());
    EXPECT_EQ(node_->connections().size(), 64U);
    clients_.front().leaves();
    further.hears(ok(1) + "x");
}

TEST_F(WebDialogueTest, stopsInTheMiddle)
{
    serves("service http\nbody \"x\"\ndrip 1\n");
    ScriptedClient& client = connects();
    node_->stop();
    EXPECT_EQ(events_.back()[u"event"].toString(), u"done"_qs);
    EXPECT_TRUE(waitUntil([&] { return client.read(), client.ended(); }));
}

} // namespace
} // namespace spotwell::simulator
