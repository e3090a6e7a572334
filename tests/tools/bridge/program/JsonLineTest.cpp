// SPDX-FileCopyrightText: 2026 the spotwell developers
// SPDX-License-Identifier: MIT

#include "tools/spotwell-bridge/JsonLine.h"

#include <gtest/gtest.h>

#include <limits>

namespace spotwell::bridge
{

namespace
{

using namespace Qt::Literals::StringLiterals;

TEST(JsonLine, KeepsTheOrderOfItsMembers)
{
    JsonLine inner;
    EXPECT_EQ(inner.text(), "{}");
    inner.add(u"z"_s, 14.074);
    inner.add(u"a"_s, u"x\"\n\\é"_s);
    JsonLine line;
    line.add(u"ready"_s, true);
    line.add(u"inner"_s, inner);
    line.add(u"\""_s, QJsonValue());
    EXPECT_EQ(line.text(), "{\"ready\":true,\"inner\":{\"z\":14.074,\"a\":\"x\\\"\\n\\\\é\"},\"\\\"\":null}");
}

TEST(JsonLine, WritesTimes)
{
    const struct {
        std::int64_t microseconds;
        const char16_t* text;
    } table[] = {
        {0, u"1970-01-01T00:00:00.000000Z"},
        {-1, u"1969-12-31T23:59:59.999999Z"},
        {1801645507123456, u"2027-02-03T09:05:07.123456Z"},
        {-62167219200000000, u"0000-01-01T00:00:00.000000Z"},
        {-62167219200000001, u"-62167219200000001"},
        {253402300799999999, u"9999-12-31T23:59:59.999999Z"},
        {253402300800000000, u"253402300800000000"},
        {std::numeric_limits<std::int64_t>::min(), u"-9223372036854775808"},
    };
    for (const auto& row : table)
        EXPECT_EQ(isoTime(row.microseconds), QString::fromUtf16(row.text));
}

} // namespace

} // namespace spotwell::bridge
