// SPDX-FileCopyrightText: 2026 the spotwell developers
// SPDX-License-Identifier: MIT

// Cluster lines and spot notifications, read and formed again: a spot line keeps its columns and reads as
// what it was formed of, a datagram fits its packet and is XML.

#include "fuzz/Check.h"
#include "tools/spotwell-bridge/spots/N1mmSpot.h"
#include "tools/spotwell-bridge/spots/SpotLine.h"
#include "tools/spotwell-bridge/spots/SpotText.h"

#include <QXmlStreamReader>

#include <algorithm>
#include <cmath>

namespace
{

using spotwell::check;
using spotwell::TimePoint;
using namespace spotwell::bridge;

constexpr TimePoint now = std::chrono::sys_days{std::chrono::year{2026} / 11 / 21} + std::chrono::hours{12};

bool hasControls(QStringView text)
{
    return std::any_of(text.begin(), text.end(), isControl);
}

bool isWord(QStringView text)
{
    return Words(text).next() == text;
}

void checkText(QStringView text, qsizetype longest)
{
    check(text.isValidUtf16() && !hasControls(text), "texts are plain");
    check(text.trimmed() == text && characterCount(text) <= longest, "texts are trimmed and bounded");
}

void checkReport(const SpotReport& report)
{
    checkText(report.call, longestCall);
    checkText(report.spotter, longestCall);
    checkText(report.comment, longestComment);
    checkText(report.park, longestPark);
    checkText(report.mode, longestMode);
    check(!report.call.isEmpty() && !report.spotter.isEmpty(), "both stations are known");
    check(isWord(report.call) && isWord(report.spotter) && isWord(report.park), "names have no blanks");
    check(!report.spotter.contains(u':'), "a spotter has no colon");
    check(report.kilohertz > 0.0 && report.kilohertz <= highestKilohertz, "frequencies have bounds");
    check(report.grid.isEmpty() || isLocator(report.grid), "a grid is a locator");
}

/// `text` of the line and `whole` of the report it was formed of.
void checkColumn(QStringView text, QStringView whole)
{
    check(whole.first(std::min(text.size(), whole.size())) == text, "columns begin like what is in them");
    check(text.isEmpty() == whole.isEmpty(), "columns are not empty for no reason");
}

void checkSpotLine(const SpotReport& report)
{
    const QString line = spotLine(report);
    check(characterCount(line) ==
              75 + (report.grid.isEmpty() ? 0 : 1 + std::min(report.grid.size(), qsizetype{8})),
          "75 columns, then the grid");
    check(line.isValidUtf16() && !hasControls(line), "a line is plain");
    check(clusterLine(line) == line, "a line passes");

    const auto found = reportOfLine(line, report.time);
    const bool looksLikeATime = report.call.size() == 5 && report.call.endsWith(u'Z');
    check(found || report.kilohertz < 0.1 || looksLikeATime, "a line is read again");
    if (!found)
        return;
    checkColumn(found->call, report.call);
    checkColumn(found->spotter, report.spotter);
    checkColumn(found->comment, commentWithPark(report.comment, report.park));
    check(std::abs(found->kilohertz - report.kilohertz) < 0.0501, "the same frequency but for its rounding");
    check(found->time <= report.time && report.time - found->time < std::chrono::minutes{1},
          "the same minute");
    check(report.grid.startsWith(found->grid), "the same grid");
    check(spotLine(*found) == line, "formed again it is the same");
}

void checkDatagram(const SpotReport& report)
{
    const QByteArray datagram = n1mmSpot(report);
    check(datagram.size() <= largestDatagram, "a datagram fits a packet");
    QXmlStreamReader xml(datagram);
    check(xml.readNextStartElement() && xml.name() == u"spot", "a datagram is a spot");
    while (xml.readNextStartElement()) {
        const QString name = xml.name().toString();
        const QString text = xml.readElementText();
        check(name != u"dxcall" || text == report.call, "the same call");
        check(name != u"spottercall" || text == report.spotter, "the same spotter");
        check(name != u"mode" || text == report.mode, "the same mode");
        check(name != u"comment" || commentWithPark(report.comment, report.park).startsWith(text),
              "the same comment");
    }
    check(xml.readNext() == QXmlStreamReader::EndDocument && !xml.hasError(), "a datagram is well-formed");
}

void checkForms(const std::optional<SpotReport>& report)
{
    if (!report)
        return;
    checkReport(*report);
    checkSpotLine(*report);
    checkDatagram(*report);
}

/// Takes a number off the front of `bytes`; 0 when they do not suffice.
template <typename T>
T take(QByteArrayView& bytes)
{
    T value{};
    if (bytes.size() < static_cast<qsizetype>(sizeof value))
        return value;
    std::copy_n(bytes.data(), sizeof value, reinterpret_cast<char*>(&value));
    bytes = bytes.sliced(static_cast<qsizetype>(sizeof value));
    return value;
}

/// A notification of a frequency, a time and a line of text for each key.
Notification notificationOf(QByteArrayView bytes)
{
    Notification notification;
    notification.userInfo.emplace_back(QStringLiteral("megahertz"), take<double>(bytes));
    notification.userInfo.emplace_back(QStringLiteral("timestamp"),
                                       TimePoint{std::chrono::microseconds{take<std::int64_t>(bytes)}});
    const QStringList lines = QString::fromUtf8(bytes).split(u'\n');
    qsizetype line = 0;
    for (const QStringView key :
         {u"combinedCallsign", u"dxde_call", u"comments", u"pota_ref", u"mode", u"grid", u"source"})
        notification.userInfo.emplace_back(key.toString(), lines.value(line++));
    return notification;
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const unsigned char* data, std::size_t size)
{
    const QByteArrayView bytes(data, static_cast<qsizetype>(size));
    const QString text = QString::fromUtf8(bytes);
    checkForms(reportOfLine(text, now));
    checkForms(reportOfSpot(notificationOf(bytes), now));
    const auto passed = clusterLine(text);
    check(passed.has_value() == (!text.isEmpty() && characterCount(text) <= longestClusterLine),
          "lines pass by their length");
    check(!passed || !hasControls(QString(*passed).replace(u'\t', u' ')), "no controls but tabs pass");
    return 0;
}
