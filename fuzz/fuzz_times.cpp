// SPDX-FileCopyrightText: 2026 the spotwell developers
// SPDX-License-Identifier: MIT

// The readers of times, on any text: what they accept must read the same when it is written again.

#include "fuzz/Check.h"
#include "util/TimeFormats.h"

#include <QByteArrayView>

#include <algorithm>

namespace
{

QString written(spotwell::TimePoint time, char separator)
{
    const auto day = std::chrono::floor<std::chrono::days>(time);
    const std::chrono::year_month_day date{day};
    const std::chrono::hh_mm_ss clock{time - day};
    return QString::asprintf(
        "%04d-%02u-%02u%c%02d:%02d:%02d", static_cast<int>(date.year()), static_cast<unsigned>(date.month()),
        static_cast<unsigned>(date.day()), separator, static_cast<int>(clock.hours().count()),
        static_cast<int>(clock.minutes().count()), static_cast<int>(clock.seconds().count()));
}

void checkTime(const QString& text, std::optional<spotwell::TimePoint> time, char separator)
{
    using spotwell::check;
    // Before this day the calendar of the formatter is the Julian one.
    constexpr spotwell::TimePoint gregorian = std::chrono::sys_days{std::chrono::year{1582} / 10 / 15};
    if (!time || *time < gregorian)
        return;
    check(written(*time, separator).startsWith(text), "written again it reads the same");
    check(spotwell::spotTime(*time) == QString(text.mid(11, 2) + text.mid(14, 2) + u'Z'),
          "the same hour and minute");
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const unsigned char* data, std::size_t size)
{
    const QString text = QString::fromUtf8(QByteArrayView(data, static_cast<qsizetype>(size)));
    checkTime(text, spotwell::wsprnetDateAndTime(text), ' ');
    checkTime(text, spotwell::jsonDateAndTime(text), 'T');
    if (size >= sizeof(std::int64_t)) {
        std::int64_t count = 0;
        std::copy_n(data, sizeof count, reinterpret_cast<unsigned char*>(&count));
        const spotwell::TimePoint time{std::chrono::microseconds{count}};
        const QString clock = spotwell::spotTime(time);
        spotwell::check(clock.size() == 5 && clock.endsWith(u'Z'), "every time has a text");
    }
    return 0;
}
