// SPDX-FileCopyrightText: 2026 the spotwell developers
// SPDX-License-Identifier: MIT

#include "tools/spotwell-bridge/spots/N1mmSpot.h"

#include "tools/spotwell-bridge/spots/SpotText.h"
#include "util/NumberText.h"

#include <QXmlStreamWriter>

namespace spotwell::bridge
{

namespace
{

/// kHz with one decimal, and with a second and a third where the frequency has them.
QString frequencyText(double kilohertz)
{
    QString text = fixedNumber(kilohertz, 3);
    while (text.endsWith(u'0') && text.at(text.size() - 2) != u'.')
        text.chop(1);
    return text;
}

QString timestampText(TimePoint time)
{
    const auto day = std::chrono::floor<std::chrono::days>(time);
    const std::chrono::year_month_day date{day};
    const std::chrono::hh_mm_ss clock{std::chrono::floor<std::chrono::seconds>(time - day)};
    return QString::asprintf(
        "%04d-%02u-%02u %02d:%02d:%02d", static_cast<int>(date.year()), static_cast<unsigned>(date.month()),
        static_cast<unsigned>(date.day()), static_cast<int>(clock.hours().count()),
        static_cast<int>(clock.minutes().count()), static_cast<int>(clock.seconds().count()));
}

QString boundedField(const QString& text, qsizetype longest)
{
    return firstCharacters(plainText(text), longest).toString();
}

QByteArray datagramWith(const SpotReport& report, const QString& comment)
{
    QByteArray datagram;
    QXmlStreamWriter xml(&datagram);
    // In the letters of the published example; writeStartDocument() has its own.
    xml.writeProcessingInstruction(QStringLiteral("xml"),
                                   QStringLiteral("version=\"1.0\" encoding=\"utf-8\""));
    xml.writeStartElement(QStringLiteral("spot"));
    const auto element = [&xml](const QString& name, const QString& text) {
        xml.writeTextElement(name, text);
    };
    element(QStringLiteral("app"), QStringLiteral("SPOTWELL"));
    element(QStringLiteral("dxcall"), boundedField(report.call, longestCall));
    element(QStringLiteral("frequency"), frequencyText(report.kilohertz));
    element(QStringLiteral("spottercall"), boundedField(report.spotter, longestCall));
    element(QStringLiteral("timestamp"), timestampText(report.time));
    element(QStringLiteral("action"), QStringLiteral("add"));
    element(QStringLiteral("mode"), boundedField(report.mode, longestMode));
    element(QStringLiteral("comment"), comment);
    xml.writeEndElement();
    return datagram;
}

} // namespace

QByteArray n1mmSpot(const SpotReport& report)
{
    const QString comment = commentWithPark(plainText(report.comment), plainText(report.park));
    QByteArray datagram = datagramWith(report, comment);
    if (datagram.size() <= largestDatagram)
        return datagram;
    // Escapes and UTF-8 make up to six bytes of a character, so how many of them fit is found by trying.
    qsizetype fitting = 0;
    qsizetype tooMany = characterCount(comment);
    while (tooMany - fitting > 1) {
        const qsizetype middle = (fitting + tooMany) / 2;
        datagram = datagramWith(report, firstCharacters(comment, middle).toString());
        (datagram.size() <= largestDatagram ? fitting : tooMany) = middle;
    }
    return datagramWith(report, firstCharacters(comment, fitting).toString());
}

} // namespace spotwell::bridge
