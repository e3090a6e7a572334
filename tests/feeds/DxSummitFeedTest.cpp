// SPDX-FileCopyrightText: 2026 the spotwell developers
// SPDX-License-Identifier: MIT

#include "feeds/DxSummitFeed.h"

#include "tests/fakes/FakeServices.h"
#include "tests/feeds/FakeFeedHost.h"
#include "tests/feeds/SpotTexts.h"
#include "tests/support/Printers.h"

#include <gtest/gtest.h>

#include <cmath>

namespace spotwell
{

namespace
{

using namespace Qt::Literals::StringLiterals;

/// A spot as the service writes it, with a key that is not for us.
const Keys dxSummitKeys = {
    {"id", "60000002"},         {"info", R"("up 2")"},        {"dx_country", R"("Germany")"},
    {"frequency", "14074.5"},   {"dx_latitude", "52.5"},      {"dx_longitude", "-13.25"},
    {"de_latitude", "-40.75"},  {"de_longitude", "74.5"},     {"time", R"("2024-03-01T14:28:59")"},
    {"dx_call", R"("DL1ABC")"}, {"de_call", R"("N0CALL-@")"}, {"mode", R"("CW")"}};

const QStringList dxSummitFields = {
    u"'DL1ABC'"_s, u"'N0CALL-@'"_s, u"'DXSummit'"_s, u"2024-03-01T14:28:59.000Z"_s,
    u"14.0745"_s,  u"''"_s,         u"''"_s,         u"52.5"_s,
    u"13.25"_s,    u"-40.75"_s,     u"-74.5"_s,      u"''"_s,
    u"':up 2'"_s,  u"'dxsu'"_s};

QByteArray dxSummitSpotWith(const Keys& other)
{
    return object(with(dxSummitKeys, other));
}

QByteArray dxSummitSpotOf(const QByteArray& id, const QByteArray& dxCall)
{
    return dxSummitSpotWith({{"id", id}, {"dx_call", '"' + dxCall + '"'}});
}

} // namespace

class DxSummitFeedTest : public testing::Test
{
protected:
    /// The stations heard of the spots that an answer of these elements gives, in their order.
    QStringList parsed(const QList<QByteArray>& elements, bool dxsExclusive = false)
    {
        host.clear();
        feed.parseDxSummitData(array(elements), dxsExclusive);
        return column(host.spots, call);
    }

    /// Lets `count` spots be forwarded that no test uses.
    void fill(int count)
    {
        QList<QByteArray> elements;
        for (int i = 1; i <= count; ++i)
            elements.append(dxSummitSpotOf(QByteArray::number(-i), "FILL"));
        ASSERT_EQ(parsed(elements).size(), count);
        ASSERT_EQ(feed.remembered().size(), count);
    }

