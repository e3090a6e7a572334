// SPDX-FileCopyrightText: 2026 the spotwell developers
// SPDX-License-Identifier: MIT

#include "feeds/WsprnetFeed.h"

#include "util/StringAdditions.h"
#include "util/TimeFormats.h"

#include <QCryptographicHash>
#include <QLatin1StringView>

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <optional>

namespace spotwell
{

namespace
{

constexpr QByteArrayView rowMarker = "<tr>";
constexpr QLatin1StringView cellOpening(">&nbsp;");
constexpr QLatin1StringView cellClosing("&nbsp;</td>");
constexpr std::chrono::seconds ageLimit{86400};

/// What a row tells.
struct Report {
    std::optional<TimePoint> time;
    QString heard;
    double megahertz = 0.0;
    QString reportedBy;
};

bool isRow(QByteArrayView line)
{
    return line.startsWith(rowMarker);
}

std::int32_t countRows(QByteArrayView page)
{
    std::int32_t rows = 0;
    while (!page.isEmpty()) {
        rows += isRow(page) ? 1 : 0;
        const void* const feed = std::memchr(page.data(), '\n', static_cast<std::size_t>(page.size()));
        if (feed == nullptr)
            break;
        page = QByteArrayView(static_cast<const char*>(feed) + 1, page.end());
    }
    return rows;
}

/// The last line of `page`, and `page` without it and its line feed.
QByteArrayView takeLastLine(QByteArrayView& page)
{
    const qsizetype start = std::find(page.rbegin(), page.rend(), '\n').base() - page.begin();
    const QByteArrayView line = page.sliced(start);
    page = page.first(std::max<qsizetype>(start - 1, 0));
    return line;
}

/// Where `mark`, whose first character is no letter, occurs in `text` from `from` on, letter case aside; the
/// end of `text` when it does not.
qsizetype findMark(QLatin1StringView text, QLatin1StringView mark, qsizetype from)
{
    while (text.size() - from >= mark.size()) {
        const void* const found = std::memchr(text.data() + from, mark.front().toLatin1(),
                                              static_cast<std::size_t>(text.size() - from));
        if (found == nullptr)
            break;
        const qsizetype at = static_cast<const char*>(found) - text.data();
        if (text.sliced(at).startsWith(mark, Qt::CaseInsensitive))
            return at;
        from = at + 1;
    }
    return text.size();
}

void store(QLatin1StringView cell, int index, Report& report)
{
    switch (index) {
    case 0:
        report.time = wsprnetDateAndTime(QString(cell));
        break;
    case 1:
        report.heard = cell;
        break;
    case 2:
        report.megahertz = doubleValue(QString(cell));
        break;
    case 7:
        report.reportedBy = cell;
        break;
    default:
        break;
    }
}

Report reportIn(QLatin1StringView row)
{
    constexpr int lastCell = 7;
    Report report;
    qsizetype position = 0;
    for (int index = 0; index <= lastCell; ++index) {
        const qsizetype opening = findMark(row, cellOpening, position);
        if (opening == row.size())
            break;
        // An empty cell's closing begins inside its opening.
        const qsizetype closing = findMark(row, cellClosing, opening);
        const qsizetype start = std::min(opening + cellOpening.size(), closing);
        store(row.sliced(start, closing - start), index, report);
        position = closing;
    }
    return report;
}

/// What stands for `row` among the remembered ones; of a short row a view of its bytes.
QByteArray keyOf(QByteArrayView row)
{
    if (row.size() <= WsprnetFeed::longestKept)
        return QByteArray::fromRawData(row.data(), row.size());
    QCryptographicHash hash(QCryptographicHash::Sha256);
    hash.addData(row);
    return hash.result().toHex();
}

} // namespace

void WsprnetFeed::parseWsprnetData(const QByteArray& body)
{
    log_.line(QStringLiteral("parseWsprnetData:spots:[%1]").arg(countRows(body)));
    QByteArrayView rest = body;
    while (!rest.isEmpty()) {
        const QByteArrayView line = takeLastLine(rest);
        if (isRow(line) && !parseWsprnetLine(line))
            return;
    }
}

bool WsprnetFeed::parseWsprnetLine(QByteArrayView row)
{
    const QByteArray key = keyOf(row);
    if (_wsprnet_objects.contains(key))
        return true;
    if (_wsprnet_objects.size() >= mostRemembered)
        _wsprnet_objects.clear();
    const Report report = reportIn(QLatin1StringView(row));
    if (report.heard.isEmpty() || report.reportedBy.isEmpty())
        return true;
    // Only a time that lies ahead is refused: an old report is as good as a new one.
    if (report.time && *report.time - clock_.now() >= ageLimit)
        return true;
    // A copy, for the key may be a view of the page.
    _wsprnet_objects.insert(QByteArray(key.constData(), key.size()));
    Spot spot;
    spot.call = report.heard;
    spot.dxde = report.reportedBy;
    spot.source = QStringLiteral("WSPRnet");
    spot.timestamp = report.time;
    spot.megahertz = report.megahertz;
    spot.mode = QString();
    spot.dxgrid = QString();
    spot.pota = QString();
    spot.comment = QStringLiteral("WSPRnet");
    spot.service = QStringLiteral("wspr");
    host_.forward(spot);
    return host_.pause(spotSpacing);
}

} // namespace spotwell
