// SPDX-FileCopyrightText: 2026 the spotwell developers
// SPDX-License-Identifier: MIT

#include "tools/spotwell-bridge/spots/N1mmSpot.h"

#include "tests/support/Sanitizers.h"
#include "tests/tools/bridge/spots/SpotTestData.h"

#include <QLocale>
#include <QStringList>
#include <QXmlStreamReader>
#include <gtest/gtest.h>

namespace spotwell::bridge
{
namespace
{

/// What a reader finds in a datagram.
struct Read {
    QStringList names;
    QStringList texts;

    [[nodiscard]] QString text(const QString& name) const
    {
        const qsizetype index = names.indexOf(name);
        return index < 0 ? QStringLiteral("(none)") : texts[index];
    }
};

/// Reads a datagram as a whole document with one element, `spot`.
Read read(const QByteArray& datagram)
{
    Read found;
    QXmlStreamReader xml(datagram);
    EXPECT_TRUE(xml.readNextStartElement());
    EXPECT_EQ(xml.name(), u"spot");
    while (xml.readNextStartElement()) {
        found.names.append(xml.name().toString());
        found.texts.append(xml.readElementText());
    }
    while (!xml.atEnd())
        xml.readNext();
    EXPECT_FALSE(xml.hasError()) << xml.errorString().toStdString() << ": " << datagram.constData();
    EXPECT_LE(datagram.size(), 1400);
    return found;
}

QString readBack(QString SpotReport::*member, const QString& value, const QString& name)
{
    SpotReport report = usualReport();
    report.*member = value;
    return read(n1mmSpot(report)).text(name);
}

QString frequencyFor(double kilohertz)
{
    SpotReport report = usualReport();
    report.kilohertz = kilohertz;
    return read(n1mmSpot(report)).text(QStringLiteral("frequency"));
}

QString commentFor(const QString& comment, const QString& park)
{
    SpotReport report = usualReport();
    report.comment = comment;
    report.park = park;
    return read(n1mmSpot(report)).text(QStringLiteral("comment"));
}

TEST(N1mmSpot, isTheDocumentedDocument)
{
    SpotReport report = usualReport();
    report.comment = QStringLiteral("\"A & B\" <c>");
    report.park = QStringLiteral("US-1123");
    report.mode = QStringLiteral("FT8");
    report.grid = QStringLiteral("JN34");
    const QByteArray datagram = n1mmSpot(report);
    EXPECT_EQ(datagram.toStdString(), "<?xml version=\"1.0\" encoding=\"utf-8\"?>"
                                      "<spot>"
                                      "<app>SPOTWELL</app>"
                                      "<dxcall>X1X</dxcall>"
                                      "<frequency>14074.0</frequency>"
                                      "<spottercall>N0CALL</spottercall>"
                                      "<timestamp>2026-11-21 14:28:05</timestamp>"
                                      "<action>add</action>"
                                      "<mode>FT8</mode>"
                                      "<comment>&quot;A &amp; B&quot; &lt;c&gt; US-1123</comment>"
                                      "</spot>");
    const Read found = read(datagram);
    EXPECT_EQ(found.names,
              QStringList({QStringLiteral("app"), QStringLiteral("dxcall"), QStringLiteral("frequency"),
                           QStringLiteral("spottercall"), QStringLiteral("timestamp"),
                           QStringLiteral("action"), QStringLiteral("mode"), QStringLiteral("comment")}));
    EXPECT_EQ(found.texts, QStringList({QStringLiteral("SPOTWELL"), QStringLiteral("X1X"),
                                        QStringLiteral("14074.0"), QStringLiteral("N0CALL"),
                                        QStringLiteral("2026-11-21 14:28:05"), QStringLiteral("add"),
                                        QStringLiteral("FT8"), QStringLiteral("\"A & B\" <c> US-1123")}));
}

TEST(N1mmSpot, hasItsElementsEvenWhenTheyAreEmpty)
{
    SpotReport report = usualReport();
    report.comment.clear();
    EXPECT_TRUE(n1mmSpot(report).endsWith("<action>add</action><mode></mode><comment></comment></spot>"))
        << n1mmSpot(report).constData();
}

TEST(N1mmSpot, givesTheFrequencyOneToThreeDecimals)
{
    const QLocale before;
    QLocale::setDefault(QLocale(QLocale::German));
    EXPECT_EQ(frequencyFor(14074.0), QStringLiteral("14074.0"));
    EXPECT_EQ(frequencyFor(7074.5), QStringLiteral("7074.5"));
    EXPECT_EQ(frequencyFor(7074.25), QStringLiteral("7074.25"));
    EXPECT_EQ(frequencyFor(7074.125), QStringLiteral("7074.125"));
    EXPECT_EQ(frequencyFor(7074.005), QStringLiteral("7074.005"));
    EXPECT_EQ(frequencyFor(7074.0625), QStringLiteral("7074.062"));
    EXPECT_EQ(frequencyFor(7074.0004), QStringLiteral("7074.0"));
    EXPECT_EQ(frequencyFor(14.0956 * 1000.0), QStringLiteral("14095.6"));
    EXPECT_EQ(frequencyFor(10368100.0), QStringLiteral("10368100.0"));
    EXPECT_EQ(frequencyFor(1e9), QStringLiteral("1000000000.0"));
    QLocale::setDefault(before);
}

TEST(N1mmSpot, givesTheTimeInUtcWithoutFractions)
{
    const struct {
        TimePoint time;
        QStringView text;
    } cases[] = {
        {distantPast, u"0001-01-01 00:00:00"},
        {at(1969, 12, 31, 23, 59, 59, 999999), u"1969-12-31 23:59:59"},
        {at(2024, 2, 29, 7, 5, 0), u"2024-02-29 07:05:00"},
        {at(9999, 12, 31, 23, 59, 59, 999999), u"9999-12-31 23:59:59"},
    };
    SpotReport report = usualReport();
    for (const auto& [time, text] : cases) {
        report.time = time;
        EXPECT_EQ(read(n1mmSpot(report)).text(QStringLiteral("timestamp")), text.toString());
    }
}

TEST(N1mmSpot, namesTheParkBehindTheWholeComment)
{
    const QString park = QStringLiteral("US-1123");
    EXPECT_EQ(commentFor({}, park), park);
    EXPECT_EQ(commentFor(QString(300, u'x'), park), QString(300, u'x') + QStringLiteral(" US-1123"));
    EXPECT_EQ(commentFor(QStringLiteral("on us-1123"), park), QStringLiteral("on us-1123"));
}

TEST(N1mmSpot, isWellFormedWhateverIsInTheReport)
{
    constexpr int dense = sanitized ? 0x300 : 0x3000;
    for (int code = 0; code <= 0xFFFF; code += code < dense ? 1 : 0x3F) {
        const QString text = u'a' + QString(QChar(code)) + u'b';
        ASSERT_EQ(commentFor(text, {}), u'a' + QString(plainFor(code)) + u'b') << code;
    }
    const QString unusual = QStringLiteral("<]]>&\"'\u0001\uFFFE\uFFFF");
    const QString plain = QStringLiteral("<]]>&\"' \uFFFD\uFFFD");
    EXPECT_EQ(readBack(&SpotReport::call, unusual, QStringLiteral("dxcall")), plain);
    EXPECT_EQ(readBack(&SpotReport::spotter, unusual, QStringLiteral("spottercall")), plain);
    EXPECT_EQ(readBack(&SpotReport::mode, unusual, QStringLiteral("mode")), plain);
    EXPECT_EQ(readBack(&SpotReport::comment, radio, QStringLiteral("comment")), radio);
}

TEST(N1mmSpot, cutsTheCommentAtTheSizeOfAPacket)
{
    SpotReport report = usualReport();
    report.comment.clear();
    const qsizetype room = 1400 - n1mmSpot(report).size();
    ASSERT_GT(room, 1000);
    const struct {
        QString character;
        qsizetype bytes;
    } cases[] = {
        {QStringLiteral("x"), 1}, {QStringLiteral("\u00FC"), 2}, {radio, 4},
        {QStringLiteral("&"), 5}, {QStringLiteral("\""), 6},
    };
    for (const auto& [character, bytes] : cases) {
        const qsizetype most = room / bytes;
        EXPECT_EQ(commentFor(character.repeated(most), {}), character.repeated(most));
        EXPECT_EQ(commentFor(character.repeated(most + 1), {}), character.repeated(most));
        EXPECT_EQ(commentFor(character.repeated(2000), QStringLiteral("US-1123")), character.repeated(most));
    }
    const QString fitting(room - 8, u'x');
    EXPECT_EQ(commentFor(fitting, QStringLiteral("US-1123")), fitting + QStringLiteral(" US-1123"));
    EXPECT_EQ(commentFor(fitting + u'x', QStringLiteral("US-1123")), fitting + QStringLiteral("x US-112"));
}

TEST(N1mmSpot, fitsAPacketHoweverLongItsTextsAre)
{
    SpotReport report = usualReport();
    const QString endless(100000, u'"');
    for (QString* text : {&report.call, &report.spotter, &report.mode, &report.comment, &report.park})
        *text = endless;
    report.kilohertz = highestKilohertz;
    const Read found = read(n1mmSpot(report));
    EXPECT_EQ(found.text(QStringLiteral("dxcall")), QString(32, u'"'));
    EXPECT_EQ(found.text(QStringLiteral("spottercall")), QString(32, u'"'));
    EXPECT_EQ(found.text(QStringLiteral("mode")), QString(32, u'"'));
    EXPECT_GT(found.text(QStringLiteral("comment")).size(), 80);
}

} // namespace
} // namespace spotwell::bridge
