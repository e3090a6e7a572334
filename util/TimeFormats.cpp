// SPDX-FileCopyrightText: 2026 the spotwell developers
// SPDX-License-Identifier: MIT

#include "util/TimeFormats.h"

#include <unicode/smpdtfmt.h>
#include <unicode/timezone.h>

#include <memory>
#include <mutex>

namespace spotwell
{

namespace
{

/// A formatter and the lock for making and using it. It is never released: a thread may still use it while
/// the program ends.
struct SharedFormatter {
    std::mutex mutex;
    icu::SimpleDateFormat* formatter = nullptr;
};

SharedFormatter wsprnetdateFormatter;
SharedFormatter jsondateFormatter;
SharedFormatter spotTimeFormatter;

constexpr char16_t wsprnetPattern[] = u"yyyy-MM-dd HH:mm";
constexpr char16_t jsonPattern[] = u"yyyy-MM-dd'T'HH:mm:ss";
constexpr char16_t spotTimePattern[] = u"HHmm'Z'";

// What the patterns ask for, 0 standing for any digit. The formatter alone also takes shorter fields, leading
// blanks and other scripts' digits.
constexpr char16_t wsprnetShape[] = u"0000-00-00 00:00";
constexpr char16_t jsonShape[] = u"0000-00-00T00:00:00";

bool hasShape(QStringView text, QStringView shape)
{
    if (text.size() != shape.size())
        return false;
    for (qsizetype i = 0; i < text.size(); ++i) {
        const bool isDigit = text[i] >= u'0' && text[i] <= u'9';
        if (shape[i] == u'0' ? !isDigit : text[i] != shape[i])
            return false;
    }
    return true;
}

/// From this year on the formatter's calendar, which is the Julian one before 1582-10-15, is that of
/// std::chrono.
constexpr int firstCommonYear = 1600;

/// The number that `digits`, all of them ASCII digits, denote.
int number(QStringView digits)
{
    int value = 0;
    for (const QChar digit : digits)
        value = value * 10 + (digit.unicode() - u'0');
    return value;
}

/// The time that `text`, which has one of the two shapes, denotes from firstCommonYear on: the formatter's
/// answer at a hundredth of its cost.
std::optional<TimePoint> commonTime(QStringView text)
{
    using namespace std::chrono;
    const year_month_day date{year{number(text.first(4))},
                              month{static_cast<unsigned>(number(text.sliced(5, 2)))},
                              day{static_cast<unsigned>(number(text.sliced(8, 2)))}};
    const int hour = number(text.sliced(11, 2));
    const int minute = number(text.sliced(14, 2));
    const int second = text.size() > 16 ? number(text.sliced(17, 2)) : 0;
    if (!date.ok() || hour > 23 || minute > 59 || second > 59)
        return std::nullopt;
    return sys_days{date} + hours{hour} + minutes{minute} + seconds{second};
}

/// The formatter of `shared`, made on the first call; null when the platform cannot make one. The lock is
/// held.
icu::SimpleDateFormat* formatterIn(SharedFormatter& shared, const char16_t* pattern)
{
    if (shared.formatter == nullptr) {
        UErrorCode status = U_ZERO_ERROR;
        auto formatter = std::make_unique<icu::SimpleDateFormat>(icu::UnicodeString(pattern),
                                                                 icu::Locale("en_US_POSIX"), status);
        if (U_FAILURE(status) != 0)
            return nullptr;
        formatter->adoptTimeZone(icu::TimeZone::createTimeZone("UTC"));
        formatter->setLenient(false);
        shared.formatter = formatter.release();
    }
    return shared.formatter;
}

std::optional<TimePoint> read(QStringView text, SharedFormatter& shared, const char16_t* pattern,
                              QStringView shape)
{
    if (!hasShape(text, shape))
        return std::nullopt;
    if (number(text.first(4)) >= firstCommonYear)
        return commonTime(text);
    const std::lock_guard lock(shared.mutex);
    icu::SimpleDateFormat* const formatter = formatterIn(shared, pattern);
    if (formatter == nullptr)
        return std::nullopt;
    formatter->applyPattern(icu::UnicodeString(pattern));
    icu::ParsePosition position(0);
    const UDate milliseconds =
        formatter->parse(icu::UnicodeString(text.utf16(), static_cast<int32_t>(text.size())), position);
    if (position.getIndex() != text.size())
        return std::nullopt;
    return TimePoint{std::chrono::milliseconds{static_cast<std::int64_t>(milliseconds)}};
}

/// The same text without a formatter.
QString plainSpotTime(TimePoint time)
{
    const std::chrono::hh_mm_ss clock{time - std::chrono::floor<std::chrono::days>(time)};
    return QStringLiteral("%1%2Z")
        .arg(clock.hours().count(), 2, 10, QLatin1Char('0'))
        .arg(clock.minutes().count(), 2, 10, QLatin1Char('0'));
}

} // namespace

std::optional<TimePoint> wsprnetDateAndTime(QStringView text)
{
    return read(text, wsprnetdateFormatter, wsprnetPattern, wsprnetShape);
}

std::optional<TimePoint> jsonDateAndTime(QStringView text)
{
    return read(text, jsondateFormatter, jsonPattern, jsonShape);
}

QString spotTime(TimePoint time)
{
    const std::lock_guard lock(spotTimeFormatter.mutex);
    const icu::SimpleDateFormat* const formatter = formatterIn(spotTimeFormatter, spotTimePattern);
    if (formatter == nullptr)
        return plainSpotTime(time);
    const auto milliseconds = std::chrono::floor<std::chrono::milliseconds>(time).time_since_epoch().count();
    icu::UnicodeString text;
    formatter->format(static_cast<UDate>(milliseconds), text);
    return QString(reinterpret_cast<const QChar*>(text.getBuffer()), text.length());
}

} // namespace spotwell
