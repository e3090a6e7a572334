// SPDX-FileCopyrightText: 2026 the spotwell developers
// SPDX-License-Identifier: MIT

#include "tools/spotwell-bridge/spots/SpotLine.h"

#include "tools/spotwell-bridge/spots/SpotText.h"
#include "util/NumberText.h"

namespace spotwell::bridge
{

namespace
{

constexpr qsizetype frequencyEnd = 24;
constexpr qsizetype callColumns = 12;
constexpr qsizetype commentColumns = 30;
constexpr qsizetype gridColumns = 8;

/// `text` brought to that many characters. Whatever blanks it is cut behind, plain ones follow.
QString column(const QString& text, qsizetype width)
{
    const QString cut = firstCharacters(text, width).trimmed().toString();
    return cut + QString(width - characterCount(cut), u' ');
}

/// Comment and park, as far as both have room.
QString commentFor(const SpotReport& report)
{
    const QString comment = plainText(report.comment);
    const QString both = commentWithPark(comment, plainText(report.park));
    return comment.isEmpty() || characterCount(both) <= commentColumns ? both : comment;
}

/// The time of day in UTC, such as 1428Z.
QString timeOfDay(TimePoint time)
{
    const std::chrono::hh_mm_ss clock{time - std::chrono::floor<std::chrono::days>(time)};
    return QString::asprintf("%02u%02uZ", static_cast<unsigned>(clock.hours().count()),
                             static_cast<unsigned>(clock.minutes().count()));
}

} // namespace

QString spotLine(const SpotReport& report)
{
    const QString frequency = fixedNumber(report.kilohertz, 1);
    QString line = QStringLiteral("DX de ");
    // A colon and a blank stand between the spotter and the frequency.
    const qsizetype room = frequencyEnd - line.size() - frequency.size() - 2;
    line += firstCharacters(plainText(report.spotter), room).toString() + u':';
    line = column(line, frequencyEnd - frequency.size()) + frequency;
    line += QStringLiteral("  ") + column(plainText(report.call), callColumns) + u' ';
    line += column(commentFor(report), commentColumns) + u' ' + timeOfDay(report.time);
    if (!report.grid.isEmpty())
        line += u' ' + firstCharacters(plainText(report.grid), gridColumns).toString();
    return line;
}

std::optional<QString> clusterLine(const QString& line)
{
    if (line.isEmpty() || characterCount(line) > longestClusterLine)
        return std::nullopt;
    QString passed = line;
    for (QChar& character : passed)
        if (isControl(character) && character != u'\t')
            character = u' ';
    return passed;
}

} // namespace spotwell::bridge
