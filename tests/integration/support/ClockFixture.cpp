// SPDX-FileCopyrightText: 2026 the spotwell developers
// SPDX-License-Identifier: MIT

#include "tests/integration/support/ClockFixture.h"

#include <QDateTime>

namespace spotwell
{

std::optional<SteppedClock::Time> ClockFixture::timeOf(const QString& text, int number) const
{
    constexpr qsizetype stampLength = 28; // 2026-01-31 23:59:59.999+0000
    for (const QString& line : QString::fromUtf8(home.log()).split(QLatin1Char('\n'))) {
        if (QString(line).remove(entryFront()) != text || --number > 0)
            continue;
        QString stamp = line.first(stampLength);
        stamp[10] = QLatin1Char('T');
        const QDateTime written = QDateTime::fromString(stamp, Qt::ISODateWithMs);
        if (written.isValid())
            return Time(std::chrono::milliseconds(written.toMSecsSinceEpoch()));
    }
    return std::nullopt;
}

} // namespace spotwell
