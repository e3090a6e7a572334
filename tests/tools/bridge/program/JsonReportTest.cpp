// SPDX-FileCopyrightText: 2026 the spotwell developers
// SPDX-License-Identifier: MIT

#include "tools/spotwell-bridge/JsonReport.h"

#include <gtest/gtest.h>

#include <limits>

namespace spotwell::bridge
{

namespace
{

using namespace Qt::Literals::StringLiterals;

const TimePoint received{std::chrono::microseconds{1801645507123456}};

TEST(JsonReport, ShowsEveryValueInItsOrder)
{
    EXPECT_EQ(
        notificationJson({u"n"_s,
                          u"string object"_s,
                          {{u"z"_s, u"\"x\""_s},
                           {u"a"_s, 14.074},
                           {u"t"_s, TimePoint{}},
                           {u"other"_s, std::monostate{}},
                           {u"nan"_s, std::numeric_limits<double>::quiet_NaN()},
                           {u"z"_s, u"again"_s}}},
                         received),
        "{\"notification\":\"n\",\"object\":\"string object\",\"userInfo\":{\"z\":\"\\\"x\\\"\","
        "\"a\":14.074,\"t\":\"1970-01-01T00:00:00.000000Z\",\"other\":null,\"nan\":null,\"z\":\"again\"},"
        "\"received\":\"2027-02-03T09:05:07.123456Z\"}");
    EXPECT_EQ(
        commandJson(u"DX de"_s, received),
        "{\"command\":\"processSpot\",\"text\":\"DX de\",\"received\":\"2027-02-03T09:05:07.123456Z\"}");
}

TEST(JsonReport, SaysHowTheBridgeIsReady)
{
    const QByteArray name = "{\"ready\":true,\"name\":\"com.tarnbrooksoftware.Application.Logwright\",";
    EXPECT_EQ(readyJson({u"My Log"_s, std::nullopt}, {}, false), name + "\"displayName\":\"My Log\"}");
    EXPECT_EQ(readyJson({u"Logwright"_s, u"6.45"_s}, u"[::1]:7373"_s, true),
              name + "\"displayName\":\"Logwright\",\"version\":\"6.45\",\"telnet\":\"[::1]:7373\","
                     "\"queued\":true}");
}

} // namespace

} // namespace spotwell::bridge
