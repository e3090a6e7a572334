// SPDX-FileCopyrightText: 2026 the spotwell developers
// SPDX-License-Identifier: MIT

#include "delivery/SpotNotification.h"

#include "tests/fakes/FakeServices.h"
#include "tests/support/Printers.h"

#include <gtest/gtest.h>

#include <limits>

namespace spotwell
{

namespace
{

using namespace std::chrono_literals;

const TimePoint at1428 = std::chrono::sys_days{std::chrono::year{2024} / 3 / 1} + 14h + 28min + 59s;

Spot potaSpot()
{
    Spot spot;
    spot.call = QStringLiteral("X1X");
    spot.dxde = QStringLiteral("N0CALL");
    spot.source = QStringLiteral("POTA");
    spot.timestamp = at1428;
    spot.megahertz = 14.074;
    spot.mode = QStringLiteral("");
    spot.dxgrid = QStringLiteral("");
    spot.pota = QStringLiteral("");
    spot.comment = QStringLiteral("cq");
    spot.service = QStringLiteral("pota");
    return spot;
}

QStringList keys(const UserInfo& info)
{
    QStringList result;
    for (const auto& entry : info)
        result.append(entry.first);
    return result;
}

const UserInfoValue& value(const UserInfo& info, const QString& key)
{
    for (const auto& entry : info) {
        if (entry.first == key)
            return entry.second;
    }
    static const UserInfoValue none = QStringLiteral("no such key");
    return none;
}

} // namespace

TEST(SpotConsoleLine, HasAClustersColumns)
{
    const QString line = spotConsoleLine(potaSpot());
    EXPECT_EQ(line, QStringLiteral(
                        "pota DX de N0CALL     14074.0  X1X          cq                             1428Z"));
    EXPECT_EQ(line.size(), 80);
    EXPECT_EQ(line.mid(0, 4), QStringLiteral("pota"));
    EXPECT_EQ(line.mid(11, 9), QStringLiteral("N0CALL   "));
    EXPECT_EQ(line.mid(21, 8), QStringLiteral(" 14074.0"));
    EXPECT_EQ(line.mid(31, 12), QStringLiteral("X1X         "));
    EXPECT_EQ(line.mid(44, 30), QStringLiteral("cq").leftJustified(30));
    EXPECT_EQ(line.mid(75, 5), QStringLiteral("1428Z"));
}

TEST(SpotConsoleLine, CutsLongTextsToTheirColumns)
{
    Spot spot = potaSpot();
    spot.dxde = QStringLiteral("OH2/N0CALL-");
    spot.call = QStringLiteral("VP8/X1XYZ/MM/QRP");
    spot.comment = QStringLiteral("123456789012345678901234567890X");
    const QString line = spotConsoleLine(spot);
    EXPECT_EQ(line.size(), 80);
    EXPECT_EQ(line.mid(11, 10), QStringLiteral("OH2/N0CAL "));
    EXPECT_EQ(line.mid(31, 13), QStringLiteral("VP8/X1XYZ/MM "));
    EXPECT_EQ(line.mid(44, 31), QStringLiteral("123456789012345678901234567890 "));
    // Exactly as long as the column: nothing cut, nothing added.
    spot.dxde = QStringLiteral("123456789");
    spot.call = QStringLiteral("123456789012");
    spot.comment = QStringLiteral("123456789012345678901234567890");
    EXPECT_EQ(
        spotConsoleLine(spot),
        QStringLiteral("pota DX de 123456789  14074.0  123456789012 123456789012345678901234567890 1428Z"));
}

TEST(SpotConsoleLine, ShowsTheFrequencyInKilohertzWithOneDecimal)
{
    struct Row {
        std::optional<double> megahertz;
        const char* shown;
    };
    const Row rows[] = {{7.0745, "  7074.5"},    {14.062, " 14062.0"},       {0.1357, "   135.7"},
                        {10368.1, "10368100.0"}, {std::nullopt, "     0.0"}, {-1.0, " -1000.0"},
                        {144.30005, "144300.0"}, {14.07425, " 14074.2"}};
    for (const Row& row : rows) {
        Spot spot = potaSpot();
        spot.megahertz = row.megahertz;
        const QString shown = QString::fromLatin1(row.shown);
        EXPECT_EQ(spotConsoleLine(spot).mid(21, shown.size()), shown);
    }
}

TEST(SpotConsoleLine, AddsTheParkBehindOneSpace)
{
    Spot spot = potaSpot();
    spot.pota = QStringLiteral("US-0001");
    EXPECT_TRUE(spotConsoleLine(spot).endsWith(QStringLiteral(" 1428Z US-0001")));
    spot.pota.reset();
    EXPECT_TRUE(spotConsoleLine(spot).endsWith(QStringLiteral(" 1428Z")));
    spot.pota = QStringLiteral("");
    EXPECT_TRUE(spotConsoleLine(spot).endsWith(QStringLiteral(" 1428Z")));
}

TEST(SpotConsoleLine, KeepsItsColumnsWithoutAnyValue)
{
    EXPECT_EQ(spotConsoleLine(Spot{}), QStringLiteral(" DX de ") + QString(9, u' ') +
                                           QStringLiteral("      0.0  ") + QString(12, u' ') + u' ' +
                                           QString(30, u' ') + u' ' + QString(5, u' '));
}

TEST(SpotConsoleLine, SurvivesNumbersThatAreNone)
{
    Spot spot = potaSpot();
    for (const double odd : {std::numeric_limits<double>::infinity(),
                             std::numeric_limits<double>::quiet_NaN(), std::numeric_limits<double>::max()}) {
        spot.megahertz = odd;
        EXPECT_TRUE(spotConsoleLine(spot).endsWith(QStringLiteral(" 1428Z")));
    }
}

TEST(SpotUserInfo, HoldsEveryKeyInOrderWhenAllIsThere)
{
    Spot spot = potaSpot();
    spot.mode = QStringLiteral("CW");
    spot.dxgrid = QStringLiteral("JN34aa");
    spot.dxlatitude = 44.5;
    spot.dxlongitude = -7.25;
    spot.delatitude = 60.0;
    spot.delongitude = 24.5;
    spot.pota = QStringLiteral("US-0001");
    const UserInfo info = spotUserInfo(spot);
    EXPECT_EQ(
        keys(info),
        (QStringList{QStringLiteral("combinedCallsign"), QStringLiteral("mode"), QStringLiteral("timestamp"),
                     QStringLiteral("megahertz"), QStringLiteral("comments"), QStringLiteral("source"),
                     QStringLiteral("grid"), QStringLiteral("latitude"), QStringLiteral("longitude"),
                     QStringLiteral("dxde_call"), QStringLiteral("de_latitude"),
                     QStringLiteral("de_longitude"), QStringLiteral("pota_ref")}));
    EXPECT_EQ(value(info, QStringLiteral("combinedCallsign")), UserInfoValue(QStringLiteral("X1X")));
    EXPECT_EQ(value(info, QStringLiteral("mode")), UserInfoValue(QStringLiteral("CW")));
    EXPECT_EQ(value(info, QStringLiteral("timestamp")), UserInfoValue(at1428));
    EXPECT_EQ(value(info, QStringLiteral("megahertz")), UserInfoValue(14.074));
    EXPECT_EQ(value(info, QStringLiteral("comments")), UserInfoValue(QStringLiteral("cq")));
    EXPECT_EQ(value(info, QStringLiteral("source")), UserInfoValue(QStringLiteral("POTA")));
    EXPECT_EQ(value(info, QStringLiteral("grid")), UserInfoValue(QStringLiteral("JN34aa")));
    EXPECT_EQ(value(info, QStringLiteral("latitude")), UserInfoValue(44.5));
    EXPECT_EQ(value(info, QStringLiteral("longitude")), UserInfoValue(-7.25));
    EXPECT_EQ(value(info, QStringLiteral("dxde_call")), UserInfoValue(QStringLiteral("N0CALL")));
    EXPECT_EQ(value(info, QStringLiteral("de_latitude")), UserInfoValue(60.0));
    EXPECT_EQ(value(info, QStringLiteral("de_longitude")), UserInfoValue(24.5));
    EXPECT_EQ(value(info, QStringLiteral("pota_ref")), UserInfoValue(QStringLiteral("US-0001")));
}

TEST(SpotUserInfo, LeavesOutWhatIsEmptyOrAbsent)
{
    Spot spot = potaSpot();
    spot.comment = QStringLiteral("");
    EXPECT_EQ(keys(spotUserInfo(spot)), (QStringList{QStringLiteral("combinedCallsign"),
                                                     QStringLiteral("timestamp"), QStringLiteral("megahertz"),
                                                     QStringLiteral("source"), QStringLiteral("dxde_call")}));
    EXPECT_TRUE(spotUserInfo(Spot{}).empty());
    Spot emptyTexts;
    emptyTexts.call = emptyTexts.mode = emptyTexts.comment = emptyTexts.source = emptyTexts.dxgrid =
        emptyTexts.pota = emptyTexts.service = QStringLiteral("");
    EXPECT_TRUE(spotUserInfo(emptyTexts).empty());
}

TEST(SpotUserInfo, SendsAPresentSpotterEvenWhenEmpty)
{
    Spot spot;
    spot.dxde = QStringLiteral("");
    const UserInfo info = spotUserInfo(spot);
    ASSERT_EQ(keys(info), QStringList{QStringLiteral("dxde_call")});
    EXPECT_EQ(value(info, QStringLiteral("dxde_call")), UserInfoValue(QStringLiteral("")));
}

TEST(SpotUserInfo, CarriesLongTextsWhole)
{
    Spot spot = potaSpot();
    spot.dxde = QStringLiteral("OH2/N0CALL-");
    spot.comment = QString(200, u'c');
    const UserInfo info = spotUserInfo(spot);
    EXPECT_EQ(value(info, QStringLiteral("dxde_call")), UserInfoValue(QStringLiteral("OH2/N0CALL-")));
    EXPECT_EQ(value(info, QStringLiteral("comments")), UserInfoValue(QString(200, u'c')));
}

TEST(SpotNotification, ShowsThenPosts)
{
    FakeNotificationCenter center;
    QStringList console;
    std::size_t postedWhenShown = 99;
    SpotNotification notification(
        [&](const QString& text) {
            console.append(text);
            postedWhenShown = center.posted.size();
        },
        center);
    notification.sendSpotCall(potaSpot());
    EXPECT_EQ(console, QStringList{spotConsoleLine(potaSpot())});
    EXPECT_EQ(postedWhenShown, 0U);
    ASSERT_EQ(center.posted.size(), 1U);
    EXPECT_EQ(center.posted[0].name, QStringLiteral("com.tarnbrooksoftware.spotwell_spot"));
    EXPECT_EQ(center.posted[0].object, QStringLiteral("string object"));
    EXPECT_EQ(center.posted[0].userInfo, spotUserInfo(potaSpot()));
}

} // namespace spotwell
