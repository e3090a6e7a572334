// SPDX-FileCopyrightText: 2026 the spotwell developers
// SPDX-License-Identifier: MIT

#include "feeds/WsprnetFeed.h"

#include "tests/fakes/FakeServices.h"
#include "tests/fakes/FakeTime.h"
#include "tests/feeds/FakeFeedHost.h"
#include "tests/support/Printers.h"

#include <gtest/gtest.h>

#include <vector>

namespace spotwell
{

namespace
{

using namespace Qt::StringLiterals;

/// The first eight cells of a row as the service writes it, the last four and the end left to `tail`.
QByteArray row(const QByteArray& time, const QByteArray& heard, const QByteArray& megahertz,
               const QByteArray& reporter,
               const QByteArray& tail = "<td align=\"left\">&nbsp;JN58&nbsp;</td></tr>")
{
    return "<tr><td align=\"left\">&nbsp;" + time + "&nbsp;</td><td align=\"left\">&nbsp;" + heard +
           "&nbsp;</td><td align=\"right\">&nbsp;" + megahertz +
           "&nbsp;</td><td align=\"right\">&nbsp;-21&nbsp;</td><td align=\"right\">&nbsp;0&nbsp;</td>"
           "<td align=\"left\">&nbsp;FN20&nbsp;</td><td align=\"right\">&nbsp;0.2&nbsp;</td>"
           "<td align=\"left\">&nbsp;" +
           reporter + "&nbsp;</td>" + tail;
}

QByteArray row(const QByteArray& heard)
{
    return row("2027-02-03 09:04", heard, "14.097100", "W3XYZ");
}

class WsprnetFeedTest : public testing::Test
{
protected:
    /// The stations heard of the spots that `page` gives, in their order.
    QStringList heardIn(const QByteArray& page)
    {
        host.clear();
        feed.parseWsprnetData(page);
        QStringList calls;
        for (const Spot& spot : host.spots)
            calls.append(spot.call.value_or(u"(none)"_s));
        return calls;
    }

    /// Lets `count` rows be sent that no test uses.
    void remember(int count)
    {
        QByteArray page;
        for (int i = 0; i < count; ++i)
            page += row("R" + QByteArray::number(i)) + '\n';
        ASSERT_EQ(heardIn(page).size(), count);
        ASSERT_EQ(feed.remembered().size(), count);
    }

