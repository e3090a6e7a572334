// SPDX-FileCopyrightText: 2026 the spotwell developers
// SPDX-License-Identifier: MIT

#include "feeds/WsprnetFeed.h"
#include "tests/fakes/FakeServices.h"
#include "tests/fakes/FakeTime.h"
#include "tests/feeds/FakeFeedHost.h"
#include "tests/support/Printers.h"

#include <gtest/gtest.h>

namespace spotwell
{

namespace
{

using namespace Qt::StringLiterals;

constexpr TimePoint reportTime =
    std::chrono::sys_days{std::chrono::year{2027} / 2 / 3} + std::chrono::hours{9} + std::chrono::minutes{4};

class WsprnetRowTest : public testing::Test
{
protected:
    FakeFeedHost host;
    FakeClock clock;
    FakeLog log;
    WsprnetFeed feed{host, clock, log};
};

/// Cells in their plainest form.
QByteArray cells(const QList<QByteArray>& values)
{
    QByteArray row = "<tr>";
    for (const QByteArray& value : values)
        row += "<td>&nbsp;" + value + "&nbsp;</td>";
    return row + "</tr>";
}

/// A row of eight such cells.
QByteArray plainRow(const QByteArray& time, const QByteArray& heard, const QByteArray& megahertz,
                    const QByteArray& reporter)
{
    return cells({time, heard, megahertz, "-21", "0", "FN20", "0.2", reporter});
}

/// A row and what is told of it: "HEARD by REPORTER", or nothing.
struct Row {
    const char* what;
    QByteArray row;
    QString told;
};

void PrintTo(const Row& row, std::ostream* stream)
{
    *stream << row.what;
}

class WsprnetRows : public WsprnetRowTest, public testing::WithParamInterface<Row>
{
};

TEST_P(WsprnetRows, GiveTheirCells)
{
    EXPECT_TRUE(feed.parseWsprnetLine(GetParam().row));
    QString told;
    for (const Spot& spot : host.spots)
        told += spot.call.value_or(u"(none)"_s) + u" by "_s + spot.dxde.value_or(u"(none)"_s);
    EXPECT_EQ(told, GetParam().told);
    EXPECT_EQ(feed.remembered(), told.isEmpty() ? QSet<QByteArray>() : QSet<QByteArray>{GetParam().row});
    EXPECT_TRUE(log.lines.isEmpty());
}

const QByteArray date = "2027-02-03 09:04";
/// The third to the seventh cell and what opens the eighth.
const QByteArray middle = "<td>&nbsp;7.0386&nbsp;</td><td>&nbsp;&nbsp;</td><td>&nbsp;&nbsp;</td>"
                          "<td>&nbsp;&nbsp;</td><td>&nbsp;&nbsp;</td><td>&nbsp;";
const QByteArray start = "<tr><td>&nbsp;2027-02-03 09:04&nbsp;</td>";

INSTANTIATE_TEST_SUITE_P(
    Rows, WsprnetRows,
    testing::Values(
        Row{"eight cells", plainRow(date, "A1A", "7.0386", "B1B"), u"A1A by B1B"_s},
        Row{"twelve cells",
            cells({date, "A1A", "7", "-21", "0", "FN20", "0.2", "B1B", "IO91", "5500", "3400", "WSPR-2"}),
            u"A1A by B1B"_s},
        Row{"seven cells", cells({date, "A1A", "7", "-21", "0", "FN20", "B1B"}), {}},
        Row{"no cell", "<tr></tr>", {}}, Row{"nothing", "", {}}, Row{"blanks", " \t\r", {}},
        Row{"nobody heard", plainRow(date, "", "7.0386", "B1B"), {}},
        Row{"nobody reported", plainRow(date, "A1A", "7.0386", ""), {}},
        Row{"both are blanks, which is not empty", plainRow(date, " ", "7.0386", " "), u"  by  "_s},
        Row{"blanks around the values stay", plainRow(date, " A1A ", "7.0386", "\tB1B"), u" A1A  by \tB1B"_s},
        Row{"values with markup", plainRow(date, "<a href=\"x\">A1A</a>", "7", "<b>B1B</b>"),
            u"<a href=\"x\">A1A</a> by <b>B1B</b>"_s},
        Row{"other entities stay", plainRow(date, "A&amp;A", "7", "B1B&nbsp"), u"A&amp;A by B1B&nbsp"_s},
        Row{"bytes above 127 are Latin-1", plainRow(date, "\xC9\x41", "7", "\xFF"), u"\u00C9A by \u00FF"_s},
        Row{"NUL bytes", plainRow(date, QByteArray("\0A", 2), "7", QByteArray("B\0", 2)),
            QChar(u'\0') + u"A by B"_s + QChar(u'\0')},
        Row{"delimiters in capitals", plainRow(date, "a1a", "7", "b1b").toUpper(), u"A1A by B1B"_s},
        Row{"delimiters in mixed case",
            plainRow(date, "A1A", "7", "B1B")
                .replace("&nbsp;</td>", "&nBsP;</tD>")
                .replace(">&nbsp;", ">&NbSp;"),
            u"A1A by B1B"_s},
        Row{"cells of another shape take no index",
            "<tr><td>first</td><td> &nbsp;second&nbsp;</td>" + plainRow(date, "A1A", "7", "B1B"),
            u"A1A by B1B"_s},
        Row{"a marker that opens a cell",
            "<tr>&nbsp;" + date + "&nbsp;</td><td>&nbsp;A1A&nbsp;</td>" + middle + "B1B", u"A1A by B1B"_s},
        Row{"a closing that opens the next cell",
            start + "<td>&nbsp;A1A&nbsp;</td>&nbsp;7&nbsp;</td>" + middle.sliced(27) + "x&nbsp;</td>",
            u"A1A by x"_s},
        Row{"an opening inside a value",
            start + "<td>&nbsp;A1A<b>&nbsp;x&nbsp;</td>" + middle + "B1B&nbsp;</td>",
            u"A1A<b>&nbsp;x by B1B"_s},
        Row{"an empty cell whose closing is its opening",
            start + "<td>&nbsp;A1A&nbsp;</td><td>&nbsp;</td><td>&nbsp;</td><td>&nbsp;</td><td>&nbsp;</td>"
                    "<td>&nbsp;</td><td>&nbsp;B1B&nbsp;</td>",
            u"A1A by B1B"_s},
        Row{"the station heard in such a cell", start + "<td>&nbsp;</td>" + middle + "B1B&nbsp;</td>", {}},
        Row{"the reporter in such a cell",
            start + "<td>&nbsp;A1A&nbsp;</td>" + middle + "</td><td>&nbsp;B1B&nbsp;</td>",
            {}},
        Row{"a last cell without closing", start + "<td>&nbsp;A1A&nbsp;</td>" + middle + "B1B</td></tr>\r",
            u"A1A by B1B</td></tr>\r"_s},
        Row{"a last cell without text", start + "<td>&nbsp;A1A&nbsp;</td>" + middle, {}},
        Row{"half a closing", start + "<td>&nbsp;A1A&nbsp;</td>" + middle + "B1B&nbsp;</td",
            u"A1A by B1B&nbsp;</td"_s},
        Row{"half an opening", start + "<td>&nbsp;A1A&nbsp;</td>" + middle.chopped(1) + "B1B&nbsp;</td>", {}},
        Row{"a second cell without closing takes the rest",
            start + "<td>&nbsp;A1A</td>" + QByteArray(middle).replace("&nbsp;</td>", "</td>") + "B1B</td>",
            {}}));

struct Frequency {
    const char* text;
    double megahertz;
};

TEST_F(WsprnetRowTest, ReadsTheNumberTheFrequencyBeginsWith)
{
    for (const Frequency& each : std::initializer_list<Frequency>{{"14.097123", 14.097123},
                                                                  {"  7.0386", 7.0386},
                                                                  {"10", 10.0},
                                                                  {".5", 0.5},
                                                                  {"-1.5", -1.5},
                                                                  {"144.489 MHz", 144.489},
                                                                  {"14,097", 14.0},
                                                                  {"1e1", 10.0},
                                                                  {"", 0.0},
                                                                  {"MHz 14", 0.0},
                                                                  {"&nbsp14", 0.0}}) {
        host.clear();
        EXPECT_TRUE(feed.parseWsprnetLine(plainRow(date, "A1A", each.text, "B1B")));
        ASSERT_EQ(host.spots.size(), 1U) << each.text;
        EXPECT_EQ(host.spots[0].megahertz, each.megahertz) << each.text;
    }
}

TEST_F(WsprnetRowTest, SendsWithoutATimeWhatHasNone)
{
    for (const char* const text : {"", "now", "2027-02-30 09:04", "2027-02-03 09:04:00", " 2027-02-03 09:04",
                                   "2027-02-03 09:04 ", "2027-02-03T09:04"}) {
        host.clear();
        EXPECT_TRUE(feed.parseWsprnetLine(plainRow(text, "A1A", "7", "B1B")));
        ASSERT_EQ(host.spots.size(), 1U) << text;
        EXPECT_EQ(host.spots[0].timestamp, std::nullopt) << text;
    }
    EXPECT_TRUE(feed.parseWsprnetLine(plainRow(date, "A1A", "7", "B1B")));
    ASSERT_EQ(host.spots.size(), 2U);
    EXPECT_EQ(host.spots[1].timestamp, reportTime);
}

struct Age {
    const char* what;
    std::chrono::microseconds ahead;
    bool sent;
};

TEST_F(WsprnetRowTest, RefusesOnlyTimesADayOrMoreAhead)
{
    using namespace std::chrono_literals;
    for (const Age& age :
         {Age{"now", 0us, true}, Age{"an hour ahead", 1h, true},
          Age{"a day less a microsecond ahead", 24h - 1us, true}, Age{"a day ahead", 24h, false},
          Age{"a day and a microsecond ahead", 24h + 1us, false}, Age{"25 hours ahead", 25h, false},
          Age{"25 hours ago", -25h, true}, Age{"a year ago", -365 * 24h, true},
          Age{"a century ago", -36525 * 24h, true}}) {
        FakeFeedHost listener;
        WsprnetFeed fresh(listener, clock, log);
        clock.time = reportTime - age.ahead;
        EXPECT_TRUE(fresh.parseWsprnetLine(plainRow(date, "A1A", "7", "B1B")));
        EXPECT_EQ(listener.spots.size(), age.sent ? 1U : 0U) << age.what;
        EXPECT_EQ(fresh.remembered().size(), age.sent ? 1 : 0) << age.what;
    }
}

TEST_F(WsprnetRowTest, ExaminesARefusedRowAgain)
{
    const QByteArray row = plainRow(date, "A1A", "7", "B1B");
    clock.time = reportTime - std::chrono::hours{24};
    EXPECT_TRUE(feed.parseWsprnetLine(row));
    EXPECT_TRUE(host.spots.empty());
    clock.advance(Seconds{1});
    EXPECT_TRUE(feed.parseWsprnetLine(row));
    EXPECT_EQ(host.spots.size(), 1U);
}

TEST_F(WsprnetRowTest, SendsARowAgainOnlyWhenItDiffers)
{
    const QByteArray row = plainRow(date, "A1A", "7", "B1B");
    for (const QByteArray& each :
         {row, row, row + ' ', row.toLower(), QByteArray(row).replace("<td>", "<td >"), row, row + ' '})
        EXPECT_TRUE(feed.parseWsprnetLine(each));
    EXPECT_EQ(host.spots.size(), 4U);
    EXPECT_EQ(feed.remembered().size(), 4);
}

} // namespace

} // namespace spotwell
