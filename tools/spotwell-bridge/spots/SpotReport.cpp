// SPDX-FileCopyrightText: 2026 the spotwell developers
// SPDX-License-Identifier: MIT

#include "tools/spotwell-bridge/spots/SpotReport.h"

#include "tools/spotwell-bridge/spots/SpotLine.h"
#include "tools/spotwell-bridge/spots/SpotText.h"

#include <algorithm>

namespace spotwell::bridge
{

namespace
{

constexpr TimePoint endOfTimes = std::chrono::sys_days{std::chrono::year{10000} / 1 / 1};

/// The value of `key` if it has the type `T`.
template <typename T>
std::optional<T> valueOf(const Notification& notification, QStringView key)
{
    const auto entry = std::find_if(notification.userInfo.begin(), notification.userInfo.end(),
                                    [key](const auto& candidate) { return candidate.first == key; });
    if (entry == notification.userInfo.end())
        return std::nullopt;
    const T* const value = std::get_if<T>(&entry->second);
    return value != nullptr ? std::optional<T>(*value) : std::nullopt;
}

/// `text`, which is plain, within bounds and without blanks at its ends.
QString bounded(QStringView text, qsizetype longest)
{
    return firstCharacters(text.trimmed(), longest).trimmed().toString();
}

QString plainTextOf(const Notification& notification, QStringView key)
{
    return plainText(valueOf<QString>(notification, key).value_or(QString()));
}

QString textOf(const Notification& notification, QStringView key, qsizetype longest)
{
    return bounded(plainTextOf(notification, key), longest);
}

/// The first word of the text of `key`.
QString wordOf(const Notification& notification, QStringView key, qsizetype longest)
{
    const QString text = plainTextOf(notification, key);
    return bounded(Words(text).next(), longest);
}

/// The same for a spotter, whom a colon ends in every line.
QString spotterOf(const Notification& notification, QStringView key)
{
    return wordOf(notification, key, longestCall).section(u':', 0, 0);
}

/// The first word of `text` if it is a locator.
QString locatorIn(QStringView text)
{
    const QStringView word = Words(text).next();
    return isLocator(word) ? word.toString() : QString();
}

bool isFrequency(double kilohertz)
{
    return kilohertz > 0.0 && kilohertz <= highestKilohertz;
}

bool isDigit(QChar character)
{
    return character >= u'0' && character <= u'9';
}

/// The frequency that `word` denotes: digits, with or without a full stop in them.
std::optional<double> frequency(QStringView word)
{
    const bool isPlain = std::all_of(word.begin(), word.end(),
                                     [](QChar character) { return isDigit(character) || character == u'.'; });
    bool isNumber = false;
    const double kilohertz = word.toDouble(&isNumber);
    return isPlain && isNumber && isFrequency(kilohertz) ? std::optional(kilohertz) : std::nullopt;
}

/// The time of day that `word` denotes: four digits and a Z.
std::optional<std::chrono::minutes> timeOfDay(QStringView word)
{
    if (word.size() != 5 || word[4] != u'Z' || !std::all_of(word.begin(), word.begin() + 4, isDigit))
        return std::nullopt;
    const int hour = word.first(2).toInt();
    const int minute = word.sliced(2, 2).toInt();
    if (hour > 23 || minute > 59)
        return std::nullopt;
    return std::chrono::hours{hour} + std::chrono::minutes{minute};
}

/// A time of day in a line, and what stands on both sides of it.
struct TimeField {
    std::optional<std::chrono::minutes> time;
    QStringView before;
    QStringView behind;
};

/// The time of day of `line`, looked for in its columns and then in `rest`, which is the line's end.
TimeField timeFieldOf(QStringView line, QStringView rest)
{
    constexpr qsizetype charactersBefore = 70;
    const qsizetype column = firstCharacters(line, charactersBefore).size();
    const qsizetype inRest = column - (line.size() - rest.size());
    if (inRest >= 0) {
        const QStringView field = rest.sliced(inRest);
        const QStringView word = Words(field).next();
        const auto time = timeOfDay(word);
        if (time && field.startsWith(word))
            return {time, rest.first(inRest), field.sliced(word.size())};
    }
    TimeField found{std::nullopt, rest, {}};
    Words words(rest);
    for (QStringView word = words.next(); !word.isEmpty(); word = words.next()) {
        if (const auto time = timeOfDay(word)) {
            const QStringView behind = words.rest();
            found = {time, rest.chopped(behind.size() + word.size()), behind};
        }
    }
    return found;
}

/// The point in time nearest to `now` that has this time of day.
TimePoint nearest(std::chrono::minutes time, TimePoint now)
{
    constexpr std::chrono::hours halfDay{12};
    const TimePoint today = std::chrono::floor<std::chrono::days>(now) + time;
    if (today - now >= halfDay)
        return today - std::chrono::days{1};
    if (now - today > halfDay)
        return today + std::chrono::days{1};
    return today;
}

} // namespace

std::optional<SpotReport> reportOfSpot(const Notification& notification, TimePoint now)
{
    SpotReport report;
    report.call = wordOf(notification, u"combinedCallsign", longestCall);
    report.kilohertz = valueOf<double>(notification, u"megahertz").value_or(0.0) * 1000.0;
    if (report.call.isEmpty() || !isFrequency(report.kilohertz))
        return std::nullopt;
    report.spotter = spotterOf(notification, u"dxde_call");
    if (report.spotter.isEmpty())
        report.spotter = spotterOf(notification, u"source");
    if (report.spotter.isEmpty())
        report.spotter = QStringLiteral("SPOTWELL");
    report.comment = textOf(notification, u"comments", longestComment);
    report.park = wordOf(notification, u"pota_ref", longestPark);
    report.mode = textOf(notification, u"mode", longestMode);
    report.grid = locatorIn(plainTextOf(notification, u"grid"));
    const TimePoint time = valueOf<TimePoint>(notification, u"timestamp").value_or(now);
    report.time = time >= distantPast && time < endOfTimes ? time : now;
    return report;
}

std::optional<SpotReport> reportOfLine(QStringView line, TimePoint now)
{
    constexpr QStringView beginning = u"DX de ";
    const QString plain = plainText(line);
    const QStringView text = plain;
    const qsizetype colon = text.indexOf(u':');
    if (characterCount(text) > longestClusterLine || !text.startsWith(beginning) || colon < 0)
        return std::nullopt;

    const QStringView spotter = text.sliced(beginning.size(), colon - beginning.size()).trimmed();
    Words words(text.sliced(colon + 1));
    const std::optional<double> kilohertz = frequency(words.next());
    const QStringView call = words.next();
    if (spotter.isEmpty() || Words(spotter).next() != spotter || !kilohertz || call.isEmpty() ||
        timeOfDay(call))
        return std::nullopt;

    const TimeField field = timeFieldOf(text, words.rest());
    SpotReport report;
    report.call = bounded(call, longestCall);
    report.spotter = bounded(spotter, longestCall);
    report.kilohertz = *kilohertz;
    report.comment = bounded(field.before, longestComment);
    report.grid = locatorIn(field.behind);
    report.time = field.time ? nearest(*field.time, now) : now;
    return report;
}

} // namespace spotwell::bridge
