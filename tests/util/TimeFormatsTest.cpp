// SPDX-FileCopyrightText: 2026 the spotwell developers
// SPDX-License-Identifier: MIT

#include "util/TimeFormats.h"

#include <gtest/gtest.h>
#include <unicode/locid.h>
#include <unicode/smpdtfmt.h>
#include <unicode/timezone.h>

#include <atomic>
#include <clocale>
#include <memory>
#include <stdexcept>
#include <stdlib.h>
#include <string>
#include <thread>
#include <time.h>
#include <vector>

namespace spotwell
{

namespace
{

TimePoint at(int year, unsigned month, unsigned day, int hour, int minute, int second)
{
    return std::chrono::sys_days{std::chrono::year{year} / month / day} + std::chrono::hours{hour} +
           std::chrono::minutes{minute} + std::chrono::seconds{second};
}

void expectTheUsualResults()
{
    EXPECT_EQ(wsprnetDateAndTime(u"2024-03-01 23:59"), at(2024, 3, 1, 23, 59, 0));
    EXPECT_EQ(jsonDateAndTime(u"2024-03-01T23:59:30"), at(2024, 3, 1, 23, 59, 30));
    // In the hour that the clocks of Central Europe skip.
    EXPECT_EQ(jsonDateAndTime(u"2024-03-31T02:30:00"), at(2024, 3, 31, 2, 30, 0));
    EXPECT_EQ(spotTime(at(2024, 3, 1, 7, 5, 0)), QStringLiteral("0705Z"));
    EXPECT_EQ(spotTime(at(2024, 3, 1, 19, 45, 0)), QStringLiteral("1945Z"));
    EXPECT_EQ(wsprnetDateAndTime(u"2567-03-01 23:59"), at(2567, 3, 1, 23, 59, 0));
    // Days of the Julian calendar.
    EXPECT_EQ(wsprnetDateAndTime(u"1550-03-01 23:59"), at(1550, 3, 11, 23, 59, 0));
    EXPECT_EQ(jsonDateAndTime(u"1550-03-01T23:59:30"), at(1550, 3, 11, 23, 59, 30));
}

TEST(WsprnetDateAndTime, ReadsValidTimes)
{
    EXPECT_EQ(wsprnetDateAndTime(u"2024-03-01 23:59"), at(2024, 3, 1, 23, 59, 0));
    EXPECT_EQ(wsprnetDateAndTime(u"2024-02-29 00:00"), at(2024, 2, 29, 0, 0, 0));
    EXPECT_EQ(wsprnetDateAndTime(u"1970-01-01 00:00"), at(1970, 1, 1, 0, 0, 0));
    EXPECT_EQ(wsprnetDateAndTime(u"1969-12-31 23:59"), at(1969, 12, 31, 23, 59, 0));
    EXPECT_EQ(wsprnetDateAndTime(u"9999-12-31 23:59"), at(9999, 12, 31, 23, 59, 0));
}

TEST(WsprnetDateAndTime, RefusesEverythingElse)
{
    for (const QStringView text : std::initializer_list<QStringView>{
             u"",
             u" ",
             u"2024-03-01",
             u"2024-03-01 23:5",
             u"2024-03-01 3:59",
             u"2024-3-01 23:59",
             u"24-03-01 23:59",
             u"2024-03-01T23:59",
             u"2024-03-01 23:59 ",
             u" 2024-03-01 23:59",
             u"2024-03-01 23:59:00",
             u"2024-03-01 23:59Z",
             u"2024-03-01  3:59",
             u"2024/03/01 23:59",
             u"2024-03-01 23.59",
             u"2024-03-01\t23:59",
             u"2024-03-01\u00A023:59",
             u"+024-03-01 23:59",
             u"-024-03-01 23:59",
             u"2024-13-01 23:59",
             u"2024-00-01 23:59",
             u"2024-03-00 23:59",
             u"2024-03-32 23:59",
             u"2023-02-29 23:59",
             u"2024-02-30 23:59",
             u"2024-04-31 23:59",
             u"2024-03-01 24:00",
             u"2024-03-01 23:60",
             u"0000-01-01 00:00",
             u"\u0662\u0660\u0662\u0664-\u0660\u0663-\u0660\u0661 \u0662\u0663:\u0665\u0669",
             u"２０２４-０３-０１ ２３:５９",
             u"yyyy-MM-dd HH:mm"}) {
        EXPECT_EQ(wsprnetDateAndTime(text), std::nullopt) << text.toString().toStdString();
    }
}

TEST(JsonDateAndTime, ReadsValidTimes)
{
    EXPECT_EQ(jsonDateAndTime(u"2024-03-01T23:59:30"), at(2024, 3, 1, 23, 59, 30));
    EXPECT_EQ(jsonDateAndTime(u"2024-12-31T00:00:00"), at(2024, 12, 31, 0, 0, 0));
    EXPECT_EQ(jsonDateAndTime(u"1969-12-31T23:59:59"), at(1969, 12, 31, 23, 59, 59));
}

TEST(JsonDateAndTime, RefusesEverythingElse)
{
    for (const QStringView text : std::initializer_list<QStringView>{u"",
                                                                     u"2024-03-01T23:59:30Z",
                                                                     u"2024-03-01T23:59:30.0",
                                                                     u"2024-03-01T23:59:30.123",
                                                                     u"2024-03-01T23:59",
                                                                     u"2024-03-01T23:59:",
                                                                     u"2024-03-01T23:59:3",
                                                                     u"2024-03-01 23:59:30",
                                                                     u"2024-03-01t23:59:30",
                                                                     u"2024-03-01'T'23:59:30",
                                                                     u"2024-03-01T23:59:30+00:00",
                                                                     u" 2024-03-01T23:59:30",
                                                                     u"2024-03-01T23:59:30 ",
                                                                     u"2024-03-01T23:59:60",
                                                                     u"2024-03-01T24:00:00",
                                                                     u"2024-03-01T23:60:00",
                                                                     u"2024-02-30T23:59:30",
                                                                     u"2024-03-01T 3:59:30",
                                                                     u"2024-03-01T23:59:\u0663\u0660",
                                                                     u"null"}) {
        EXPECT_EQ(jsonDateAndTime(text), std::nullopt) << text.toString().toStdString();
    }
}

TEST(JsonDateAndTime, RefusesATextWithANul)
{
    QString text = QStringLiteral("2024-03-01T23:59:30");
    text[18] = QChar(u'\0');
    EXPECT_EQ(jsonDateAndTime(text), std::nullopt);
}

TEST(SpotTime, DropsTheSeconds)
{
    EXPECT_EQ(spotTime(at(2024, 3, 1, 0, 0, 59)), QStringLiteral("0000Z"));
    EXPECT_EQ(spotTime(at(2024, 3, 1, 7, 5, 0)), QStringLiteral("0705Z"));
    EXPECT_EQ(spotTime(at(2024, 3, 1, 23, 59, 59) + std::chrono::microseconds{999999}),
              QStringLiteral("2359Z"));
    EXPECT_EQ(spotTime(at(2024, 3, 2, 0, 0, 0) - std::chrono::microseconds{1}), QStringLiteral("2359Z"));
}

TEST(SpotTime, DropsTheSecondsBefore1970Too)
{
    EXPECT_EQ(spotTime(TimePoint{}), QStringLiteral("0000Z"));
    EXPECT_EQ(spotTime(TimePoint{} - std::chrono::microseconds{1}), QStringLiteral("2359Z"));
    EXPECT_EQ(spotTime(at(1969, 12, 31, 12, 34, 59)), QStringLiteral("1234Z"));
    EXPECT_EQ(spotTime(at(1969, 12, 31, 12, 34, 0)), QStringLiteral("1234Z"));
    EXPECT_EQ(spotTime(at(1969, 12, 31, 12, 34, 0) - std::chrono::microseconds{1}), QStringLiteral("1233Z"));
    EXPECT_EQ(spotTime(distantPast), QStringLiteral("0000Z"));
}

TEST(SpotTime, GivesATextForEveryPointInTime)
{
    EXPECT_EQ(spotTime(TimePoint::min()).size(), 5);
    EXPECT_EQ(spotTime(TimePoint::max()).size(), 5);
}

TEST(TimeFormats, AreUsableFromManyThreadsAtOnce)
{
    std::atomic<int> wrong = 0;
    std::vector<std::thread> threads;
    for (int thread = 0; thread < 4; ++thread) {
        threads.emplace_back([&wrong, thread] {
            // Also in a year that the readers leave to their formatters.
            const bool julian = thread % 2 == 0;
            for (int minute = 0; minute < 60; ++minute) {
                const QString text = QStringLiteral("%1 1%2:%3")
                                         .arg(julian ? u"1550-03-01" : u"2024-03-01")
                                         .arg(thread)
                                         .arg(minute, 2, 10, QChar(u'0'));
                const TimePoint expected =
                    julian ? at(1550, 3, 11, 10 + thread, minute, 0) : at(2024, 3, 1, 10 + thread, minute, 0);
                const QString json = text.left(10) + u'T' + text.mid(11) + QStringLiteral(":00");
                if (wsprnetDateAndTime(text) != expected || jsonDateAndTime(json) != expected ||
                    spotTime(expected) != QString(text.mid(11, 2) + text.mid(14) + u'Z'))
                    ++wrong;
            }
        });
    }
    for (std::thread& thread : threads)
        thread.join();
    EXPECT_EQ(wrong, 0);
}

/// The readers' answers as a formatter alone gives them.
class PlainFormatter
{
public:
    explicit PlainFormatter(const char16_t* pattern)
    {
        UErrorCode status = U_ZERO_ERROR;
        formatter_ = std::make_unique<icu::SimpleDateFormat>(pattern, icu::Locale("en_US_POSIX"), status);
        if (U_FAILURE(status) != 0)
            throw std::runtime_error("no formatter");
        formatter_->adoptTimeZone(icu::TimeZone::createTimeZone("UTC"));
        formatter_->setLenient(false);
    }

