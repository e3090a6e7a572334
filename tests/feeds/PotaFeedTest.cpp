// SPDX-FileCopyrightText: 2026 the spotwell developers
// SPDX-License-Identifier: MIT

#include "feeds/PotaFeed.h"

#include "tests/fakes/FakeServices.h"
#include "tests/feeds/FakeFeedHost.h"
#include "tests/feeds/PotaSpots.h"
#include "tests/support/Printers.h"

#include <gtest/gtest.h>

namespace spotwell
{

using namespace Qt::Literals::StringLiterals;

class PotaFeedTest : public testing::Test
{
protected:
    /// The activators that an answer of these elements gives, in their order.
    QStringList parsed(const QList<QByteArray>& elements, bool showSkimmers = false)
    {
        host.clear();
        feed.parsePotaData(array(elements), showSkimmers);
        return column(host.spots, call);
    }

    /// Lets `count` spots be forwarded that no test uses.
    void fill(int count)
    {
        QList<QByteArray> elements;
        for (int i = 1; i <= count; ++i)
            elements.append(potaSpotOf(QByteArray::number(-i), "FILL"));
        ASSERT_EQ(parsed(elements).size(), count);
        ASSERT_EQ(feed.remembered().size(), count);
    }

    FakeFeedHost host;
    FakeLog log;
    PotaFeed feed{host, log};
};

TEST_F(PotaFeedTest, FillsAllFourteenFields)
{
    feed.parsePotaData(array({object(potaKeys)}), false);
    ASSERT_EQ(host.spots.size(), 1U);
    EXPECT_EQ(fields(host.spots[0]), potaFields);
    EXPECT_EQ(feed.remembered(), QSet<QJsonValue>{29000002});
    EXPECT_EQ(log.lines, QStringList());
}

TEST_F(PotaFeedTest, TakesWhatIsThere)
{
    struct Row {
        QByteArray key;
        QByteArray json;
        Field field;
        QString shown;
    };
    std::vector<Row> rows;
    const std::vector<std::pair<QByteArray, Field>> texts = {{"activator", call}, {"reference", pota},
                                                             {"mode", mode},      {"comments", comment},
                                                             {"grid6", dxgrid},   {"spotter", dxde}};
    for (const auto& [key, field] : texts) {
        if (key != "spotter")
            rows.push_back({key, "", field, u"-"_s});
        rows.push_back({key, R"("")", field, u"''"_s});
        for (const QByteArray& json : noTexts)
            rows.push_back({key, json, field, u"''"_s});
        rows.push_back({key, R"("RBN x")", field, u"'RBN x'"_s});
        rows.push_back(
            {key, R"("\u00e9\u0000\ud800")", field, u"'\u00e9"_s + QChar(u'\0') + QChar(u'\xd800') + u'\''});
        rows.push_back({key, "\"\xc3\xa9\xf0\x9f\x93\xbb\"", field, u"'\u00e9\U0001f4fb'"_s});
        rows.push_back({key, R"("\udc00\ud83d\udcfb")", field, u"'"_s + QChar(u'\xdc00') + u"\U0001f4fb'"_s});
    }
    for (const auto& [key, field] :
         {std::pair{"latitude", dxlatitude}, std::pair{"longitude", dxlongitude}}) {
        for (const QByteArray& json : noNumbers)
            rows.push_back({key, json, field, u"-"_s});
        for (const QByteArray& json : numbersOf4075)
            rows.push_back({key, json, field, u"40.75"_s});
        rows.push_back({key, "0", field, u"0"_s});
        rows.push_back({key, "-33", field, u"-33"_s});
        rows.push_back({key, "24.5", field, u"24.5"_s});
    }
    for (const QByteArray& json : noFrequencies)
        rows.push_back({"frequency", json, megahertz, u"0"_s});
    for (const QByteArray& json : frequenciesOf14062)
        rows.push_back({"frequency", json, megahertz, u"14.062"_s});
    rows.push_back({"frequency", "\"7074.55\"", megahertz, u"7.07455"_s});
    for (const QByteArray& json : noTimes)
        rows.push_back({"spotTime", json, timestamp, u"-"_s});

    const QByteArray other = potaSpotOf("1", "NEIGHBOUR");
    const QByteArray another = potaSpotOf("3", "NEIGHBOUR");
    for (const Row& row : rows) {
        PotaFeed fresh(host, log);
        host.clear();
        fresh.parsePotaData(array({other, potaSpotWith({{row.key, row.json}}), another}), false);
        // The neighbours are older.
        ASSERT_EQ(column(host.spots, call).mid(0, 2), QStringList({u"'NEIGHBOUR'"_s, u"'NEIGHBOUR'"_s}));
        ASSERT_EQ(host.spots.size(), 3U) << row.key.toStdString() << ' ' << row.json.toStdString();
        QStringList expected = potaFields;
        expected[row.field] = row.shown;
        EXPECT_EQ(fields(host.spots[2]), expected) << row.key.toStdString() << ' ' << row.json.toStdString();
        EXPECT_EQ(fresh.remembered(), (QSet<QJsonValue>{1, 3, 29000002}));
    }
    EXPECT_EQ(log.lines, QStringList());
}

TEST_F(PotaFeedTest, BeginsWithTheOldest)
{
    EXPECT_EQ(
        parsed({potaSpotOf("1", "C", "2024-03-01T14:02:00"), potaSpotOf("2", "B", "2024-03-01T14:01:59"),
                potaSpotOf("3", "A", "2023-12-31T23:59:59")}),
        QStringList({u"'A'"_s, u"'B'"_s, u"'C'"_s}));
    EXPECT_EQ(
        parsed({potaSpotOf("11", "D", "2024-03-01T14:02:00"), potaSpotOf("12", "A", "1969-12-31T23:59:59"),
                potaSpotOf("13", "E", "2024-03-01T14:02:01"), potaSpotOf("14", "B", "1970-01-01T00:00:00"),
                potaSpotOf("15", "C", "2024-03-01T13:02:02")}),
        QStringList({u"'A'"_s, u"'B'"_s, u"'C'"_s, u"'D'"_s, u"'E'"_s}));
}

TEST_F(PotaFeedTest, KeepsTheAnswersOrderWhereTimesAreEqualAndEndsWithTheTimeless)
{
    QList<QByteArray> elements;
    QStringList expected;
    // Enough for an unstable sort to show.
    for (int i = 0; i < 60; ++i) {
        const QByteArray number = QByteArray::number(i);
        elements.append(potaSpotOf(number, "N" + number,
                                   i % 3 == 0   ? "2024-02-30T00:00:00"
                                   : i % 3 == 1 ? "2024-03-01T14:00:01"
                                                : "2024-03-01T14:00:00"));
    }
    for (const int remainder : {2, 1, 0}) {
        for (int i = remainder; i < 60; i += 3)
            expected.append(u"'N%1'"_s.arg(i));
    }
    EXPECT_EQ(parsed(elements), expected);
    EXPECT_EQ(column(host.spots, timestamp).count(u"-"_s), 20);
}

TEST_F(PotaFeedTest, ForwardsEachIdOnce)
{
    const QList<QByteArray> answer = {potaSpotOf("1", "A"), potaSpotOf("2", "B")};
    EXPECT_EQ(parsed(answer), QStringList({u"'A'"_s, u"'B'"_s}));
    EXPECT_EQ(parsed(answer), QStringList());
    EXPECT_EQ(host.journal, QStringList());
    // Whatever else changed; new ones are not held back.
    EXPECT_EQ(parsed({potaSpotOf("1.0", "C"), potaSpotOf("3", "D"), potaSpotOf("20e-1", "E")}),
              QStringList(u"'D'"_s));
    EXPECT_EQ(feed.remembered(), (QSet<QJsonValue>{1, 2, 3}));
}

TEST_F(PotaFeedTest, ForwardsTheOldestOfOneId)
{
    EXPECT_EQ(
        parsed({potaSpotOf("1", "NEWER", "2024-03-01T14:00:02"), potaSpotOf("2", "B", "2024-03-01T14:00:03"),
                potaSpotOf("1.0", "OLDER", "2024-03-01T14:00:01"), potaSpotOf("1", "TIMELESS", "")}),
        QStringList({u"'OLDER'"_s, u"'B'"_s}));
    EXPECT_EQ(host.journal, QStringList({u"spot"_s, u"pause"_s, u"spot"_s, u"pause"_s}));
}

TEST_F(PotaFeedTest, KnowsSpotsWithoutANumberByAllTheySay)
{
    for (const QByteArray id : {"", "null", R"("7")", "true", "[7]", R"({"7":7})"}) {
        const QList<QByteArray> answer = {potaSpotOf(id, "A"), potaSpotOf("1", "N" + id.toHex()),
                                          potaSpotOf(id, "B"), potaSpotOf(id, "A")};
        PotaFeed fresh(host, log);
        host.clear();
        fresh.parsePotaData(array(answer), false);
        EXPECT_EQ(column(host.spots, call),
                  QStringList({u"'A'"_s, u"'N%1'"_s.arg(QString::fromLatin1(id.toHex())), u"'B'"_s}))
            << id.toStdString();
        EXPECT_EQ(fresh.remembered().size(), 3);
        host.clear();
        fresh.parsePotaData(array(answer), false);
        EXPECT_EQ(column(host.spots, call), QStringList()) << id.toStdString();
    }
}

TEST_F(PotaFeedTest, ForwardsSeveralActivatorsOfOnePark)
{
    EXPECT_EQ(parsed({potaSpotOf("1", "A"), potaSpotOf("2", "B"), potaSpotOf("3", "A")}),
              QStringList({u"'A'"_s, u"'B'"_s, u"'A'"_s}));
    EXPECT_EQ(column(host.spots, pota), QStringList({u"'US-1234'"_s, u"'US-1234'"_s, u"'US-1234'"_s}));
}

TEST_F(PotaFeedTest, ForgetsAllBeyondFiveThousand)
{
    const QList<QByteArray> answer = {potaSpotOf("-1", "A"), potaSpotOf("-2", "B"), potaSpotOf("-1", "C")};
    fill(5000);
    EXPECT_EQ(parsed(answer), QStringList());
    EXPECT_EQ(feed.remembered().size(), 5000);
    EXPECT_EQ(parsed({potaSpotOf("1", "D")}), QStringList(u"'D'"_s));
    EXPECT_EQ(feed.remembered().size(), 5001);
    EXPECT_EQ(parsed(answer), QStringList({u"'A'"_s, u"'B'"_s}));
    EXPECT_EQ(feed.remembered(), (QSet<QJsonValue>{-1, -2}));
}

TEST_F(PotaFeedTest, TellsTheLogOfWhatIsNoArray)
{
    fill(5001);
    host.clear();
    for (const QByteArray& body : noArrays) {
        log.lines.clear();
        feed.parsePotaData(body, true);
        EXPECT_EQ(log.lines, QStringList(u"parsePotaData:spots is not an array"_s)) << body.toStdString();
    }
    log.lines.clear();
    feed.parsePotaData("[]", true);
    EXPECT_EQ(log.lines, QStringList(u"parsePotaData:spots:[0]"_s));
    EXPECT_EQ(host.journal, QStringList());
    EXPECT_EQ(feed.remembered().size(), 5001);
}

TEST_F(PotaFeedTest, SkipsElementsThatAreNoObjects)
{
    EXPECT_EQ(parsed({"7", potaSpotOf("1", "A"), "null", R"("text")", potaSpotOf("2", "B"), "[]", "true",
                      array({potaSpotOf("3", "C")})}),
              QStringList({u"'A'"_s, u"'B'"_s}));
    EXPECT_EQ(
        log.lines,
        QStringList(
            {u"parsePotaData:spot is not an object:[0]"_s, u"parsePotaData:spot is not an object:[2]"_s,
             u"parsePotaData:spot is not an object:[3]"_s, u"parsePotaData:spot is not an object:[5]"_s,
             u"parsePotaData:spot is not an object:[6]"_s, u"parsePotaData:spot is not an object:[7]"_s}));
    EXPECT_EQ(feed.remembered(), (QSet<QJsonValue>{1, 2}));

    // Each answer anew.
    for (int i = 0; i < 2; ++i) {
        log.lines.clear();
        QList<QByteArray> strays(25, "1");
        parsed(strays);
        EXPECT_EQ(log.lines.size(), 21);
        EXPECT_EQ(log.lines.value(19), u"parsePotaData:spot is not an object:[19]"_s);
        EXPECT_EQ(log.lines.value(20), u"parsePotaData:more spots are not objects:[5]"_s);
    }
}

TEST_F(PotaFeedTest, PausesATenthOfASecondAfterEachSpot)
{
    parsed({potaSpotOf("1", "A")});
    parsed({potaSpotOf("1", "A"), potaSpotOf("2", "B"), "7", potaSpotWith({{"spotter", R"("N0CALL-#")"}}),
            potaSpotOf("3", "C")});
    EXPECT_EQ(host.journal, QStringList({u"spot"_s, u"pause"_s, u"spot"_s, u"pause"_s}));
    EXPECT_EQ(host.pauses, (std::vector{Seconds{0.1}, Seconds{0.1}}));
}

TEST_F(PotaFeedTest, StopsWhenTheProgramEnds)
{
    host.endsAtPause = 2;
    const QList<QByteArray> answer = {potaSpotOf("1", "A"), potaSpotOf("2", "B"), potaSpotOf("3", "C")};
    EXPECT_EQ(parsed(answer), QStringList({u"'A'"_s, u"'B'"_s}));
    EXPECT_EQ(host.journal, QStringList({u"spot"_s, u"pause"_s, u"spot"_s, u"pause"_s}));
    EXPECT_EQ(feed.remembered(), (QSet<QJsonValue>{1, 2}));
    EXPECT_EQ(parsed(answer), QStringList(u"'C'"_s));
}

TEST_F(PotaFeedTest, TakesTenThousandRows)
{
    QList<QByteArray> elements;
    QStringList expected;
    for (int i = 0; i < 10000; ++i) {
        // 7919 and 10000 share no factor, so each second of the night comes once.
        const int second = i * 7919 % 10000;
        const QTime time = QTime(0, 0).addSecs(second);
        elements.append(potaSpotOf(QByteArray::number(i), "N" + QByteArray::number(second),
                                   "2024-03-01T" + time.toString(u"HH:mm:ss").toLatin1()));
        expected.append(u"'N%1'"_s.arg(i));
    }
    EXPECT_EQ(parsed(elements), expected);
    EXPECT_EQ(host.pauses.size(), 10000U);
    EXPECT_EQ(feed.remembered().size(), 10000);
    // Too many to be kept: the same answer goes out whole again.
    EXPECT_EQ(parsed(elements), expected);
}

TEST_F(PotaFeedTest, AnEntryThatSaysNothingIsForwardedAsItIs)
{
    const QByteArray nulls =
        R"({"spotId":null,"spotter":null,"activator":null,"reference":null,"frequency":null,)"
        R"("mode":null,"name":null,"comments":null,"grid6":null,"latitude":null,)"
        R"("longitude":null,"spotTime":null})";
    feed.parsePotaData(array({nulls, "{}", potaSpotOf("1", "N", "2024-03-01T14:28:59"), nulls, "{}"}), true);
    ASSERT_EQ(host.spots.size(), 3U);
    EXPECT_EQ(fields(host.spots[0])[call], u"'N'"_s);
    EXPECT_EQ(fields(host.spots[1]),
              (QStringList{u"''"_s, u"''"_s, u"'POTA'"_s, u"-"_s, u"0"_s, u"''"_s, u"''"_s, u"-"_s, u"-"_s,
                           u"-"_s, u"-"_s, u"''"_s, u"''"_s, u"'pota'"_s}));
    EXPECT_EQ(fields(host.spots[2]),
              (QStringList{u"-"_s, u"-"_s, u"'POTA'"_s, u"-"_s, u"0"_s, u"-"_s, u"-"_s, u"-"_s, u"-"_s,
                           u"-"_s, u"-"_s, u"-"_s, u"-"_s, u"'pota'"_s}));
}

TEST_F(PotaFeedTest, AByteThatIsNoTextCostsNothing)
{
    feed.parsePotaData(
        array({potaSpotOf("1", "A", "2024-03-01T14:28:57"), potaSpotOf("2", "B\xe9", "2024-03-01T14:28:58"),
               potaSpotOf("3", "C", "2024-03-01T14:28:59")}),
        false);
    EXPECT_EQ(column(host.spots, call), QStringList({u"'A'"_s, u"'B\ufffd'"_s, u"'C'"_s}));
    EXPECT_TRUE(log.lines.isEmpty());
}

} // namespace spotwell
