// SPDX-FileCopyrightText: 2026 the spotwell developers
// SPDX-License-Identifier: MIT

#include "tests/integration/support/FeedsFixture.h"

#include <ostream>

namespace spotwell
{
namespace
{

using namespace Qt::StringLiterals;

const std::string errorPage = "<html><body><h1>500 Internal Server Error</h1></body></html>\n";

LoopbackHttpServer::Handler resetting()
{
    return [](LoopbackHttpServer::Connection& connection, const std::string&) { connection.close(true); };
}

/// Begins to answer, and then says nothing.
LoopbackHttpServer::Handler hanging()
{
    return [](LoopbackHttpServer::Connection& connection, const std::string&) {
        connection.send("HTTP/1.1 200 OK\r\nContent-Length: 1000\r\n\r\n[");
        connection.waitForClose();
    };
}

struct FalseIdentity {
    const char* name;
    const char* certificate;
    /// What the log line says of it, among other things.
    const char* reason;
};

void PrintTo(const FalseIdentity& identity, std::ostream* out)
{
    *out << identity.name;
}

class FalseIdentityTest : public FeedsFixture, public testing::WithParamInterface<FalseIdentity>
{
};

TEST_P(FalseIdentityTest, isNotAsked)
{
    services.answer(potaAddress, answering("200 OK", potaAnswer(1)));
    services.answer(dxSummitAddress, answering("200 OK", dxSummitAnswer(2)));
    startFeeds({u"pota"_s, u"dxsummit"_s});
    serve(GetParam().certificate);
    const auto errors = [this] { return entriesOf({u"potaTimer"_s, u"parsePotaData"_s}); };
    ASSERT_TRUE(waitUntil([&] { return !errors().isEmpty(); }));
    EXPECT_EQ(nextCalls(2), callsUpTo(2, 'B'));
    end();
    // The services may hear of a failed one a moment later.
    EXPECT_TRUE(waitUntil([&] { return services.handshakes() >= errors().size(); }));
    for (const QString& error : errors()) {
        EXPECT_TRUE(error.startsWith(u"potaTimer:error:[")) << error.toStdString();
        EXPECT_TRUE(error.endsWith(u']')) << error.toStdString();
        EXPECT_TRUE(error.contains(QString::fromLatin1(GetParam().reason))) << error.toStdString();
    }
    EXPECT_TRUE(services.requests(potaAddress).empty());
    EXPECT_EQ(spotsLeft(), 0);
}

INSTANTIATE_TEST_SUITE_P(Tls, FalseIdentityTest,
                         testing::Values(FalseIdentity{"unknownAuthority", unknownCertificate, "issuer"},
                                         FalseIdentity{"anotherName", strangersCertificate, "host name"},
                                         FalseIdentity{"expired", expiredCertificate, "expired"}),
                         [](const auto& identity) { return identity.param.name; });

using FeedTroubleTest = FeedsFixture;

TEST_F(FeedTroubleTest, goesWhereAServiceSendsItButNotFromTlsToPlainText)
{
    const std::string moved = "http://www.dxsummit.fi/spots?all=1";
    const std::string plain = "http://www.wsprnet.org/pota";
    services.answer(dxSummitAddress, answering("302 Found", "", "Location: " + moved + "\r\n"));
    services.answer(moved, answering("200 OK", dxSummitAnswer(2)));
    services.answer(potaAddress, answering("302 Found", "", "Location: " + plain + "\r\n"));
    services.answer(plain, answering("200 OK", potaAnswer(1)));
    startFeeds({u"pota"_s, u"dxsummit"_s});
    serve();
    EXPECT_EQ(nextCalls(2), callsUpTo(2, 'B'));
    const auto errors = [this] { return entriesOf({u"potaTimer"_s}); };
    ASSERT_TRUE(waitUntil([&] { return !errors().isEmpty(); }));
    EXPECT_TRUE(errors().first().startsWith(u"potaTimer:error:[")) << errors().first().toStdString();
    end();
    EXPECT_TRUE(services.requests(plain).empty());
    EXPECT_EQ(spotsLeft(), 0);
}

struct Trouble {
    const char* name;
    LoopbackHttpServer::Handler pota;
    LoopbackHttpServer::Handler dxSummit;
    LoopbackHttpServer::Handler wsprnet;
    /// The pollers' log lines in the order of the feeds, then the parsers'.
    QStringList entries;
    QStringList calls;
};

void PrintTo(const Trouble& trouble, std::ostream* out)
{
    *out << trouble.name;
}

class TroubleTest : public FeedsFixture, public testing::WithParamInterface<Trouble>
{
};

TEST_P(TroubleTest, costsOneLineAndTheOthersGoOn)
{
    services.answer(potaAddress, GetParam().pota);
    services.answer(dxSummitAddress, GetParam().dxSummit);
    services.answer(wsprnetAddress, GetParam().wsprnet);
    startFeeds();
    serve();
    // An answer that takes more than a second is asked for again, which may cost a line more.
    const auto lines = [this](const QString& operation) {
        QStringList found = entriesOf({operation});
        // The reason is told in Qt's words.
        found.replaceInStrings(QRegularExpression(u":error:\\[.+\\]$"_s), u":error:[...]"_s);
        return found;
    };
    const auto logged = [&] {
        QStringList all;
        for (const QString& operation : {u"potaTimer"_s, u"dxsummitTimer"_s, u"wsprnetTimer"_s,
                                         u"parsePotaData"_s, u"parseDxSummitData"_s, u"parseWsprnetData"_s})
            all += lines(operation);
        all.removeDuplicates();
        return all;
    };
    ASSERT_TRUE(waitUntil([&] { return logged().size() >= GetParam().entries.size(); }));
    EXPECT_EQ(nextCalls(static_cast<int>(GetParam().calls.size())), GetParam().calls);
    end();
    EXPECT_EQ(logged(), GetParam().entries);
    EXPECT_EQ(spotsLeft(), 0);
    const auto expectLinesFor = [&](const std::string& address, const QString& timer, const QString& parser) {
        EXPECT_LE(static_cast<std::size_t>(lines(timer).size() + lines(parser).size()),
                  services.requests(address).size())
            << address;
    };
    expectLinesFor(potaAddress, u"potaTimer"_s, u"parsePotaData"_s);
    expectLinesFor(dxSummitAddress, u"dxsummitTimer"_s, u"parseDxSummitData"_s);
    expectLinesFor(wsprnetAddress, u"wsprnetTimer"_s, u"parseWsprnetData"_s);
}

const std::string gzipped = "Content-Encoding: gzip\r\n";

INSTANTIATE_TEST_SUITE_P(
    Web, TroubleTest,
    testing::Values(Trouble{"errorPageFromPota",
                            answering("500 Internal Server Error", errorPage),
                            answering("200 OK", ""),
                            answering("200 OK", gzip(QByteArray::fromStdString(wsprnetPage(2))), gzipped),
                            {u"dxsummitTimer:error:no data"_s, u"parsePotaData:spots is not an array"_s,
                             u"parseWsprnetData:spots:[3]"_s},
                            callsUpTo(2, 'C')},
                    Trouble{"errorPageFromDxSummit",
                            answering("200 OK", gzip(QByteArray::fromStdString(potaAnswer(2))), gzipped),
                            answering("500 Internal Server Error", errorPage),
                            answering("200 OK", ""),
                            {u"wsprnetTimer:error:no data"_s, u"parseDxSummitData:spots is not an array"_s},
                            callsUpTo(2, 'A')},
                    Trouble{"errorPageFromWsprnet",
                            answering("200 OK", ""),
                            answering("200 OK", dxSummitAnswer(2)),
                            answering("500 Internal Server Error", errorPage),
                            {u"potaTimer:error:no data"_s, u"parseWsprnetData:spots:[0]"_s},
                            callsUpTo(2, 'B')},
                    Trouble{"resets",
                            answering("200 OK", potaAnswer(2)),
                            resetting(),
                            resetting(),
                            {u"dxsummitTimer:error:[...]"_s, u"wsprnetTimer:error:[...]"_s},
                            callsUpTo(2, 'A')}),
    [](const auto& trouble) { return trouble.param.name; });

TEST_F(FeedTroubleTest, saysThatNamesAreNotFound)
{
    startFeeds(allFeeds(), {}, {});
    for (const QString& line : {u"potaTimer:error:[Host api.pota.app not found]"_s,
                                u"dxsummitTimer:error:[Host www.dxsummit.fi not found]"_s,
                                u"wsprnetTimer:error:[Host www.wsprnet.org not found]"_s})
        EXPECT_TRUE(logs(line)) << line.toStdString();
}

class FeedsEndTest : public FeedsFixture
{
protected:
    void endInOrder()
    {
        endAtOnce();
        EXPECT_EQ(home.settings(), feedSettings());
    }
};

TEST_F(FeedsEndTest, doesNotWaitForNineHundredSpots)
{
    services.answer(potaAddress, answering("200 OK", potaAnswer(900)));
    services.answer(dxSummitAddress, answering("200 OK", dxSummitAnswer(900)));
    services.answer(wsprnetAddress, answering("200 OK", wsprnetPage(900)));
    startFeeds();
    serve();
    // One answer is worked off, others wait behind it.
    EXPECT_EQ(nextCalls(3).size(), 3);
    ASSERT_TRUE(asked(potaAddress, 2));
    ASSERT_TRUE(asked(dxSummitAddress, 2));
    endInOrder();
}

TEST_F(FeedsEndTest, doesNotWaitForAnswersUnderWay)
{
    for (const std::string& address : {potaAddress, dxSummitAddress, wsprnetAddress})
        services.answer(address, hanging());
    startFeeds();
    serve();
    ASSERT_TRUE(asked(potaAddress) && asked(dxSummitAddress) && asked(wsprnetAddress));
    endInOrder();
}

TEST_F(FeedsEndTest, doesNotWaitForServersThatSayNothing)
{
    startFeeds();
    ASSERT_TRUE(waitUntil([this] { return isCalled(); }));
    endInOrder();
}

TEST_F(FeedsEndTest, doesNotWaitForANameServer)
{
    startFeeds(allFeeds(), {u"LD_PRELOAD=" SILENT_RESOLVER ""_s, u"ASAN_OPTIONS=verify_asan_link_order=0"_s});
    for (const QString& host : allHosts())
        ASSERT_TRUE(logs(u"looking for "_s + host)) << host.toStdString();
    endInOrder();
}

} // namespace
} // namespace spotwell
