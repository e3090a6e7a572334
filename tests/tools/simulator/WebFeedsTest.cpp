// SPDX-FileCopyrightText: 2026 the spotwell developers
// SPDX-License-Identifier: MIT

#include "tools/spotwell-simulator/WebFeeds.h"

#include <QDateTime>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QRegularExpression>
#include <gtest/gtest.h>

#include <set>

namespace spotwell::simulator
{
namespace
{

using namespace std::chrono_literals;

/// 2024-03-01T12:34:56Z.
constexpr TimePoint firstPoll = std::chrono::sys_days{std::chrono::year{2024} / 3 / 1} + 12h + 34min + 56s;

std::vector<QJsonObject> rowsOf(const QByteArray& body)
{
    const QJsonDocument document = QJsonDocument::fromJson(body);
    EXPECT_TRUE(document.isArray()) << body.left(200).constData();
    std::vector<QJsonObject> rows;
    for (const QJsonValue& row : document.array())
        rows.push_back(row.toObject());
    return rows;
}

QList<QByteArray> pageRowsOf(const QByteArray& page)
{
    QList<QByteArray> rows;
    for (const QByteArray& line : page.split('\n')) {
        if (line.startsWith("<tr><td>"))
            rows.append(line);
    }
    return rows;
}

void expectMatch(const QJsonValue& value, const QString& pattern)
{
    EXPECT_TRUE(QRegularExpression{u"\\A(?:"_qs + pattern + u")\\z"_qs}.match(value.toString()).hasMatch())
        << qPrintable(value.toString());
}

TEST(WebFeeds, listActivatorsAsPota)
{
    WebFeeds feeds;
    const auto rows = rowsOf(feeds.next(WebFeed::pota, 300, 0, firstPoll));
    ASSERT_EQ(rows.size(), 300U);
    std::size_t skimmers = 0;
    for (const QJsonObject& row : rows) {
        EXPECT_TRUE(row[u"spotId"].isDouble());
        expectMatch(row[u"activator"], u"[A-Z0-9]{4,7}"_qs);
        expectMatch(row[u"frequency"], u"[0-9]{4,5}(\\.[1-9])?"_qs);
        expectMatch(row[u"mode"], u"CW|SSB|FT8"_qs);
        expectMatch(row[u"reference"], u"[A-Z]{2}-[0-9]{4}"_qs);
        expectMatch(row[u"spotTime"], u"2024-03-01T12:[0-3][0-9]:[0-5][0-9]"_qs);
        expectMatch(row[u"grid6"], u"[A-R]{2}[0-9]{2}[a-x]{2}"_qs);
        EXPECT_EQ(row[u"grid4"].toString(), row[u"grid6"].toString().left(4));
        EXPECT_LE(std::abs(row[u"latitude"].toDouble(999)), 70.0);
        EXPECT_LE(std::abs(row[u"longitude"].toDouble(999)), 170.0);
        const QString spotter = row[u"spotter"].toString();
        if (spotter.endsWith(u"-#")) {
            ++skimmers;
            EXPECT_EQ(row[u"mode"].toString(), u"CW"_qs);
            expectMatch(row[u"comments"], u"RBN [0-9]+ dB [0-9]+ WPM via "_qs + spotter);
        } else {
            EXPECT_FALSE(row[u"comments"].toString().contains(u"RBN"));
        }
    }
    EXPECT_GT(skimmers, 60U);
    EXPECT_LT(skimmers, 200U);
}

TEST(WebFeeds, listSpotsAsDxSummit)
{
    WebFeeds feeds;
    const auto rows = rowsOf(feeds.next(WebFeed::dxsummit, 300, 0, firstPoll));
    ASSERT_EQ(rows.size(), 300U);
    std::size_t exclusive = 0;
    std::size_t silent = 0;
    for (const QJsonObject& row : rows) {
        EXPECT_TRUE(row[u"id"].isDouble());
        expectMatch(row[u"dx_call"], u"[A-Z0-9]{4,7}"_qs);
        expectMatch(row[u"de_call"], u"[A-Z0-9]{4,7}(-@)?"_qs);
        EXPECT_GE(row[u"frequency"].toDouble(), 1800.0);
        expectMatch(row[u"time"], u"2024-03-01T12:[0-3][0-9]:[0-5][0-9]"_qs);
        EXPECT_TRUE(row[u"info"].isNull() || !row[u"info"].toString().isEmpty());
        for (const char16_t* key : {u"dx_latitude", u"dx_longitude", u"de_latitude", u"de_longitude"})
            EXPECT_TRUE(row[QStringView{key}].isDouble());
        exclusive += row[u"de_call"].toString().endsWith(u"-@") ? 1 : 0;
        silent += row[u"info"].isNull() ? 1 : 0;
    }
    EXPECT_GT(exclusive, 50U);
    EXPECT_LT(exclusive, 200U);
    EXPECT_GT(silent, 10U);
}

TEST(WebFeeds, writeAPageAsWsprnet)
{
    WebFeeds feeds;
    const QByteArray page = feeds.next(WebFeed::wsprnet, 300, 0, firstPoll);
    EXPECT_TRUE(page.startsWith("<!DOCTYPE html>\n<html>\n"));
    EXPECT_TRUE(page.endsWith("</table>\n</body>\n</html>\n"));
    EXPECT_EQ(page.count("\n<tr><th>Timestamp</th><th>Call</th>"), 1);
    const QList<QByteArray> rows = pageRowsOf(page);
    ASSERT_EQ(rows.size(), 300);
    std::set<QByteArray> different;
    for (const QByteArray& row : rows) {
        different.insert(row);
        expectMatch(QString::fromLatin1(row),
                    u"<tr><td>&nbsp;2024-03-01 12:[0-3][02468]&nbsp;</td><td>&nbsp;[A-Z0-9]{4,7}&nbsp;</td>"
                    u"<td>&nbsp;[0-9]+\\.[0-9]{6}&nbsp;</td>(<td>&nbsp;[^&]+&nbsp;</td>){4}"
                    u"<td>&nbsp;[A-Z0-9]{4,7}&nbsp;</td>(<td>&nbsp;[^&]+&nbsp;</td>){3}</tr>"_qs);
    }
    EXPECT_EQ(different.size(), 300U);
}

TEST(WebFeeds, areEmptyWhenAskedForNothing)
{
    WebFeeds feeds;
    EXPECT_EQ(feeds.next(WebFeed::pota, 0, 0, firstPoll), "[]");
    EXPECT_EQ(feeds.next(WebFeed::dxsummit, 0, 0, firstPoll), "[]");
    EXPECT_EQ(pageRowsOf(feeds.next(WebFeed::wsprnet, 0, 0, firstPoll)).size(), 0);
}

TEST(WebFeeds, listTheNewestFirstAndHalfAnHourAtFirst)
{
    WebFeeds feeds;
    const auto rows = rowsOf(feeds.next(WebFeed::pota, 60, 5, firstPoll));
    EXPECT_EQ(rows.front()[u"spotTime"].toString(), u"2024-03-01T12:34:56"_qs);
    EXPECT_EQ(rows.back()[u"spotTime"].toString(), u"2024-03-01T12:05:26"_qs);
    for (std::size_t i = 1; i < rows.size(); ++i) {
        EXPECT_LT(rows[i][u"spotTime"].toString(), rows[i - 1][u"spotTime"].toString());
        EXPECT_LT(rows[i][u"spotId"].toInt(), rows[i - 1][u"spotId"].toInt());
    }
}

TEST(WebFeeds, live)
{
    for (const WebFeed feed : {WebFeed::pota, WebFeed::dxsummit}) {
        WebFeeds feeds;
        const auto before = rowsOf(feeds.next(feed, 50, 5, firstPoll));
        const auto after = rowsOf(feeds.next(feed, 50, 5, firstPoll + 30s));
        ASSERT_EQ(after.size(), 50U);
        for (std::size_t i = 5; i < 50; ++i)
            EXPECT_EQ(after[i], before[i - 5]);
        const QString key = feed == WebFeed::pota ? u"spotTime"_qs : u"time"_qs;
        EXPECT_EQ(after[0][key].toString(), u"2024-03-01T12:35:26"_qs);
        EXPECT_EQ(after[4][key].toString(), u"2024-03-01T12:35:02"_qs);
        EXPECT_EQ(rowsOf(feeds.next(feed, 50, 0, firstPoll + 60s)), after);
    }
    WebFeeds feeds;
    const QList<QByteArray> before = pageRowsOf(feeds.next(WebFeed::wsprnet, 50, 10, firstPoll));
    const QList<QByteArray> after = pageRowsOf(feeds.next(WebFeed::wsprnet, 50, 10, firstPoll + 120s));
    EXPECT_EQ(after.mid(10), before.first(40));
    EXPECT_TRUE(after[0].startsWith("<tr><td>&nbsp;2024-03-01 12:36&nbsp;</td>"));
    EXPECT_FALSE(before.contains(after[9]));
}

TEST(WebFeeds, growAndShrinkAsAsked)
{
    WebFeeds feeds;
    EXPECT_EQ(rowsOf(feeds.next(WebFeed::pota, 5, 1, firstPoll)).size(), 5U);
    EXPECT_EQ(rowsOf(feeds.next(WebFeed::pota, 20, 1, firstPoll)).size(), 20U);
    EXPECT_EQ(rowsOf(feeds.next(WebFeed::pota, 3, 3, firstPoll)).size(), 3U);
    EXPECT_EQ(rowsOf(feeds.next(WebFeed::pota, WebFeeds::mostRows, 0, firstPoll)).size(), 10'000U);
}

TEST(WebFeeds, areTheSameInEveryRun)
{
    WebFeeds feeds;
    WebFeeds again;
    for (const WebFeed feed : {WebFeed::pota, WebFeed::dxsummit, WebFeed::wsprnet})
        EXPECT_EQ(feeds.next(feed, 100, 5, firstPoll), again.next(feed, 100, 5, firstPoll));
}

TEST(WebFeeds, standAClockThatGoesBack)
{
    WebFeeds feeds;
    feeds.next(WebFeed::pota, 10, 1, firstPoll);
    const auto rows = rowsOf(feeds.next(WebFeed::pota, 10, 2, firstPoll - 3600s));
    EXPECT_EQ(rows[0][u"spotTime"].toString(), u"2024-03-01T11:34:56"_qs);
    EXPECT_EQ(rows[1][u"spotTime"].toString(), u"2024-03-01T11:34:56"_qs);
}

} // namespace
} // namespace spotwell::simulator
