// SPDX-FileCopyrightText: 2026 the spotwell developers
// SPDX-License-Identifier: MIT

#include "tests/integration/support/FeedsFixture.h"

#include <atomic>
#include <map>
#include <memory>
#include <vector>

namespace spotwell
{
namespace
{

using namespace std::chrono_literals;
using namespace Qt::StringLiterals;

/// What a listener is to see of a spot, with the source it has.
struct Expected {
    QString source;
    QStringList dictionary;
};

/// The names of a request's header fields, in alphabetical order.
QStringList fieldsOf(const QStringList& lines)
{
    QStringList names;
    for (const QString& line : lines.mid(1))
        names.append(line.section(u':', 0, 0));
    names.sort();
    return names;
}

using FeedSpotsTest = FeedsFixture;

TEST_F(FeedSpotsTest, asksEachServiceByAPlainGet)
{
    startFeeds();
    serve();
    struct Service {
        std::string address;
        QString requestLine;
        QString host;
    };
    for (const Service& service :
         {Service{potaAddress, u"GET /spot/activator HTTP/1.1"_s, u"Host: api.pota.app"_s},
          Service{dxSummitAddress, u"GET /api/v1/spots HTTP/1.1"_s, u"Host: www.dxsummit.fi"_s},
          Service{wsprnetAddress, u"GET /drupal/wsprnet/spots HTTP/1.1"_s, u"Host: www.wsprnet.org"_s}}) {
        ASSERT_TRUE(asked(service.address)) << service.address;
        const FeedServices::Request request = services.requests(service.address).front();
        EXPECT_GE(request.time - started, 1s);
        const QStringList lines = QString::fromStdString(request.head).split(u"\r\n"_s, Qt::SkipEmptyParts);
        EXPECT_EQ(lines.first(), service.requestLine);
        EXPECT_EQ(lines.count(service.host), 1);
        EXPECT_EQ(lines.count(u"User-Agent: spotwell/" SPOTWELL_VERSION ""_s), 1);
        EXPECT_EQ(fieldsOf(lines),
                  QStringList({u"Accept-Encoding"_s, u"Accept-Language"_s, u"Cache-Control"_s,
                               u"Connection"_s, u"Host"_s, u"Pragma"_s, u"User-Agent"_s}));
    }
    for (const FeedServices::Request& request : services.requests())
        EXPECT_TRUE(request.address == potaAddress || request.address == dxSummitAddress ||
                    request.address == wsprnetAddress)
            << request.address;
}

TEST_F(FeedSpotsTest, postsWhatTheServicesTell)
{
    services.answer(potaAddress, answering("200 OK", R"([
        {"spotId":42,"spotter":"K2AAA","activator":"W1AW/P","reference":"US-0001","frequency":"14062.5",
         "mode":"CW","name":"A Park","comments":"cq \u00e4 \ud800\u0000.","grid6":"FN31pr","latitude":41.7147,
         "longitude":-72.7272,"spotTime":"2024-03-01T23:59:30","source":"Web"},
        {"spotId":43,"spotter":"K2AAA-#","activator":"W1AW","reference":null,"frequency":7032,"mode":"CW",
         "comments":"RBN 12 dB","grid6":null,"latitude":null,"longitude":null,
         "spotTime":"2024-03-01T23:59:31"},
        {"spotId":44,"spotter":"","activator":"","reference":"","frequency":null,"mode":"","comments":"",
         "grid6":"","spotTime":"2024-03-01T23:59:32"},
        {"spotId":45,"spotTime":"no time"}])"));
    services.answer(dxSummitAddress, answering("200 OK", R"([
        {"id":1,"de_call":"W3XYZ-@","dx_call":"JA1XYZ","frequency":3503.5},
        {"id":2,"de_call":"OH2AAA-@","dx_call":"VK9X","frequency":21025.0,"time":"2024-03-01T12:00:01",
         "info":"up 2","dx_country":"Christmas Island","dx_latitude":-10.5,"dx_longitude":-105.7,
         "de_latitude":60.2,"de_longitude":24.5}])"));
    services.answer(wsprnetAddress,
                    answering("200 OK", "<table>\n<tr><th>Call</th></tr>\n" + wsprnetRow(7) + "</table>\n"));
    const std::vector<Expected> expected{
        {u"POTA"_s,
         {u"combinedCallsign=QString:W1AW/P"_s, u"mode=QString:CW"_s,
          u"timestamp=qlonglong:1709337570000000"_s, u"megahertz=double:14.0625"_s,
          u"comments=QString:cq \u00e4 \ufffd\ufffd."_s, u"source=QString:POTA"_s, u"grid=QString:FN31pr"_s,
          u"latitude=double:41.7147"_s, u"longitude=double:-72.7272"_s, u"dxde_call=QString:K2AAA"_s,
          u"pota_ref=QString:US-0001"_s}},
        {u"POTA"_s,
         {u"combinedCallsign=QString:W1AW"_s, u"mode=QString:CW"_s, u"timestamp=qlonglong:1709337571000000"_s,
          u"megahertz=double:7.032"_s, u"comments=QString:CW 12 dB"_s, u"source=QString:POTA"_s,
          u"dxde_call=QString:K2AAA-#"_s}},
        {u"POTA"_s,
         {u"timestamp=qlonglong:1709337572000000"_s, u"megahertz=double:0"_s, u"source=QString:POTA"_s,
          u"dxde_call=QString:"_s}},
        {u"POTA"_s, {u"megahertz=double:0"_s, u"source=QString:POTA"_s}},
        {u"DXSummit"_s,
         {u"combinedCallsign=QString:VK9X"_s, u"timestamp=qlonglong:1709294401000000"_s,
          u"megahertz=double:21.025"_s, u"comments=QString::up 2"_s, u"source=QString:DXSummit"_s,
          u"latitude=double:-10.5"_s, u"longitude=double:105.7"_s, u"dxde_call=QString:OH2AAA-@"_s,
          u"de_latitude=double:60.2"_s, u"de_longitude=double:-24.5"_s}},
        {u"DXSummit"_s,
         {u"combinedCallsign=QString:JA1XYZ"_s, u"megahertz=double:3.5035"_s, u"comments=QString::(null)"_s,
          u"source=QString:DXSummit"_s, u"dxde_call=QString:W3XYZ-@"_s}},
        {u"WSPRnet"_s,
         {u"combinedCallsign=QString:N7C"_s, u"timestamp=qlonglong:1709294820000000"_s,
          u"megahertz=double:14.097061"_s, u"comments=QString:WSPRnet"_s, u"source=QString:WSPRnet"_s,
          u"dxde_call=QString:W3XYZ"_s}}};
    startFeeds();
    serve();
    std::map<QString, QList<QStringList>> seen;
    for (std::size_t count = 0; count < expected.size(); ++count) {
        const QStringList spot = nextSpot();
        ASSERT_FALSE(spot.isEmpty());
        const QString source = spot.filter(u"source="_s).value(0).section(u':', 1);
        seen[source].append(spot);
    }
    for (const Expected& spot : expected) {
        QList<QStringList>& ofSource = seen[spot.source];
        ASSERT_FALSE(ofSource.isEmpty());
        EXPECT_EQ(ofSource.takeFirst(), spot.dictionary);
    }
    EXPECT_EQ(spotsLeft(), 0);
}

TEST_F(FeedSpotsTest, postsTenSpotsASecondTheOldestFirst)
{
    constexpr int ofEach = 8;
    services.answer(potaAddress, held(answering("200 OK", potaAnswer(ofEach))));
    services.answer(dxSummitAddress, held(answering("200 OK", dxSummitAnswer(ofEach))));
    services.answer(wsprnetAddress, held(answering("200 OK", wsprnetPage(ofEach))));
    startFeeds();
    serve();
    ASSERT_TRUE(asked(potaAddress) && asked(dxSummitAddress) && asked(wsprnetAddress));
    // Before the first spot can be known: from here on nothing can come sooner than it should.
    const Moment before = std::chrono::steady_clock::now();
    gate.open();
    QStringList calls;
    for (int count = 0; count < 3 * ofEach; ++count) {
        const QStringList next = nextCalls(1);
        ASSERT_EQ(next.size(), 1) << calls.join(u' ').toStdString();
        calls += next;
        EXPECT_GE(std::chrono::steady_clock::now() - before, count * 100ms) << count << " spots before";
    }
    // One answer after the other, whichever was the first.
    QList<QStringList> answers;
    for (qsizetype first = 0; first < calls.size(); first += ofEach)
        answers.append(calls.mid(first, ofEach));
    for (const char feed : {'A', 'B', 'C'})
        EXPECT_TRUE(answers.contains(callsUpTo(ofEach, feed))) << feed;
    EXPECT_EQ(spotsLeft(), 0);
}

class OverlappingTest : public FeedsFixture
{
protected:
    using Count = std::shared_ptr<std::atomic<int>>;

