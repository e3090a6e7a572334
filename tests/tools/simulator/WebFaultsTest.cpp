// SPDX-FileCopyrightText: 2026 the spotwell developers
// SPDX-License-Identifier: MIT

#include "tests/tools/simulator/WebFixture.h"

#include <QProcess>

namespace spotwell::simulator
{
namespace
{

/// What gzip packed (RFC 1952), with its sum and length checked by the caller's comparison.
QByteArray unzipped(const QByteArray& bytes)
{
    QProcess gunzip;
    gunzip.start(u"gzip"_qs, {u"-dc"_qs});
    gunzip.write(bytes);
    gunzip.closeWriteChannel();
    EXPECT_TRUE(gunzip.waitForFinished());
    EXPECT_EQ(gunzip.exitCode(), 0) << gunzip.readAllStandardError().constData();
    return gunzip.readAllStandardOutput();
}

QByteArray unchunked(QByteArray bytes)
{
    QByteArray body;
    while (true) {
        const qsizetype end = bytes.indexOf("\r\n");
        const int size = bytes.left(end).toInt(nullptr, 16);
        body += bytes.mid(end + 2, size);
        EXPECT_EQ(bytes.mid(end + 2 + size, 2), "\r\n");
        bytes.remove(0, end + 4 + size);
        if (size == 0)
            break;
    }
    EXPECT_TRUE(bytes.isEmpty());
    return body;
}

using WebFaultsTest = WebFixture;

TEST_F(WebFaultsTest, saysStatusAndHeaders)
{
    serves("service http\nanswer\nstatus 500\nheader X-A \"1\"\nheader Content-Type \"text/html\"\n"
           "body \"<p>\"\nend\nanswer\nstatus 503 \"Too busy\"\nend\nanswer\nstatus 418\nend\n"
           "answer\nredirect \"/else\" \"where\"\nend\nanswer\nstatus 304\nend\nanswer\nstatus 204\nend\n");
    ScriptedClient& client = connects();
    for (const char* answer : {
             "HTTP/1.1 500 Internal Server Error\r\nX-A: 1\r\nContent-Type: text/html\r\n"
             "Content-Length: 3\r\n\r\n<p>",
             "HTTP/1.1 503 Too busy\r\nContent-Length: 0\r\n\r\n",
             "HTTP/1.1 418 Status\r\nContent-Length: 0\r\n\r\n",
             "HTTP/1.1 302 Found\r\nLocation: /elsewhere\r\nContent-Length: 0\r\n\r\n",
             "HTTP/1.1 304 Not Modified\r\n\r\n",
             "HTTP/1.1 204 No Content\r\n\r\n",
         }) {
        client.says(get());
        client.hears(answer);
    }
}

TEST_F(WebFaultsTest, waitsInFrontOfTheHeadAndInsideOfTheBody)
{
    serves("service http\nwait 0.05\nbody \"ab\"\nwait 0.5\nbody \"c\"\n");
    ScriptedClient& client = connects();
    const auto start = Moment::clock::now();
    client.says(get());
    client.hears(ok(3) + "ab");
    const auto middle = Moment::clock::now();
    EXPECT_GE(middle - start, std::chrono::milliseconds{50});
    EXPECT_TRUE(client.heard().isEmpty());
    client.hears("c");
    EXPECT_GE(Moment::clock::now() - start, std::chrono::milliseconds{550});
}

TEST_F(WebFaultsTest, dripsTheBodyOnly)
{
    serves("service http\nbody \"0123456789\"\ndrip 100\n");
    ScriptedClient& client = connects();
    const auto start = Moment::clock::now();
    client.says(get());
    client.hears(ok(10) + "0123456789");
    // The tenth byte is due nine hundredths of a second after the first.
    EXPECT_GE(Moment::clock::now() - start, std::chrono::milliseconds{90});
    EXPECT_GE(client.reads.size(), 2U);
}

TEST_F(WebFaultsTest, dripsAFirstByteAtOnce)
{
    serves("service http\nbody \"ab\"\ndrip 0.01\n");
    ScriptedClient& client = connects();
    client.says(get());
    client.hears(ok(2) + "a");
    for (int turn = 0; turn < 50; ++turn)
        QCoreApplication::processEvents();
    client.read();
    EXPECT_TRUE(client.heard().isEmpty());
}

TEST_F(WebFaultsTest, cutsTheBodyIntoChunks)
{
    serves("service http\nchunked 4\nbody \"0123456789\"\nfiller 5\n");
    ScriptedClient& client = connects();
    client.says(get());
    client.hears("HTTP/1.1 200 OK\r\nTransfer-Encoding: chunked\r\n\r\n"
                 "4\r\n0123\r\n4\r\n4567\r\n2\r\n89\r\n4\r\nFloo\r\n1\r\nF\r\n0\r\n\r\n");
    client.says("GET / HTTP/1.0\r\n\r\n");
    client.hears(ok(15).chopped(2) + "Connection: close\r\n\r\n0123456789Flood");
}

TEST_F(WebFaultsTest, gzipsTheBody)
{
    serves("service http\nwait 0.01\nbody \"abc\"\nfiller 100000\nbody \"xyz\"\nwait 0.01\ngzip\n");
    const QByteArray answer = fetch();
    EXPECT_TRUE(answer.contains("\r\nContent-Encoding: gzip\r\n"));
    const QByteArray packed = answer.mid(answer.indexOf("\r\n\r\n") + 4);
    EXPECT_TRUE(answer.contains("\r\nContent-Length: " + QByteArray::number(packed.size()) + "\r\n"));
    EXPECT_LT(packed.size(), 5000);
    const QByteArray body = unzipped(packed);
    EXPECT_EQ(body.size(), 100'006);
    EXPECT_TRUE(body.startsWith("abcFlood ") && body.endsWith("xyz"));
}

TEST_F(WebFaultsTest, gzipsAnEmptyBodyAndChunksWhatItGzipped)
{
    serves("service http\nanswer\ngzip\nend\nanswer\ngzip\nchunked 7\nwsprnet 3\nend\n");
    EXPECT_EQ(unzipped(fetchBody()), QByteArray{});
    EXPECT_EQ(unzipped(unchunked(fetchBody())).count("\n<tr><td>"), 3);
}

TEST_F(WebFaultsTest, truncatesWhatItAnnounced)
{
    serves("service http\nanswer\nbody \"01234\"\nbody \"56789\"\ntruncate 7\nend\n"
           "answer\nbody \"0123\"\ntruncate 100\nend\nanswer\nchunked\nbody \"0123\"\ntruncate 1\nend\n"
           "answer\nfiller 10\ntruncate 5\nend\n");
    for (const QByteArray& answer : {ok(10) + "012", ok(4),
                                     QByteArray{"HTTP/1.1 200 OK\r\nTransfer-Encoding: chunked\r\n\r\n"
                                                "3\r\n012\r\n"},
                                     ok(10) + "Flood"}) {
        ScriptedClient& client = connects();
        client.says(get());
        client.hears(answer);
        client.hearsTheEnd();
    }
}

TEST_F(WebFaultsTest, closesAfterAnAnswerAndSaysSo)
{
    serves("service http\nbody \"x\"\nclose\n");
    ScriptedClient& client = connects();
    client.says(get());
    client.hears(ok(1).chopped(2) + "Connection: close\r\n\r\nx");
    client.hearsTheEnd();
    client.leaves();
    waitsFor(u"disconnect"_qs, 1);
    EXPECT_EQ(farewell(), u"service closed"_qs);
}

TEST_F(WebFaultsTest, closesWithoutAnAnswer)
{
    serves("service http\nclose\n");
    ScriptedClient& client = connects();
    client.says(get());
    client.hearsTheEnd();
    EXPECT_TRUE(events(u"sent"_qs).empty());
    EXPECT_TRUE(node_->allPlayed());
}

TEST_F(WebFaultsTest, resetsWithoutAnAnswerOrInTheMiddleOfIt)
{
    serves("service http\nanswer\nreset\nend\nanswer\nbody \"0123\"\ntruncate 2\nwait 0.2\nreset\nend\n");
    ScriptedClient& first = connects();
    first.says(get());
    first.isReset();
    EXPECT_TRUE(first.heard().isEmpty());
    ScriptedClient& second = connects();
    second.says(get());
    second.hears(ok(4) + "01");
    second.isReset();
    EXPECT_EQ(farewell(), u"service reset"_qs);
}

TEST_F(WebFaultsTest, staysSilentUntilTheClientLeaves)
{
    serves("service http\nbody \"x\"\ntruncate 1\nstay silent\n");
    ScriptedClient& client = connects();
    client.says(get());
    client.hears(ok(1));
    client.says(QByteArray(70'000, 'x'));
    for (int turn = 0; turn < 100; ++turn)
        QCoreApplication::processEvents();
    EXPECT_TRUE(events(u"disconnect"_qs).empty());
    client.leaves();
    waitsFor(u"disconnect"_qs, 1);
    EXPECT_EQ(failure(), QString{});
    EXPECT_EQ(farewell().left(6), u"client"_qs);
}

TEST_F(WebFaultsTest, staysSilentForATime)
{
    serves("service http\nstay silent for 0.05\n");
    ScriptedClient& client = connects();
    const auto start = Moment::clock::now();
    client.says(get());
    client.hearsTheEnd();
    EXPECT_GE(Moment::clock::now() - start, std::chrono::milliseconds{50});
}

TEST_F(WebFaultsTest, sendsFillerWithoutHoardingWhenTheClientDoesNotRead)
{
    constexpr qint64 size = 20'000'000;
    serves("service http\nfiller 20000000\n");
    ScriptedClient& client = connects(8192);
    client.says(get());
    EXPECT_TRUE(waitUntil(
        [&] { return !node_->connections().empty() && node_->connections().front()->queued() > 0; }));
    qsizetype most = 0;
    qint64 taken = 0;
    EXPECT_TRUE(waitUntil(
        [&] {
            client.read();
            client.reads.clear();
            taken += client.takeHeard().size();
            most = std::max(most, node_->connections().front()->queued());
            return taken >= size + ok(size).size();
        },
        std::chrono::seconds{90}));
    EXPECT_EQ(taken, size + ok(size).size());
    EXPECT_LE(most, 65'536 + 5'120);
}

TEST_F(WebFaultsTest, resetsAClientThatTakesNothing)
{
    serves("service http\nfiller 50000000\n", {Seconds{0.1}, Seconds{2}, 1 << 16});
    ScriptedClient& client = connects(8192);
    client.says(get());
    waitsFor(u"disconnect"_qs, 1);
    EXPECT_EQ(failure(), u"test.scenario:2 the client's reading: it took no bytes for 0.1 s"_qs);
    EXPECT_EQ(farewell(), u"service reset"_qs);
}

TEST_F(WebFaultsTest, goesOnWhenTheClientLeavesInTheMiddleOfAnAnswer)
{
    serves("service http\nanswer\nbody \"0123\"\ndrip 1\nend\nanswer\nbody \"x\"\nend\n");
    ScriptedClient& client = connects();
    client.says(get());
    client.hears(ok(4) + "0");
    client.leaves();
    waitsFor(u"disconnect"_qs, 1);
    EXPECT_EQ(farewell(), u"client closed"_qs);
    EXPECT_EQ(failure(), QString{});
    EXPECT_TRUE(events(u"sent"_qs).empty());
    EXPECT_EQ(fetchBody(), "x");
    EXPECT_TRUE(node_->allPlayed());
}

} // namespace
} // namespace spotwell::simulator
