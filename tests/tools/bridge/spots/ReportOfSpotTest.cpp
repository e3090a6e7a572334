// SPDX-FileCopyrightText: 2026 the spotwell developers
// SPDX-License-Identifier: MIT

#include "tests/tools/bridge/spots/SpotTestData.h"
#include "tools/spotwell-bridge/spots/SpotText.h"

#include <gtest/gtest.h>

#include <limits>
#include <utility>

namespace spotwell::bridge
{
namespace
{

constexpr TimePoint arrival = at(2026, 11, 21, 14, 30);

/// A notification with everything that the contract knows, each value to be replaced or removed.
class SpotNotice
{
public:
    SpotNotice()
    {
        notification_.name = QStringLiteral("com.tarnbrooksoftware.spotwell_spot");
        notification_.object = QStringLiteral("string object");
        with(u"combinedCallsign", QStringLiteral("X1X"));
        with(u"mode", QStringLiteral("FT8"));
        with(u"timestamp", afternoon);
        with(u"megahertz", 14.074);
        with(u"comments", QStringLiteral("cq"));
        with(u"source", QStringLiteral("POTA"));
        with(u"grid", QStringLiteral("JN34"));
        with(u"latitude", 44.5);
        with(u"longitude", 7.0);
        with(u"dxde_call", QStringLiteral("N0CALL"));
        with(u"de_latitude", 40.5);
        with(u"de_longitude", -74.0);
        with(u"pota_ref", QStringLiteral("US-1123"));
    }

