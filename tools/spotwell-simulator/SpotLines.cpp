// SPDX-FileCopyrightText: 2026 the spotwell developers
// SPDX-License-Identifier: MIT

#include "tools/spotwell-simulator/SpotLines.h"

#include <array>
#include <cstddef>

namespace spotwell::simulator
{
namespace
{

constexpr std::array locators{"FN20", "JO62", "PM95", "IO91", "JN58", "KP20", "QF22", "GG66", "EM12", "DM13"};

QByteArray timeOfDay(TimePoint now)
{
    const auto sinceMidnight = now - std::chrono::floor<std::chrono::days>(now);
    const auto minutes = std::chrono::floor<std::chrono::minutes>(sinceMidnight).count();
    return digits(minutes / 60, 2) + digits(minutes % 60, 2) + 'Z';
}

QByteArray field(const QByteArray& text, qsizetype width)
{
    return text.leftJustified(width, ' ', true);
}

} // namespace

QByteArray SpotLines::spotter()
{
    QByteArray spotter = stations_.call();
    if (spotter.size() <= 5 && stations_.pick(3) == 0)
        spotter += "-#";
    return spotter + ':';
}

QByteArray SpotLines::next(const SpotFormat& format, TimePoint now)
{
    number_ = number_ % mostLines + 1;
    const Activity activity = stations_.activity();
    QByteArray comment = activity.words;
    const QByteArray number = '#' + digits(number_, 7) + ' ';
    if (format.comment == SpotFormat::Comment::numbered)
        comment = number + comment;
    else if (format.comment == SpotFormat::Comment::stamped)
        comment = number + digits(now.time_since_epoch().count(), 16) + ' ' + comment.left(4);

    QByteArray line = "DX de ";
    line += field(spotter(), 8);
    line += kilohertz(activity.frequency).rightJustified(10);
    line += "  " + field(stations_.call(), 12) + ' ' + field(comment, 30) + ' ' + timeOfDay(now);
    if (format.length > line.size())
        line +=
            ' ' +
            QByteArray{locators[static_cast<std::size_t>(stations_.pick(static_cast<int>(locators.size())))]};
    return line.leftJustified(format.length, '.', true) + "\r\n";
}

QByteArray floodLine(std::int64_t number)
{
    return field("Flood " + digits(number, 12) + ' ' + QByteArray(60, '='), 78) + "\r\n";
}

} // namespace spotwell::simulator