    /// Every answer from this address has these spots, and behind them one of its own. Returns how many
    /// answers there were.
    Count answerInTurn(const std::string& address, const std::string& common, std::string (*element)(int))
    {
        const auto count = std::make_shared<std::atomic<int>>(0);
        services.answer(address, held([=](LoopbackHttpServer::Connection& connection, const std::string&) {
                            connection.answer("200 OK", "[" + element(100 + ++*count) + "," + common + "]");
                        }));
        return count;
    }
};

TEST_F(OverlappingTest, forwardsEachSpotOnce)
{
    const Count potaAnswers = answerInTurn(potaAddress, potaElement(2) + "," + potaElement(1), potaElement);
    const Count dxSummitAnswers =
        answerInTurn(dxSummitAddress, dxSummitElement(2) + "," + dxSummitElement(1), dxSummitElement);
    services.answer(wsprnetAddress, held(answering("200 OK", wsprnetPage(2))));
    startFeeds();
    serve();
    // The service that has not answered is asked again every second, but for WSPRnet.
    for (const std::string& address : {potaAddress, dxSummitAddress}) {
        ASSERT_TRUE(asked(address, 3)) << address;
        const auto requests = services.requests(address);
        for (std::size_t number = 0; number < 3; ++number)
            EXPECT_GE(requests[number].time - started, (number + 1) * 1s) << address;
    }
    ASSERT_TRUE(asked(wsprnetAddress));
    EXPECT_EQ(services.requests(wsprnetAddress).size(), 1U);

    gate.open();
    QStringList calls;
    const auto allCame = [&] {
        const int answers = *potaAnswers + *dxSummitAnswers;
        return calls.size() >= 6 + answers &&
               services.requests().size() == static_cast<std::size_t>(1 + answers);
    };
    while (!allCame()) {
        const QStringList next = nextCalls(1);
        ASSERT_FALSE(next.isEmpty()) << calls.join(u' ').toStdString();
        calls += next;
    }
    QStringList once = calls;
    once.removeDuplicates();
    EXPECT_EQ(calls, once);
    for (const QString& call : callsUpTo(2, 'A') + callsUpTo(2, 'B') + callsUpTo(2, 'C'))
        EXPECT_TRUE(calls.contains(call)) << call.toStdString();
    EXPECT_EQ(services.requests(wsprnetAddress).size(), 1U);
}

} // namespace
} // namespace spotwell