    [[nodiscard]] std::optional<TimePoint> read(const std::string& text) const
    {
        icu::ParsePosition position(0);
        const icu::UnicodeString given = icu::UnicodeString::fromUTF8(text);
        const UDate milliseconds = formatter_->parse(given, position);
        if (position.getIndex() != given.length())
            return std::nullopt;
        return TimePoint{std::chrono::milliseconds{static_cast<std::int64_t>(milliseconds)}};
    }

private:
    std::unique_ptr<icu::SimpleDateFormat> formatter_;
};

/// Holds both readers against formatters of the test's own.
class TimeFormatsAndTheFormatter : public testing::Test
{
protected:
    void expectTheSame(int year, int month, int day, int hour, int minute, int second)
    {
        const auto date = QString::asprintf("%04d-%02d-%02d", year, month, day);
        const auto clock = QString::asprintf("%02d:%02d", hour, minute);
        const QString wsprnetText = date + u' ' + clock;
        ASSERT_EQ(wsprnetDateAndTime(wsprnetText), wsprnet_.read(wsprnetText.toStdString()))
            << wsprnetText.toStdString();
        const QString jsonText = date + u'T' + clock + QString::asprintf(":%02d", second);
        ASSERT_EQ(jsonDateAndTime(jsonText), json_.read(jsonText.toStdString())) << jsonText.toStdString();
    }

private:
    PlainFormatter wsprnet_{u"yyyy-MM-dd HH:mm"};
    PlainFormatter json_{u"yyyy-MM-dd'T'HH:mm:ss"};
};

TEST_F(TimeFormatsAndTheFormatter, AgreeOnDaysFromTheJulianCalendarToTheLastYear)
{
    for (const int year : {1,    4,    100,  999,  1000, 1500, 1581, 1582, 1583, 1599, 1600, 1601, 1604,
                           1700, 1752, 1800, 1899, 1900, 1904, 1969, 1970, 1972, 1999, 2000, 2023, 2024,
                           2027, 2038, 2100, 2101, 2400, 2401, 3000, 4000, 6000, 9996, 9999}) {
        for (int month = 0; month <= 13; ++month) {
            for (const int day : {0, 1, 4, 5, 10, 14, 15, 27, 28, 29, 30, 31, 32, 99})
                expectTheSame(year, month, day, (year + month + day) % 24, (month * 31 + day) % 60,
                              (year + day) % 60);
        }
    }
    for (int year = 1599; year <= 2401; ++year) {
        expectTheSame(year, 2, 28, 23, 59, 59);
        expectTheSame(year, 2, 29, 0, 0, 0);
        expectTheSame(year, 3, 1, 12, 30, 30);
        expectTheSame(year, 1 + year % 12, 1 + year % 28, year % 24, year % 60, year % 60);
    }
}

TEST_F(TimeFormatsAndTheFormatter, AgreeOnEveryDayOfALeapYearAndTheOneBefore)
{
    for (const int year : {2023, 2024}) {
        for (int month = 1; month <= 12; ++month) {
            for (int day = 1; day <= 31; ++day)
                expectTheSame(year, month, day, 7, 5, 9);
        }
    }
}

TEST_F(TimeFormatsAndTheFormatter, AgreeOnFieldsThatAreOutOfRange)
{
    for (const int year : {0, 1599, 1600, 2024, 9999}) {
        for (const int month : {0, 1, 12, 13, 20, 99}) {
            for (const int hour : {0, 23, 24, 25, 99}) {
                for (const int minute : {0, 59, 60, 61, 99})
                    expectTheSame(year, month, 1, hour, minute, 0);
            }
        }
        for (const int second : {0, 59, 60, 61, 99})
            expectTheSame(year, 12, 31, 23, 59, second);
    }
}

/// Another user's machine: a default locale and a default time zone, of ICU and of the process. The
/// formatters are made once a process, so each case runs in a process of its own that has not used them yet.
struct Machine {
    const char* locale;
    const char* zone;
};

class TimeFormatsDeathTest : public testing::TestWithParam<Machine>
{
};

TEST_P(TimeFormatsDeathTest, DoNotDependOnTheMachine)
{
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    const auto useMachine = [this] {
        UErrorCode status = U_ZERO_ERROR;
        icu::Locale::setDefault(icu::Locale(GetParam().locale), status);
        ::setenv("TZ", GetParam().zone, 1);
        ::tzset();
        icu::TimeZone::adoptDefault(icu::TimeZone::createTimeZone(GetParam().zone));
    };
    EXPECT_EXIT(
        {
            useMachine();
            // First calls, then calls of formatters made under another default.
            expectTheUsualResults();
            UErrorCode status = U_ZERO_ERROR;
            icu::Locale::setDefault(icu::Locale("ja_JP@calendar=japanese"), status);
            icu::TimeZone::adoptDefault(icu::TimeZone::createTimeZone("Asia/Kathmandu"));
            expectTheUsualResults();
            std::fprintf(stderr, "done");
            std::_Exit(HasFailure() ? 1 : 0);
        },
        testing::ExitedWithCode(0), "done");
}

INSTANTIATE_TEST_SUITE_P(Machines, TimeFormatsDeathTest,
                         testing::Values(Machine{"en_US", "America/New_York"},
                                         Machine{"th_TH@calendar=buddhist", "Asia/Bangkok"},
                                         Machine{"ar_EG", "Africa/Cairo"}, Machine{"fa_IR", "Asia/Tehran"},
                                         Machine{"de_DE", "Europe/Berlin"},
                                         Machine{"hi_IN", "Asia/Kolkata"}));

} // namespace

} // namespace spotwell