    SpotNotice& without(QStringView key)
    {
        std::erase_if(notification_.userInfo, [key](const auto& entry) { return entry.first == key; });
        return *this;
    }
    SpotNotice& with(QStringView key, const Value& value)
    {
        without(key);
        return add(key, value);
    }
    SpotNotice& add(QStringView key, const Value& value)
    {
        notification_.userInfo.emplace_back(key.toString(), value);
        return *this;
    }
    [[nodiscard]] std::optional<SpotReport> report() const { return reportOfSpot(notification_, arrival); }

private:
    Notification notification_;
};

/// The report's text that comes of `value` for `key`.
QString textFor(QStringView key, const QString& value, QString SpotReport::*member)
{
    const auto report = SpotNotice().with(key, value).report();
    return report ? (*report).*member : QStringLiteral("(absent)");
}

QString spotterFor(const Value& spotter, const Value& source)
{
    return SpotNotice().with(u"dxde_call", spotter).with(u"source", source).report()->spotter;
}

TEST(ReportOfSpot, takesEachKey)
{
    const auto report = SpotNotice().report();
    ASSERT_TRUE(report);
    EXPECT_EQ(report->call, QStringLiteral("X1X"));
    EXPECT_EQ(report->spotter, QStringLiteral("N0CALL"));
    EXPECT_EQ(report->kilohertz, 14.074 * 1000.0);
    EXPECT_EQ(report->comment, QStringLiteral("cq"));
    EXPECT_EQ(report->park, QStringLiteral("US-1123"));
    EXPECT_EQ(report->mode, QStringLiteral("FT8"));
    EXPECT_EQ(report->grid, QStringLiteral("JN34"));
    EXPECT_EQ(report->time, afternoon);
}

TEST(ReportOfSpot, needsACallAndAFrequency)
{
    const auto report = SpotNotice()
                            .without(u"mode")
                            .without(u"timestamp")
                            .without(u"comments")
                            .without(u"source")
                            .without(u"grid")
                            .without(u"dxde_call")
                            .without(u"pota_ref")
                            .report();
    ASSERT_TRUE(report);
    EXPECT_EQ(report->call, QStringLiteral("X1X"));
    EXPECT_EQ(report->spotter, QStringLiteral("SPOTWELL"));
    EXPECT_EQ(report->kilohertz, 14.074 * 1000.0);
    EXPECT_EQ(report->comment + report->park + report->mode + report->grid, QString());
    EXPECT_EQ(report->time, arrival);

    EXPECT_FALSE(SpotNotice().without(u"combinedCallsign").report());
    EXPECT_FALSE(SpotNotice().without(u"megahertz").report());
    EXPECT_FALSE(reportOfSpot({}, arrival));
    for (const QStringView call : {u"", u" ", u"\u0007", u"\u2028 \u0085"})
        EXPECT_FALSE(SpotNotice().with(u"combinedCallsign", call.toString()).report());
}

TEST(ReportOfSpot, passesOverValuesOfAnotherType)
{
    for (const Value& wrong : {Value(), Value(14.074), Value(afternoon)})
        EXPECT_FALSE(SpotNotice().with(u"combinedCallsign", wrong).report());
    for (const Value& wrong : {Value(), Value(QStringLiteral("14.074")), Value(afternoon)})
        EXPECT_FALSE(SpotNotice().with(u"megahertz", wrong).report());
    for (const Value& wrong : {Value(), Value(QStringLiteral("2026")), Value(1.0)})
        EXPECT_EQ(SpotNotice().with(u"timestamp", wrong).report()->time, arrival);
    for (const QStringView key : {u"comments", u"pota_ref"}) {
        const auto report = SpotNotice().with(key, 1.0).report();
        ASSERT_TRUE(report);
        EXPECT_EQ(report->comment.isEmpty(), key == u"comments");
        EXPECT_EQ(report->park.isEmpty(), key == u"pota_ref");
    }
    EXPECT_EQ(SpotNotice().with(u"mode", 1.0).report()->mode, QString());
    EXPECT_EQ(SpotNotice().with(u"grid", 1.0).report()->grid, QString());
    EXPECT_EQ(spotterFor(1.0, QStringLiteral("POTA")), QStringLiteral("POTA"));
    EXPECT_EQ(spotterFor(1.0, 1.0), QStringLiteral("SPOTWELL"));
}

TEST(ReportOfSpot, takesTheFirstOfTwoAndPassesOverUnknownKeys)
{
    const auto report = SpotNotice()
                            .add(u"combinedCallsign", QStringLiteral("Y1Y"))
                            .add(u"CombinedCallsign", QStringLiteral("Z1Z"))
                            .add(u"something", Value())
                            .report();
    ASSERT_TRUE(report);
    EXPECT_EQ(report->call, QStringLiteral("X1X"));
}

TEST(ReportOfSpot, takesFrequenciesAboveNothingUpToATerahertz)
{
    constexpr double infinite = std::numeric_limits<double>::infinity();
    for (const double megahertz : {0.1375, 7.0745, 1e6, 1e-6})
        EXPECT_EQ(SpotNotice().with(u"megahertz", megahertz).report()->kilohertz, megahertz * 1000.0);
    for (const double megahertz : {0.0, -0.0, -14.074, 1e6 + 1e-3, 1e300, 1e308, infinite, -infinite,
                                   std::numeric_limits<double>::quiet_NaN()})
        EXPECT_FALSE(SpotNotice().with(u"megahertz", megahertz).report()) << megahertz;
}

TEST(ReportOfSpot, takesTimesOfTheYears1To9999)
{
    constexpr std::chrono::microseconds instant{1};
    for (const TimePoint time :
         {at(1, 1, 1, 0, 0), at(1969, 12, 31, 23, 59), at(9999, 12, 31, 23, 59, 59, 999999)})
        EXPECT_EQ(SpotNotice().with(u"timestamp", time).report()->time, time);
    for (const TimePoint time :
         {at(1, 1, 1, 0, 0) - instant, at(10000, 1, 1, 0, 0), TimePoint::min(), TimePoint::max()})
        EXPECT_EQ(SpotNotice().with(u"timestamp", time).report()->time, arrival);
}

TEST(ReportOfSpot, takesTheServiceForASpotterWithoutAName)
{
    const QString nothing;
    const QString pota = QStringLiteral("POTA");
    EXPECT_EQ(spotterFor(nothing, pota), pota);
    EXPECT_EQ(spotterFor(QStringLiteral(" \t"), pota), pota);
    EXPECT_EQ(spotterFor(QStringLiteral(":"), pota), pota);
    EXPECT_EQ(spotterFor(nothing, nothing), QStringLiteral("SPOTWELL"));
    EXPECT_EQ(spotterFor(nothing, QStringLiteral(": ")), QStringLiteral("SPOTWELL"));
    EXPECT_EQ(SpotNotice().without(u"dxde_call").report()->spotter, pota);
}

TEST(ReportOfSpot, takesWordsUpToTheFirstBlank)
{
    for (const QStringView text : {u"AB", u" AB ", u"AB CD", u"AB\tCD", u"\u0001AB\u0000", u"AB\u00A0CD",
                                   u"AB\u2029CD", u"AB\r\nDX de", u"AB\u009BCD"}) {
        EXPECT_EQ(textFor(u"combinedCallsign", text.toString(), &SpotReport::call), QStringLiteral("AB"));
        EXPECT_EQ(textFor(u"dxde_call", text.toString(), &SpotReport::spotter), QStringLiteral("AB"));
        EXPECT_EQ(textFor(u"pota_ref", text.toString(), &SpotReport::park), QStringLiteral("AB"));
    }
    EXPECT_EQ(textFor(u"grid", QStringLiteral(" JN34ke xx"), &SpotReport::grid), QStringLiteral("JN34ke"));
    // A colon ends a spotter in a line; elsewhere it stays.
    EXPECT_EQ(textFor(u"dxde_call", QStringLiteral("AB:CD:"), &SpotReport::spotter), QStringLiteral("AB"));
    EXPECT_EQ(textFor(u"combinedCallsign", QStringLiteral("AB:CD"), &SpotReport::call),
              QStringLiteral("AB:CD"));
}

TEST(ReportOfSpot, takesLocatorsForAGridOnly)
{
    EXPECT_EQ(textFor(u"grid", QStringLiteral("jn34KE12xx"), &SpotReport::grid),
              QStringLiteral("jn34KE12xx"));
    EXPECT_EQ(textFor(u"grid", QStringLiteral("JN34ke12xx12"), &SpotReport::grid), QString());
    EXPECT_EQ(textFor(u"grid", QStringLiteral("Nice"), &SpotReport::grid), QString());
}

TEST(ReportOfSpot, hasBlanksForControlCharactersInTexts)
{
    const QString text = QStringLiteral(" \a\u0000one\r\ntwo\u0085\u2028three\u007F ");
    const QString plain = QStringLiteral("one  two  three");
    EXPECT_EQ(textFor(u"comments", text, &SpotReport::comment), plain);
    EXPECT_EQ(textFor(u"mode", text, &SpotReport::mode), plain);
    EXPECT_EQ(textFor(u"mode", QStringLiteral(" LSB / USB "), &SpotReport::mode),
              QStringLiteral("LSB / USB"));
}

TEST(ReportOfSpot, boundsItsTexts)
{
    const struct {
        QStringView key;
        QString SpotReport::*member;
        qsizetype longest;
    } cases[] = {
        {u"combinedCallsign", &SpotReport::call, 32},
        {u"dxde_call", &SpotReport::spotter, 32},
        {u"mode", &SpotReport::mode, 32},
        {u"pota_ref", &SpotReport::park, 32},
        {u"comments", &SpotReport::comment, 1000},
    };
    for (const auto& [key, member, longest] : cases) {
        EXPECT_EQ(textFor(key, radio.repeated(longest), member), radio.repeated(longest));
        EXPECT_EQ(textFor(key, radio.repeated(longest + 1), member), radio.repeated(longest));
        EXPECT_EQ(textFor(key, QString(1 << 20, u'x'), member), QString(longest, u'x'));
    }
    // What cutting leaves at the end is no blank either.
    EXPECT_EQ(textFor(u"comments", QString(998, u'x') + QStringLiteral("  yy"), &SpotReport::comment),
              QString(998, u'x'));
}

} // namespace
} // namespace spotwell::bridge
