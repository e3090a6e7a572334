// SPDX-FileCopyrightText: 2026 the spotwell developers
// SPDX-License-Identifier: MIT

#include "tools/spotwell-bridge/spots/SpotLine.h"

#include "tests/tools/bridge/spots/SpotTestData.h"
#include "tools/spotwell-bridge/spots/SpotText.h"

#include <QLocale>
#include <gtest/gtest.h>

#include <limits>

namespace spotwell::bridge
{
namespace
{

/// The line of the usual spot with these for its spotter and frequency.
QString lineFor(const QString& spotter, double kilohertz)
{
    SpotReport report = usualReport();
    report.spotter = spotter;
    report.kilohertz = kilohertz;
    return spotLine(report);
}

/// The comment column's thirty characters for `comment` and `park`.
QString commentColumn(const QString& comment, const QString& park)
{
    SpotReport report = usualReport();
    report.comment = comment;
    report.park = park;
    const QString line = spotLine(report);
    EXPECT_EQ(characterCount(line), 75) << line.toStdString();
    const QStringView before = firstCharacters(line, 39);
    return firstCharacters(QStringView(line).sliced(before.size()), 30).toString();
}

/// `text` and blanks up to thirty characters.
QString inColumn(const QString& text)
{
    return text + QString(30 - characterCount(text), u' ');
}

TEST(SpotLine, hasItsColumns)
{
    EXPECT_EQ(spotLine(usualReport()),
              QStringLiteral("DX de N0CALL:    14074.0  X1X          Tks so Much                    1428Z"));
    SpotReport report = usualReport();
    report.grid = QStringLiteral("JN34");
    EXPECT_EQ(
        spotLine(report),
        QStringLiteral("DX de N0CALL:    14074.0  X1X          Tks so Much                    1428Z JN34"));
    report.mode = QStringLiteral("FT8");
    report.park = QStringLiteral("US-1123");
    report.kilohertz = 136.0;
    report.time = at(2026, 11, 21, 0, 0);
    EXPECT_EQ(
        spotLine(report),
        QStringLiteral("DX de N0CALL:      136.0  X1X          Tks so Much US-1123            0000Z JN34"));
}

TEST(SpotLine, leavesABlankBeforeTheFrequency)
{
    const struct {
        double kilohertz;
        QStringView spotter;
        QStringView begin;
    } cases[] = {
        {7074.0, u"1234567890", u"DX de 1234567890: 7074.0  X1X"},
        {7074.0, u"12345678901", u"DX de 1234567890: 7074.0  X1X"},
        {14074.0, u"123456789", u"DX de 123456789: 14074.0  X1X"},
        {14074.0, u"1234567890", u"DX de 123456789: 14074.0  X1X"},
        {144300.0, u"12345678", u"DX de 12345678: 144300.0  X1X"},
        {144300.0, u"123456789", u"DX de 12345678: 144300.0  X1X"},
        {10368000.0, u"123456", u"DX de 123456: 10368000.0  X1X"},
        {10368000.0, u"1234567", u"DX de 123456: 10368000.0  X1X"},
        {1e9, u"1234", u"DX de 1234: 1000000000.0  X1X"},
        {1e9, u"12345", u"DX de 1234: 1000000000.0  X1X"},
        {0.1, u"1234567890123", u"DX de 1234567890123: 0.1  X1X"},
        {0.1, u"12345678901234", u"DX de 1234567890123: 0.1  X1X"},
        {14074.0, u"N", u"DX de N:         14074.0  X1X"},
    };
    for (const auto& [kilohertz, spotter, begin] : cases) {
        const QString line = lineFor(spotter.toString(), kilohertz);
        EXPECT_EQ(line.first(29), begin.toString());
        EXPECT_EQ(line.size(), 75);
    }
}

TEST(SpotLine, cutsTheCall)
{
    SpotReport report = usualReport();
    report.call = QStringLiteral("EA8/DL1ABC/P");
    EXPECT_EQ(spotLine(report),
              QStringLiteral("DX de N0CALL:    14074.0  EA8/DL1ABC/P Tks so Much                    1428Z"));
    report.call = QStringLiteral("EA8/DL1ABC/PM");
    EXPECT_EQ(spotLine(report),
              QStringLiteral("DX de N0CALL:    14074.0  EA8/DL1ABC/P Tks so Much                    1428Z"));
}

TEST(SpotLine, roundsTheFrequencyLikePrintfWhateverTheLocale)
{
    const QLocale before;
    QLocale::setDefault(QLocale(QLocale::German));
    const struct {
        double kilohertz;
        QStringView text;
    } cases[] = {
        {7074.5, u"  7074.5"},   {7074.25, u"  7074.2"},    {7074.75, u"  7074.8"},
        {7074.26, u"  7074.3"},  {7074.949, u"  7074.9"},   {7074.95, u"  7074.9"},
        {7074.951, u"  7075.0"}, {999999.96, u"1000000.0"}, {0.04, u"     0.0"},
    };
    for (const auto& [kilohertz, text] : cases)
        EXPECT_TRUE(lineFor(QStringLiteral("N0C"), kilohertz).first(24).endsWith(text.toString()))
            << kilohertz;
    QLocale::setDefault(before);
}

TEST(SpotLine, namesTheParkWhereThereIsRoom)
{
    const QString park = QStringLiteral("US-1123");
    const QString twentyTwo(22, u'x');
    EXPECT_EQ(commentColumn({}, {}), QString(30, u' '));
    EXPECT_EQ(commentColumn({}, park), inColumn(park));
    EXPECT_EQ(commentColumn(QStringLiteral("cq"), park), inColumn(QStringLiteral("cq US-1123")));
    EXPECT_EQ(commentColumn(QStringLiteral("cq us-1123 up"), park),
              inColumn(QStringLiteral("cq us-1123 up")));
    EXPECT_EQ(commentColumn(twentyTwo, park), twentyTwo + QStringLiteral(" US-1123"));
    EXPECT_EQ(commentColumn(twentyTwo + u'x', park), inColumn(twentyTwo + u'x'));
    EXPECT_EQ(commentColumn(QString(30, u'x'), park), QString(30, u'x'));
    EXPECT_EQ(commentColumn(QString(31, u'x'), park), QString(30, u'x'));
    EXPECT_EQ(commentColumn({}, QString(32, u'P')), QString(30, u'P'));
}

TEST(SpotLine, countsCharactersAndSplitsNone)
{
    const QString park = QStringLiteral("US-1123");
    EXPECT_EQ(commentColumn(radio.repeated(22), park), radio.repeated(22) + QStringLiteral(" US-1123"));
    EXPECT_EQ(commentColumn(radio.repeated(23), park), inColumn(radio.repeated(23)));
    EXPECT_EQ(commentColumn(u'x' + radio.repeated(30), {}), u'x' + radio.repeated(29));

    SpotReport report = usualReport();
    report.call = radio.repeated(13);
    report.spotter = radio.repeated(10);
    EXPECT_EQ(spotLine(report), QStringLiteral("DX de ") + radio.repeated(9) + QStringLiteral(": 14074.0  ") +
                                    radio.repeated(12) + u' ' + inColumn(QStringLiteral("Tks so Much")) +
                                    QStringLiteral(" 1428Z"));
}

TEST(SpotLine, hasPlainBlanksWhereACommentIsCutBehindOtherOnes)
{
    const QString words = QString(28, u'c');
    const QString wide(3, QChar(0x2001));
    EXPECT_EQ(commentColumn(words + wide + u'd', {}), words + QStringLiteral("  "));
    EXPECT_EQ(commentColumn(words.first(27) + wide.first(2) + u'd', {}),
              words.first(27) + wide.first(2) + u'd');
}

TEST(SpotLine, boundsTheGrid)
{
    SpotReport report = usualReport();
    report.grid = QStringLiteral("JN34ke12");
    EXPECT_EQ(spotLine(report).sliced(70), QStringLiteral("1428Z JN34ke12"));
    report.grid = QStringLiteral("JN34ke12xx");
    EXPECT_EQ(spotLine(report).sliced(70), QStringLiteral("1428Z JN34ke12"));
}

TEST(SpotLine, isOneLineWhateverIsInTheReport)
{
    SpotReport report = usualReport();
    for (QString* text : {&report.call, &report.spotter, &report.comment, &report.park, &report.grid})
        *text = QStringLiteral("\r\n\u0085\u2028\u2029\u0000");
    EXPECT_EQ(spotLine(report), QStringLiteral("DX de ") + QString(6, u' ') + QStringLiteral(":    14074.0") +
                                    QString(45, u' ') + QStringLiteral(" 1428Z") + QString(7, u' '));
}

TEST(SpotLine, hasATimeForEveryReport)
{
    SpotReport report = usualReport();
    for (const TimePoint time :
         {distantPast, at(1969, 12, 31, 23, 59, 59, 999999), at(9999, 12, 31, 23, 59)}) {
        report.time = time;
        EXPECT_EQ(spotLine(report).sliced(69),
                  time == distantPast ? QStringLiteral(" 0000Z") : QStringLiteral(" 2359Z"));
    }
}

TEST(ClusterLine, passesUnchanged)
{
    for (const QString& line : {
             QStringLiteral(
                 "DX de N0CALL:    21205.0  X1X          up\"Tks so Much\"GL Team!!       1428Z JN34"),
             QStringLiteral(
                 "DX de N0CALL:    21205.0  X1X          'Gr\u00FC\u00DFe' \\ <&>\u00A0           1428Z   "),
             QStringLiteral(" "),
             QStringLiteral("a\tb"),
             QString(4096, u'x'),
             radio.repeated(4096),
         })
        EXPECT_EQ(clusterLine(line), line);
}

TEST(ClusterLine, isAbsentWhenEmptyOrTooLong)
{
    EXPECT_FALSE(clusterLine(QString()));
    EXPECT_FALSE(clusterLine(QStringLiteral("")));
    EXPECT_FALSE(clusterLine(QString(4097, u'x')));
    EXPECT_FALSE(clusterLine(radio.repeated(4097)));
    EXPECT_FALSE(clusterLine(QString(1 << 20, u'x')));
}

TEST(ClusterLine, hasBlanksForWhatEndsOrBreaksALine)
{
    for (int code = 0; code <= 0xFFFF; ++code) {
        const QChar expected = isControlCode(code) && code != '\t' ? QChar(u' ') : QChar(code);
        ASSERT_EQ(clusterLine(u'a' + QString(QChar(code)) + u'b'), u'a' + QString(expected) + u'b') << code;
    }
    EXPECT_EQ(clusterLine(QStringLiteral("\r\n")), QStringLiteral("  "));
    EXPECT_EQ(clusterLine(QStringLiteral("DX de N0CALL:\r\nbye\u0000")),
              QStringLiteral("DX de N0CALL:  bye "));
}

} // namespace
} // namespace spotwell::bridge