    FakeFeedHost host;
    FakeClock clock;
    FakeLog log;
    WsprnetFeed feed{host, clock, log};
};

TEST_F(WsprnetFeedTest, FillsAllFourteenFields)
{
    feed.parseWsprnetData(row("2027-02-03 09:04", "DL1ABC", "14.097123", "W3XYZ"));
    ASSERT_EQ(host.spots.size(), 1U);
    const Spot& spot = host.spots[0];
    EXPECT_EQ(spot.call, u"DL1ABC"_s);
    EXPECT_EQ(spot.dxde, u"W3XYZ"_s);
    EXPECT_EQ(spot.source, u"WSPRnet"_s);
    EXPECT_EQ(spot.timestamp, TimePoint{std::chrono::sys_days{std::chrono::year{2027} / 2 / 3} +
                                        std::chrono::hours{9} + std::chrono::minutes{4}});
    EXPECT_EQ(spot.megahertz, 14.097123);
    EXPECT_EQ(spot.mode, u""_s);
    EXPECT_EQ(spot.dxgrid, u""_s);
    EXPECT_EQ(spot.dxlatitude, std::nullopt);
    EXPECT_EQ(spot.dxlongitude, std::nullopt);
    EXPECT_EQ(spot.delatitude, std::nullopt);
    EXPECT_EQ(spot.delongitude, std::nullopt);
    EXPECT_EQ(spot.pota, u""_s);
    EXPECT_EQ(spot.comment, u"WSPRnet"_s);
    EXPECT_EQ(spot.service, u"wspr"_s);
}

struct Page {
    const char* what;
    QByteArray page;
    int rows;
    QStringList heard;
};

void PrintTo(const Page& page, std::ostream* stream)
{
    *stream << page.what;
}

class WsprnetPages : public WsprnetFeedTest, public testing::WithParamInterface<Page>
{
};

TEST_P(WsprnetPages, GiveTheirRowsFromTheLastToTheFirst)
{
    EXPECT_EQ(heardIn(GetParam().page), GetParam().heard);
    EXPECT_EQ(feed.remembered().size(), GetParam().heard.size());
    EXPECT_EQ(log.lines, QStringList{u"parseWsprnetData:spots:[%1]"_s.arg(GetParam().rows)});
}

const QByteArray headerRow = "<tr><th>&nbsp;Timestamp&nbsp;</th><th>&nbsp;Call&nbsp;</th></tr>";
const QByteArray shortRow = "<tr><td>&nbsp;Timestamp&nbsp;</td><td>&nbsp;Call&nbsp;</td></tr>";

INSTANTIATE_TEST_SUITE_P(
    Pages, WsprnetPages,
    testing::Values(
        Page{"nothing", "", 0, {}}, Page{"a line feed", "\n", 0, {}},
        Page{"line feeds only", "\n\n\n", 0, {}},
        Page{"a page without rows", "<html>\n<table>\n</table>", 0, {}},
        Page{"an error page",
             "<!DOCTYPE html>\n<html><head><title>503</title></head><body>\n<h1>Service Unavailable</h1>\n"
             "<table border=0><tr><td>&nbsp;later&nbsp;</td></tr></table>\n</body></html>\n",
             0,
             {}},
        Page{"one row, no final line feed", row("A1A"), 1, {u"A1A"_s}},
        Page{"one row, with one", row("A1A") + '\n', 1, {u"A1A"_s}},
        Page{"three rows in a page",
             "<table>\n" + headerRow + '\n' + row("A1A") + '\n' + row("B1B") + "\n\n" + row("C1C") +
                 "\n</table>\n",
             4,
             {u"C1C"_s, u"B1B"_s, u"A1A"_s}},
        Page{"a row first, a row last", row("A1A") + "\n\n" + row("B1B"), 2, {u"B1B"_s, u"A1A"_s}},
        Page{"carriage returns", row("A1A") + "\r\n" + row("B1B") + "\r\n", 2, {u"B1B"_s, u"A1A"_s}},
        Page{"carriage returns alone end no line", row("A1A") + '\r' + row("B1B"), 1, {u"A1A"_s}},
        Page{"markers in another case or place",
             "<TR>" + row("A1A").sliced(4) + "\n " + row("B1B") + "\n<tr >" + row("C1C").sliced(4) + "\n\t" +
                 row("D1D") + "\n<tr" + row("E1E").sliced(4) + "\n\r" + row("F1F") + "\n\xEF\xBB\xBF" +
                 row("G1G"),
             0,
             {}},
        Page{"a bare marker", "<tr>", 1, {}}, Page{"half a marker", "<tr>\n<tr", 1, {}},
        Page{"bare markers", "<tr>\n<tr>\r\n<tr> \n", 3, {}},
        Page{"rows in one line are one", row("A1A") + row("B1B") + '\n', 1, {u"A1A"_s}},
        Page{"rows with too few cells", headerRow + '\n' + shortRow + '\n' + row("A1A"), 3, {u"A1A"_s}},
        Page{"the same row twice", row("A1A") + '\n' + row("A1A"), 2, {u"A1A"_s}},
        Page{"rows that differ in markup only",
             row("A1A") + '\n' + row("A1A").replace("left", "LEFT") + '\n' + row("A1A") + '\r',
             3,
             {u"A1A"_s, u"A1A"_s, u"A1A"_s}},
        Page{"bytes above 127",
             row("A1A\xE9") + '\n' + row("A1A\xE8") + '\n' + row("A1A\xC3\xA9") + '\n' + row("\xFF\x80"),
             4,
             {u"\u00FF\u0080"_s, u"A1A\u00C3\u00A9"_s, u"A1A\u00E8"_s, u"A1A\u00E9"_s}},
        Page{"NUL bytes",
             row(QByteArray("A\0A", 3)) + '\n' + QByteArray("\0", 1) + row("B1B") + '\n' +
                 row(QByteArray("\0", 1)) + '\n' + row("C1C") + QByteArray("\0\n", 2),
             3,
             {u"C1C"_s, QString(QChar(u'\0')), u"A"_s + QChar(u'\0') + u'A'}}));

TEST_F(WsprnetFeedTest, SendsEachRowOnce)
{
    const QByteArray page = row("A1A") + '\n' + shortRow + '\n' + row("B1B") + '\n';
    EXPECT_EQ(heardIn(page), (QStringList{u"B1B"_s, u"A1A"_s}));
    EXPECT_EQ(feed.remembered(), (QSet<QByteArray>{row("A1A"), row("B1B")}));
    EXPECT_EQ(heardIn(page), QStringList());
    EXPECT_TRUE(host.pauses.empty());
    EXPECT_EQ(heardIn(row("C1C") + '\n' + page), QStringList{u"C1C"_s});
    EXPECT_EQ(log.lines, (QStringList{u"parseWsprnetData:spots:[3]"_s, u"parseWsprnetData:spots:[3]"_s,
                                      u"parseWsprnetData:spots:[4]"_s}));
}

TEST_F(WsprnetFeedTest, RemembersRowsBeyondTheirPage)
{
    QByteArray page = row("A1A");
    EXPECT_EQ(heardIn(page), QStringList{u"A1A"_s});
    page.fill('x');
    EXPECT_EQ(feed.remembered(), QSet<QByteArray>{row("A1A")});
}

TEST_F(WsprnetFeedTest, PausesAfterEachSpot)
{
    feed.parseWsprnetData(row("A1A") + '\n' + shortRow + '\n' + row("B1B"));
    EXPECT_EQ(host.journal, (QStringList{u"spot"_s, u"pause"_s, u"spot"_s, u"pause"_s}));
    EXPECT_EQ(host.pauses, (std::vector{Seconds{0.1}, Seconds{0.1}}));
}

TEST_F(WsprnetFeedTest, StopsAtOnceWhenTheProgramEnds)
{
    host.endsAtPause = 2;
    const QByteArray page = row("A1A") + '\n' + row("B1B") + '\n' + row("C1C") + '\n';
    EXPECT_EQ(heardIn(page), (QStringList{u"C1C"_s, u"B1B"_s}));
    EXPECT_EQ(feed.remembered(), (QSet<QByteArray>{row("C1C"), row("B1B")}));
    EXPECT_EQ(log.lines, QStringList{u"parseWsprnetData:spots:[3]"_s});
    host.clear();
    host.endsAtPause = 1;
    EXPECT_TRUE(feed.parseWsprnetLine(row("B1B")));
    EXPECT_TRUE(feed.parseWsprnetLine(shortRow));
    EXPECT_FALSE(feed.parseWsprnetLine(row("D1D")));
}

TEST_F(WsprnetFeedTest, LogsBeforeTheFirstSpot)
{
    struct Host final : FeedHost {
        explicit Host(const FakeLog& given) : log(given) {}
        void forward(const Spot&) override { logged = log.lines.size(); }
        bool pause(Seconds) override { return true; }
        const FakeLog& log;
        qsizetype logged = -1;
    } watcher(log);
    WsprnetFeed(watcher, clock, log).parseWsprnetData(row("A1A"));
    EXPECT_EQ(watcher.logged, 1);
}

TEST_F(WsprnetFeedTest, KeepsWhatItRemembersUpTo5001Rows)
{
    remember(5000);
    EXPECT_EQ(heardIn(row("A1A")), QStringList{u"A1A"_s});
    EXPECT_EQ(feed.remembered().size(), 5001);
    // A row that is remembered does not empty the set, ...
    EXPECT_EQ(heardIn(row("A1A") + '\n' + row("R0")), QStringList());
    EXPECT_EQ(feed.remembered().size(), 5001);
    // ... one that is not does.
    EXPECT_EQ(heardIn(row("B1B")), QStringList{u"B1B"_s});
    EXPECT_EQ(feed.remembered(), QSet<QByteArray>{row("B1B")});
    EXPECT_EQ(heardIn(row("R0")), QStringList{u"R0"_s});
}

TEST_F(WsprnetFeedTest, EmptiesTheSetAsSoonAsARowIsNew)
{
    remember(5001);
    // From below: R0 is seen, B1B empties, A1A and R0 are then new.
    EXPECT_EQ(heardIn(row("R0") + '\n' + row("A1A") + '\n' + row("B1B") + '\n' + row("R0") + ' ' + '\n' +
                      row("R0")),
              (QStringList{u"R0"_s, u"B1B"_s, u"A1A"_s, u"R0"_s}));
    EXPECT_EQ(feed.remembered(), (QSet<QByteArray>{row("R0") + ' ', row("B1B"), row("A1A"), row("R0")}));
}

TEST_F(WsprnetFeedTest, EmptiesTheSetEvenForARowThatIsNotSent)
{
    remember(5001);
    EXPECT_EQ(heardIn(shortRow), QStringList());
    EXPECT_TRUE(feed.remembered().isEmpty());
}

TEST_F(WsprnetFeedTest, WorksOffTenThousandRows)
{
    QByteArray page;
    for (int i = 0; i < 10000; ++i)
        page += row("N" + QByteArray::number(i)) + '\n';
    const QStringList calls = heardIn(page);
    ASSERT_EQ(calls.size(), 10000);
    EXPECT_EQ(calls.first(), u"N9999"_s);
    EXPECT_EQ(calls.last(), u"N0"_s);
    // Emptied once on the way.
    EXPECT_EQ(feed.remembered().size(), 4999);
    EXPECT_TRUE(feed.remembered().contains(row("N4998")));
    EXPECT_FALSE(feed.remembered().contains(row("N4999")));
}

TEST_F(WsprnetFeedTest, WorksOffTheLargestPageOfBareMarkers)
{
    const QByteArray page = QByteArray("<tr>\n").repeated(32 * 1024 * 1024 / 5);
    EXPECT_EQ(heardIn(page), QStringList());
    EXPECT_EQ(log.lines, QStringList{u"parseWsprnetData:spots:[6710886]"_s});
    EXPECT_TRUE(feed.remembered().isEmpty());
}

TEST_F(WsprnetFeedTest, RemembersALongRowByItsDigest)
{
    const QByteArray longest = row("A1A").leftJustified(4096, 'x');
    EXPECT_EQ(heardIn(longest), QStringList{u"A1A"_s});
    EXPECT_EQ(feed.remembered(), QSet<QByteArray>{longest});
    EXPECT_EQ(heardIn(longest), QStringList());

    const QByteArray longer = longest + 'x';
    EXPECT_EQ(heardIn(longer + '\n' + longest), QStringList{u"A1A"_s});
    EXPECT_EQ(
        feed.remembered(),
        (QSet<QByteArray>{longest, "c210406b9d6f2b259dc069e555d715bf0b1db3e4985e31df85dad01694d8f374"}));
    EXPECT_EQ(heardIn(longer), QStringList());
    EXPECT_EQ(heardIn(longest + 'y'), QStringList{u"A1A"_s});
}

TEST_F(WsprnetFeedTest, TakesARowOfThirtyMegabytes)
{
    constexpr qsizetype length = 30 * 1000 * 1000;
    const QByteArray page = row("A1A") + '\n' + row(QByteArray(length, 'X')) + '\n' + row("B1B") + '\n' +
                            "<tr>" + QByteArray(1000, '>') + "&nbsp";
    EXPECT_EQ(heardIn(page), (QStringList{u"B1B"_s, QString(length, u'X'), u"A1A"_s}));
    EXPECT_EQ(feed.remembered().size(), 3);
    EXPECT_EQ(heardIn(page), QStringList());
}

} // namespace

} // namespace spotwell