    FakeFeedHost host;
    FakeLog log;
    DxSummitFeed feed{host, log};
};

TEST_F(DxSummitFeedTest, FillsAllFourteenFields)
{
    feed.parseDxSummitData(array({object(dxSummitKeys)}), false);
    ASSERT_EQ(host.spots.size(), 1U);
    EXPECT_EQ(fields(host.spots[0]), dxSummitFields);
    EXPECT_EQ(feed.remembered(), QSet<QJsonValue>{60000002});
    EXPECT_EQ(log.lines, QStringList());
}

TEST_F(DxSummitFeedTest, TakesWhatIsThere)
{
    struct Row {
        QByteArray key;
        QByteArray json;
        Field field;
        QString shown;
    };
    std::vector<Row> rows;
    rows.push_back({"info", "", comment, u"':(null)'"_s});
    rows.push_back({"info", R"("")", comment, u"':'"_s});
    rows.push_back({"info", "\":(null)\"", comment, u"'::(null)'"_s});
    for (const QByteArray json : {"null", "[]", R"(["x"])", "{}", R"({"x":"x"})"})
        rows.push_back({"info", json, comment, u"''"_s});
    for (const auto& [json, text] :
         {std::pair{"73", u"':73'"_s}, std::pair{"0", u"':0'"_s}, std::pair{"-5.50", u"':-5.5'"_s},
          std::pair{"true", u"':1'"_s}, std::pair{"false", u"':0'"_s}, std::pair{R"("73")", u"':73'"_s}})
        rows.push_back({"info", json, comment, text});
    for (const auto& [key, field, prefix] :
         {std::tuple{"info", comment, u"':"_s}, std::tuple{"dx_call", call, u"'"_s},
          std::tuple{"de_call", dxde, u"'"_s}}) {
        rows.push_back({key, R"("\u00e9\u0000\ud800")", field,
                        prefix + u'\u00e9' + QChar(u'\0') + QChar(u'\xd800') + u'\''});
        rows.push_back({key, "\"\xc3\xa9\xf0\x9f\x93\xbb\"", field, prefix + u"\u00e9\U0001f4fb'"_s});
        rows.push_back({key, R"("\udc00\ud83d\udcfb")", field, prefix + QChar(u'\xdc00') + u"\U0001f4fb'"_s});
    }
    for (const auto& [key, field, negated] :
         {std::tuple{"dx_latitude", dxlatitude, false}, std::tuple{"dx_longitude", dxlongitude, true},
          std::tuple{"de_latitude", delatitude, false}, std::tuple{"de_longitude", delongitude, true}}) {
        for (const QByteArray& json : noNumbers)
            rows.push_back({key, json, field, u"-"_s});
        for (const QByteArray& json : numbersOf4075)
            rows.push_back({key, json, field, negated ? u"-40.75"_s : u"40.75"_s});
        rows.push_back({key, "\"-71.2\"", field, negated ? u"71.2"_s : u"-71.2"_s});
        rows.push_back({key, "24.5", field, negated ? u"-24.5"_s : u"24.5"_s});
        rows.push_back({key, "-71.2", field, negated ? u"71.2"_s : u"-71.2"_s});
        rows.push_back({key, "-71", field, negated ? u"71"_s : u"-71"_s});
    }
    for (const QByteArray& json : noFrequencies)
        rows.push_back({"frequency", json, megahertz, u"0"_s});
    for (const QByteArray& json : frequenciesOf14062)
        rows.push_back({"frequency", json, megahertz, u"14.062"_s});
    rows.push_back({"frequency", "\"7074.55\"", megahertz, u"7.07455"_s});
    for (const QByteArray& json : noTimes)
        rows.push_back({"time", json, timestamp, u"-"_s});
    // Read and not used.
    for (const QByteArray json : {"", "null", "\"\"", "7", "[]"})
        rows.push_back({"dx_country", json, source, u"'DXSummit'"_s});

    for (const Row& row : rows) {
        DxSummitFeed fresh(host, log);
        host.clear();
        fresh.parseDxSummitData(array({dxSummitSpotOf("3", "NEWER"), dxSummitSpotWith({{row.key, row.json}}),
                                       dxSummitSpotOf("1", "OLDER")}),
                                false);
        ASSERT_EQ(host.spots.size(), 3U) << row.key.toStdString() << ' ' << row.json.toStdString();
        EXPECT_EQ(column(host.spots, call).first(), u"'OLDER'"_s);
        EXPECT_EQ(column(host.spots, call).last(), u"'NEWER'"_s);
        QStringList expected = dxSummitFields;
        expected[row.field] = row.shown;
        EXPECT_EQ(fields(host.spots[1]), expected) << row.key.toStdString() << ' ' << row.json.toStdString();
        EXPECT_EQ(fresh.remembered(), (QSet<QJsonValue>{1, 3, 60000002}));
    }
    EXPECT_EQ(log.lines, QStringList());
}

TEST_F(DxSummitFeedTest, WantsTwoLegalCalls)
{
    struct Row {
        QByteArray json;
        bool forwarded;
    };
    const std::vector<Row> rows = {
        {R"("X1X")", true},   {R"("-")", true},       {R"("X1X\t")", true},  {R"("7")", true},
        {R"("")", false},     {R"(" ")", false},      {R"("X1X ")", false},  {R"(" X1X")", false},
        {R"("X1 X")", false}, {R"("\u0020")", false}, {"null", false},       {"", false},
        {"7", false},         {"true", false},        {R"(["X1X"])", false}, {R"({"X1X":"X1X"})", false},
    };
    for (const QByteArray key : {"dx_call", "de_call"}) {
        for (const Row& row : rows) {
            DxSummitFeed fresh(host, log);
            host.clear();
            fresh.parseDxSummitData(array({dxSummitSpotOf("3", "NEWER"), dxSummitSpotWith({{key, row.json}}),
                                           dxSummitSpotOf("1", "OLDER")}),
                                    false);
            EXPECT_EQ(host.spots.size(), row.forwarded ? 3U : 2U)
                << key.toStdString() << row.json.toStdString();
            EXPECT_EQ(host.pauses.size(), host.spots.size());
            EXPECT_EQ(fresh.remembered(), (QSet<QJsonValue>{1, 3, 60000002})) << row.json.toStdString();
        }
    }
    EXPECT_EQ(log.lines, QStringList());
}

TEST_F(DxSummitFeedTest, ForwardsOnlyItsOwnWhenExclusive)
{
    struct Row {
        QByteArray spotter;
        bool exclusive;
    };
    const std::vector<Row> rows = {
        {"N0CALL-@", true},         {"-@", true},        {"N0CALL@-@", true},
        {"N0CALL", false},          {"N0CALL@", false},  {"N0CALL-", false},
        {"N0CALL-@x", false},       {"-@N0CALL", false}, {"N0CALL@-", false},
        {"N0CALL-\\u0000@", false},
    };
    for (const Row& row : rows) {
        const QByteArray answer = array({dxSummitSpotWith({{"de_call", '"' + row.spotter + '"'}})});
        DxSummitFeed fresh(host, log);
        host.clear();
        fresh.parseDxSummitData(answer, true);
        EXPECT_EQ(host.spots.size(), row.exclusive ? 1U : 0U) << row.spotter.toStdString();
        EXPECT_EQ(host.pauses.size(), host.spots.size());
        if (row.exclusive) {
            EXPECT_EQ(column(host.spots, dxde),
                      QStringList(u'\'' + QString::fromLatin1(row.spotter) + u'\''));
        }
        // What was dropped stays dropped when the box is turned off.
        EXPECT_EQ(fresh.remembered(), QSet<QJsonValue>{60000002});
        host.clear();
        fresh.parseDxSummitData(answer, false);
        EXPECT_EQ(host.spots.size(), 0U) << row.spotter.toStdString();
        // Without the box it would have gone at once.
        DxSummitFeed inclusive(host, log);
        inclusive.parseDxSummitData(answer, false);
        EXPECT_EQ(host.spots.size(), 1U) << row.spotter.toStdString();
    }
    EXPECT_EQ(log.lines, QStringList());
}

TEST_F(DxSummitFeedTest, BeginsWithTheLastWhateverTheTimes)
{
    const auto at = [](const QByteArray& id, const QByteArray& dxCall, const QByteArray& time) {
        return dxSummitSpotWith({{"id", id}, {"dx_call", '"' + dxCall + '"'}, {"time", '"' + time + '"'}});
    };
    EXPECT_EQ(parsed({at("1", "C", "2024-03-01T14:00:02"), at("2", "B", "2024-03-01T14:00:01"),
                      at("3", "A", "2024-03-01T14:00:00")}),
              QStringList({u"'A'"_s, u"'B'"_s, u"'C'"_s}));
    EXPECT_EQ(parsed({at("4", "D", "2024-03-01T14:00:00"), at("6", "C", ""),
                      at("5", "B", "2024-03-01T14:00:02"), at("7", "A", "2024-03-01T14:00:01")}),
              QStringList({u"'A'"_s, u"'B'"_s, u"'C'"_s, u"'D'"_s}));
}

TEST_F(DxSummitFeedTest, ExaminesEachIdOnce)
{
    const QList<QByteArray> answer = {dxSummitSpotOf("1", "A"), dxSummitSpotOf("2", "B"),
                                      dxSummitSpotOf("1.0", "C")};
    EXPECT_EQ(parsed(answer), QStringList({u"'C'"_s, u"'B'"_s}));
    EXPECT_EQ(host.journal, QStringList({u"spot"_s, u"pause"_s, u"spot"_s, u"pause"_s}));
    EXPECT_EQ(parsed(answer), QStringList());
    EXPECT_EQ(host.journal, QStringList());
    // One whose call was not legal does not get another try; new ones are not held back.
    EXPECT_EQ(parsed({dxSummitSpotOf("3", "D"), dxSummitSpotOf("4", "E E"), dxSummitSpotOf("10e-1", "F")}),
              QStringList(u"'D'"_s));
    EXPECT_EQ(parsed({dxSummitSpotOf("4", "EE")}), QStringList());
    EXPECT_EQ(feed.remembered(), (QSet<QJsonValue>{1, 2, 3, 4}));
}

TEST_F(DxSummitFeedTest, KnowsSpotsWithoutANumberByAllTheySay)
{
    for (const QByteArray id : {"", "null", R"("7")", "true", "[7]", R"({"7":7})"}) {
        const QByteArray answer = array({dxSummitSpotOf(id, "A"), dxSummitSpotOf("1", "N"),
                                         dxSummitSpotOf(id, "B"), dxSummitSpotOf(id, "A")});
        DxSummitFeed fresh(host, log);
        host.clear();
        fresh.parseDxSummitData(answer, false);
        EXPECT_EQ(column(host.spots, call), QStringList({u"'A'"_s, u"'B'"_s, u"'N'"_s})) << id.toStdString();
        EXPECT_EQ(fresh.remembered().size(), 3);
        host.clear();
        fresh.parseDxSummitData(answer, false);
        EXPECT_EQ(column(host.spots, call), QStringList()) << id.toStdString();
    }
}

TEST_F(DxSummitFeedTest, ForgetsAllBeyondFiveThousand)
{
    const QList<QByteArray> answer = {dxSummitSpotOf("-1", "B"), dxSummitSpotOf("-2", "A"),
                                      dxSummitSpotOf("-3", "X X")};
    fill(5000);
    EXPECT_EQ(parsed(answer), QStringList());
    EXPECT_EQ(feed.remembered().size(), 5000);
    EXPECT_EQ(parsed({dxSummitSpotOf("1", "D")}), QStringList(u"'D'"_s));
    EXPECT_EQ(feed.remembered().size(), 5001);
    EXPECT_EQ(parsed(answer), QStringList({u"'A'"_s, u"'B'"_s}));
    EXPECT_EQ(feed.remembered(), (QSet<QJsonValue>{-1, -2, -3}));
}

TEST_F(DxSummitFeedTest, ForgetsForAnAnswerWithoutSpotsToo)
{
    fill(5001);
    EXPECT_EQ(parsed({}), QStringList());
    EXPECT_EQ(feed.remembered(), QSet<QJsonValue>());
    EXPECT_EQ(log.lines, QStringList());
}

TEST_F(DxSummitFeedTest, TellsTheLogOfWhatIsNoArray)
{
    fill(5001);
    host.clear();
    for (const QByteArray& body : noArrays) {
        log.lines.clear();
        feed.parseDxSummitData(body, false);
        EXPECT_EQ(log.lines, QStringList(u"parseDxSummitData:spots is not an array"_s)) << body.toStdString();
    }
    EXPECT_EQ(host.journal, QStringList());
    EXPECT_EQ(feed.remembered().size(), 5001);
}

TEST_F(DxSummitFeedTest, SkipsElementsThatAreNoObjects)
{
    EXPECT_EQ(parsed({"7", dxSummitSpotOf("1", "B"), "null", R"("text")", dxSummitSpotOf("2", "A"), "[]",
                      "true", array({dxSummitSpotOf("3", "C")})}),
              QStringList({u"'A'"_s, u"'B'"_s}));
    EXPECT_EQ(log.lines, QStringList({u"parseDxSummitData:spot is not an object:[7]"_s,
                                      u"parseDxSummitData:spot is not an object:[6]"_s,
                                      u"parseDxSummitData:spot is not an object:[5]"_s,
                                      u"parseDxSummitData:spot is not an object:[3]"_s,
                                      u"parseDxSummitData:spot is not an object:[2]"_s,
                                      u"parseDxSummitData:spot is not an object:[0]"_s}));
    EXPECT_EQ(feed.remembered(), (QSet<QJsonValue>{1, 2}));

    // Each answer anew.
    for (int i = 0; i < 2; ++i) {
        log.lines.clear();
        QList<QByteArray> strays(25, "1");
        parsed(strays);
        EXPECT_EQ(log.lines.size(), 21);
        EXPECT_EQ(log.lines.value(19), u"parseDxSummitData:spot is not an object:[5]"_s);
        EXPECT_EQ(log.lines.value(20), u"parseDxSummitData:more spots are not objects:[5]"_s);
    }
}

TEST_F(DxSummitFeedTest, PausesATenthOfASecondAfterEachSpot)
{
    parsed({dxSummitSpotOf("1", "A")});
    parsed({dxSummitSpotOf("1", "A"), dxSummitSpotOf("2", "B"), "7", dxSummitSpotOf("4", "X X"),
            dxSummitSpotOf("3", "C")});
    EXPECT_EQ(host.journal, QStringList({u"spot"_s, u"pause"_s, u"spot"_s, u"pause"_s}));
    EXPECT_EQ(host.pauses, (std::vector{Seconds{0.1}, Seconds{0.1}}));
}

TEST_F(DxSummitFeedTest, StopsWhenTheProgramEnds)
{
    host.endsAtPause = 2;
    const QList<QByteArray> answer = {dxSummitSpotOf("1", "C"), dxSummitSpotOf("2", "B"),
                                      dxSummitSpotOf("3", "A")};
    EXPECT_EQ(parsed(answer), QStringList({u"'A'"_s, u"'B'"_s}));
    EXPECT_EQ(host.journal, QStringList({u"spot"_s, u"pause"_s, u"spot"_s, u"pause"_s}));
    EXPECT_EQ(feed.remembered(), (QSet<QJsonValue>{2, 3}));
    EXPECT_EQ(parsed(answer), QStringList(u"'C'"_s));
}

TEST_F(DxSummitFeedTest, TakesTenThousandRows)
{
    QList<QByteArray> elements;
    QStringList expected;
    for (int i = 0; i < 10000; ++i) {
        elements.append(dxSummitSpotOf(QByteArray::number(i), "N" + QByteArray::number(i)));
        expected.prepend(u"'N%1'"_s.arg(i));
    }
    EXPECT_EQ(parsed(elements), expected);
    EXPECT_EQ(host.pauses.size(), 10000U);
    EXPECT_EQ(feed.remembered().size(), 10000);
    // Too many to be kept: the same answer goes out whole again.
    EXPECT_EQ(parsed(elements), expected);
}

TEST_F(DxSummitFeedTest, NegatesAZeroToo)
{
    feed.parseDxSummitData(array({dxSummitSpotWith({{"dx_longitude", "0"}, {"de_longitude", "-0.0"}})}),
                           false);
    ASSERT_EQ(host.spots.size(), 1U);
    EXPECT_TRUE(std::signbit(host.spots[0].dxlongitude.value_or(1.0)));
    EXPECT_EQ(host.spots[0].delongitude, 0.0);
}

TEST_F(DxSummitFeedTest, AnOddEntryCostsItsNeighboursNothing)
{
    const QByteArray nulls =
        R"({"id":null,"info":null,"frequency":null,"dx_latitude":null,"dx_longitude":null,)"
        R"("de_latitude":null,"de_longitude":null,"time":null,"dx_call":null,"de_call":null})";
    for (const QByteArray& odd :
         {QByteArray("{}"), nulls, dxSummitSpotWith({{"id", "1"}, {"dx_call", "\"X \xe9\""}}),
          dxSummitSpotWith({{"id", "1"}, {"de_call", "\"\""}})}) {
        DxSummitFeed fresh(host, log);
        host.clear();
        fresh.parseDxSummitData(array({dxSummitSpotOf("3", "NEWER"), odd, dxSummitSpotOf("2", "OLDER")}),
                                false);
        EXPECT_EQ(column(host.spots, call), QStringList({u"'OLDER'"_s, u"'NEWER'"_s})) << odd.toStdString();
        EXPECT_EQ(fresh.remembered().size(), 3);
    }
    EXPECT_TRUE(log.lines.isEmpty());
}

} // namespace spotwell
