// SPDX-FileCopyrightText: 2026 the spotwell developers
// SPDX-License-Identifier: MIT

#include "tests/tools/bridge/spots/SpotTestData.h"
#include "tools/spotwell-bridge/spots/SpotLine.h"
#include "tools/spotwell-bridge/spots/SpotText.h"
#include "tools/spotwell-simulator/SpotLines.h"

#include <gtest/gtest.h>

namespace spotwell::bridge
{
namespace
{

/// What a line says, in brief: spotter, frequency, call, comment, hour and minute, grid; or nothing.
QString brief(QStringView line, TimePoint now)
{
    const auto report = reportOfLine(line, now);
    if (!report)
        return QStringLiteral("(absent)");
    EXPECT_EQ(report->mode + report->park, QString());
    const bool isNow = report->time == now;
    const auto day = std::chrono::floor<std::chrono::days>(now);
    const auto minutes = std::chrono::floor<std::chrono::minutes>(report->time - day).count();
    return QStringList({report->spotter, QString::number(report->kilohertz, 'f', 3), report->call,
                        report->comment,
                        isNow ? QStringLiteral("now") : QString::number(minutes / 60 * 100 + minutes % 60),
                        report->grid})
        .join(u'|');
}

QString brief(QStringView line)
{
    return brief(line, afternoon);
}

TEST(ReportOfLine, readsTheColumns)
{
    EXPECT_EQ(brief(u"DX de N0CALL:    21205.0  X1X          up\"Tks so Much\"GL Team!!       1405Z JN34"),
              QStringLiteral("N0CALL|21205.000|X1X|up\"Tks so Much\"GL Team!!|1405|JN34"));
    EXPECT_EQ(brief(u"DX de N0CALL:    21205.0  X1X          Tks so Much                    1405Z"),
              QStringLiteral("N0CALL|21205.000|X1X|Tks so Much|1405|"));
    EXPECT_EQ(brief(u"DX de N0CALL:    21205.0  X1X                                         1405Z  jn34ke  "),
              QStringLiteral("N0CALL|21205.000|X1X||1405|jn34ke"));
    // Thirty characters of comment, and one in the blank's column.
    EXPECT_EQ(brief(u"DX de N0CALL:    21205.0  X1X          123456789012345678901234567890 1405Z"),
              QStringLiteral("N0CALL|21205.000|X1X|123456789012345678901234567890|1405|"));
    EXPECT_EQ(brief(u"DX de N0CALL:    21205.0  X1X          12345678901234567890123456789011405Z"),
              QStringLiteral("N0CALL|21205.000|X1X|1234567890123456789012345678901|1405|"));
    // The columns' time counts, whatever the comment names.
    EXPECT_EQ(brief(u"DX de N0CALL:    21205.0  X1X          QRX 1500Z til 1600Z            1405Z 1700Z"),
              QStringLiteral("N0CALL|21205.000|X1X|QRX 1500Z til 1600Z|1405|"));
    // Columns are characters.
    const QString emoji = QStringLiteral("DX de N0CALL:    21205.0  X1X          ") + radio.repeated(25) +
                          QStringLiteral("1500Z 1405Z JN34");
    EXPECT_EQ(brief(emoji), QString(QStringLiteral("N0CALL|21205.000|X1X|") + radio.repeated(25) +
                                    QStringLiteral("1500Z|1405|JN34")));
}

TEST(ReportOfLine, readsFrequenciesThatTouchTheColon)
{
    EXPECT_EQ(brief(u"DX de DL1ABC-2-#:14074.0  X1X          FT8                            1405Z"),
              QStringLiteral("DL1ABC-2-#|14074.000|X1X|FT8|1405|"));
    EXPECT_EQ(brief(u"DX de DL1ABC:10368100.25 X1X 1405Z"), QStringLiteral("DL1ABC|10368100.250|X1X||1405|"));
    EXPECT_EQ(brief(u"DX de  DL1ABC : 14074 X1X 1405Z"), QStringLiteral("DL1ABC|14074.000|X1X||1405|"));
}

TEST(ReportOfLine, findsATimeOutsideItsColumns)
{
    EXPECT_EQ(brief(u"DX de N0CALL: 21205.0 X1X QRX 1500Z up 1405Z JN34"),
              QStringLiteral("N0CALL|21205.000|X1X|QRX 1500Z up|1405|JN34"));
    EXPECT_EQ(brief(u"DX de N0CALL: 21205.0 X1X 1405Z"), QStringLiteral("N0CALL|21205.000|X1X||1405|"));
    EXPECT_EQ(brief(u"DX de N0CALL: 21205.0 X1X up 1405Z Nice JN34"),
              QStringLiteral("N0CALL|21205.000|X1X|up|1405|"));
    // One column early, one late.
    EXPECT_EQ(brief(u"DX de N0CALL:    21205.0  X1X          Tks so Much                   1405Z JN34"),
              QStringLiteral("N0CALL|21205.000|X1X|Tks so Much|1405|JN34"));
    EXPECT_EQ(brief(u"DX de N0CALL:    21205.0  X1X          Tks so Much                     1405Z JN34"),
              QStringLiteral("N0CALL|21205.000|X1X|Tks so Much|1405|JN34"));
    EXPECT_EQ(brief(u"DX de N0CALL:\t21205.0\tX1X\tTks so Much\t1405Z"),
              QStringLiteral("N0CALL|21205.000|X1X|Tks so Much|1405|"));
}

TEST(ReportOfLine, isOfNowWithoutATime)
{
    EXPECT_EQ(brief(u"DX de N0CALL: 21205.0 X1X"), QStringLiteral("N0CALL|21205.000|X1X||now|"));
    EXPECT_EQ(brief(u"DX de N0CALL: 21205.0 X1X  Tks so Much JN34  "),
              QStringLiteral("N0CALL|21205.000|X1X|Tks so Much JN34|now|"));
    for (const QStringView word : {u"9999Z", u"2400Z", u"1260Z", u"1405z", u"1405", u"14O5Z", u"01405Z",
                                   u"1405ZZ", u"-405Z", u"\u0661\u0664\u0660\u0665Z"}) {
        const QString line =
            QStringLiteral("DX de N0CALL:    21205.0  X1X          up                             ") +
            word.toString();
        EXPECT_TRUE(brief(line).endsWith(u"|now|")) << line.toStdString();
        EXPECT_TRUE(brief(line).startsWith(u"N0CALL|21205.000|X1X|up  ")) << line.toStdString();
        const QString shortLine = QStringLiteral("DX de N0CALL: 21205.0 X1X up 1405Z ") + word.toString();
        EXPECT_EQ(brief(shortLine), QStringLiteral("N0CALL|21205.000|X1X|up|1405|"));
    }
    EXPECT_EQ(brief(u"DX de N0CALL: 21205.0 X1X 0000Z", at(2026, 11, 21, 1, 0)),
              QStringLiteral("N0CALL|21205.000|X1X||0|"));
    EXPECT_EQ(brief(u"DX de N0CALL: 21205.0 X1X 2359Z", at(2026, 11, 21, 23, 0)),
              QStringLiteral("N0CALL|21205.000|X1X||2359|"));
}

TEST(ReportOfLine, takesTheTimeNearestToNow)
{
    const struct {
        QStringView time;
        TimePoint now;
        TimePoint expected;
    } cases[] = {
        {u"1428Z", at(2026, 11, 21, 14, 28, 5), at(2026, 11, 21, 14, 28)},
        {u"1429Z", at(2026, 11, 21, 14, 28, 5), at(2026, 11, 21, 14, 29)},
        {u"2359Z", at(2027, 1, 1, 0, 0, 1), at(2026, 12, 31, 23, 59)},
        {u"2359Z", at(2027, 1, 1, 11, 58, 59), at(2026, 12, 31, 23, 59)},
        {u"2359Z", at(2027, 1, 1, 11, 59), at(2026, 12, 31, 23, 59)},
        {u"2359Z", at(2027, 1, 1, 11, 59, 0, 1), at(2027, 1, 1, 23, 59)},
        {u"0001Z", at(2026, 12, 31, 23, 59, 59), at(2027, 1, 1, 0, 1)},
        {u"0000Z", at(2026, 12, 31, 12, 0, 0, 1), at(2027, 1, 1, 0, 0)},
        {u"0000Z", at(2026, 12, 31, 12, 0), at(2026, 12, 31, 0, 0)},
        {u"0000Z", at(2026, 12, 31, 11, 59, 59), at(2026, 12, 31, 0, 0)},
        {u"0229Z", at(2026, 11, 21, 14, 28, 5), at(2026, 11, 21, 2, 29)},
        {u"0228Z", at(2026, 11, 21, 14, 28, 5), at(2026, 11, 22, 2, 28)},
        {u"2359Z", at(1970, 1, 1, 0, 0), at(1969, 12, 31, 23, 59)},
    };
    for (const auto& [time, now, expected] : cases) {
        const auto report = reportOfLine(QStringLiteral("DX de N0CALL: 21205.0 X1X ") + time.toString(), now);
        ASSERT_TRUE(report);
        EXPECT_EQ(report->time, expected);
    }
}

TEST(ReportOfLine, isAbsentForOtherLines)
{
    for (const QStringView line : {
             u"",
             u"DX de ",
             u"DX de N0CALL",
             u"DX de N0CALL:",
             u"DX de N0CALL: ",
             u"DX de N0CALL: 21205.0",
             u"DX de N0CALL: 21205.0 ",
             u"DX de N0CALL: 21205.0 1405Z",
             u"DX de : 21205.0 X1X",
             u"DX de N0 CALL: 21205.0 X1X",
             u"DX de N0CALL 21205.0 X1X",
             u"DX de N0CALL: X1X 21205.0",
             u"DX de N0CALL: 0.0 X1X",
             u"DX de N0CALL: -21205.0 X1X",
             u"DX de N0CALL: +21205.0 X1X",
             u"DX de N0CALL: 2e4 X1X",
             u"DX de N0CALL: inf X1X",
             u"DX de N0CALL: nan X1X",
             u"DX de N0CALL: . X1X",
             u"DX de N0CALL: 21.205.0 X1X",
             u"DX de N0CALL: 21,205.0 X1X",
             u"DX de N0CALL: 0x10 X1X",
             u"DX de N0CALL: \u0662\u0661 X1X",
             u"DX de N0CALL: 1000000000.1 X1X",
             u"dx de N0CALL: 21205.0 X1X",
             u" DX de N0CALL: 21205.0 X1X",
             u"DX deN0CALL: 21205.0 X1X",
             u"To ALL de N0CALL: 21205.0 X1X",
             u"WWV de N0CALL <18>:   SFI=70, A=5",
         })
        EXPECT_EQ(brief(line), QStringLiteral("(absent)")) << line.toString().toStdString();
    EXPECT_EQ(brief(u"DX de N0CALL: 1000000000.0 X1X"), QStringLiteral("N0CALL|1000000000.000|X1X||now|"));
}

TEST(ReportOfLine, boundsAndCleansItsTexts)
{
    const QString begin =
        QStringLiteral("DX de ") + QString(33, u'S') + QStringLiteral(": 21205.0 ") + QString(33, u'C');
    const auto report = reportOfLine(begin + u' ' + QString(1001, u'x'), afternoon);
    ASSERT_TRUE(report);
    EXPECT_EQ(report->spotter, QString(32, u'S'));
    EXPECT_EQ(report->call, QString(32, u'C'));
    EXPECT_EQ(report->comment, QString(1000, u'x'));
    EXPECT_EQ(
        brief(QStringLiteral("DX de N0CALL:\u000721205.0\r\nX1X a\u0000b\u2028c\uFFFF 1405Z\u0085JN34\n")),
        QStringLiteral("N0CALL|21205.000|X1X|a b c\uFFFD|1405|JN34"));
    const QString longest = QStringLiteral("DX de N0CALL: 21205.0 X1X ").leftJustified(4096, u'x');
    EXPECT_TRUE(reportOfLine(longest, afternoon));
    EXPECT_FALSE(reportOfLine(QString(longest + u'x'), afternoon));
}

TEST(ReportOfLine, readsEveryLineOfANode)
{
    simulator::SpotLines lines;
    for (int number = 0; number < 1000; ++number) {
        simulator::SpotFormat format;
        format.length = number % 2 == 0 ? 75 : 80;
        const QString line = QString::fromLatin1(lines.next(format, afternoon)).chopped(2);
        const auto report = reportOfLine(line, afternoon);
        ASSERT_TRUE(report) << line.toStdString();
        ASSERT_EQ(report->spotter, line.section(u':', 0, 0).sliced(6));
        ASSERT_EQ(report->kilohertz,
                  line.section(u':', 1, 1).first(24 - line.indexOf(u':') - 1).trimmed().toDouble());
        ASSERT_EQ(report->call, line.sliced(26, 12).trimmed());
        ASSERT_EQ(report->comment, line.sliced(39, 30).trimmed());
        ASSERT_EQ(report->time, at(2026, 11, 21, 14, 28));
        ASSERT_EQ(report->grid, line.sliced(75).trimmed());
        ASSERT_EQ(report->grid.size(), number % 2 == 0 ? 0 : 4);
        // Formed again it is the same line.
        ASSERT_EQ(spotLine(*report), line);
        ASSERT_EQ(clusterLine(line), line);
    }
}

TEST(ReportOfLine, givesBackWhatALineWasFormedOf)
{
    const QStringView spotters[] = {u"N0CALL", u"DL1ABC-2", u"K3LR-#", u"S"};
    const QStringView calls[] = {u"X1X", u"EA8/DL1ABC/P", u"3B8ABC"};
    const QStringView comments[] = {
        u"",      u"cq", u"FT8 -10 dB 1428 Hz", u"1428Z 0000Z 9999Z", u"123456789012345678901234567890",
        u"a  b:c"};
    for (const QStringView spotter : spotters) {
        for (const QStringView call : calls) {
            for (const QStringView comment : comments) {
                for (const double kilohertz : {136.5, 7074.0, 14074.1, 144300.0}) {
                    SpotReport report = usualReport();
                    report.spotter = spotter.toString();
                    report.call = call.toString();
                    report.comment = comment.toString();
                    report.kilohertz = kilohertz;
                    report.grid = QStringLiteral("JN34");
                    const QString line = spotLine(report);
                    const auto found = reportOfLine(line, afternoon);
                    ASSERT_TRUE(found) << line.toStdString();
                    EXPECT_EQ(found->spotter, report.spotter);
                    EXPECT_EQ(found->call, report.call);
                    EXPECT_EQ(found->comment, report.comment);
                    EXPECT_EQ(found->kilohertz, report.kilohertz);
                    EXPECT_EQ(found->grid, report.grid);
                    EXPECT_EQ(found->time, at(2026, 11, 21, 14, 28));
                }
            }
        }
    }
}

} // namespace
} // namespace spotwell::bridge
