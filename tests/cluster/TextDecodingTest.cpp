// SPDX-FileCopyrightText: 2026 the spotwell developers
// SPDX-License-Identifier: MIT

#include "cluster/TextDecoding.h"

#include "tests/fakes/FakeServices.h"

#include <gtest/gtest.h>

namespace spotwell
{

namespace
{

using namespace Qt::StringLiterals;

class TextDecoding : public testing::Test
{
protected:
    FakeTextConverter converter;
    FakeLog log;
};

TEST_F(TextDecoding, TriesUtf8First)
{
    converter.results[4] = u"by 4"_s;
    converter.results[5] = u"by 5"_s;
    EXPECT_EQ(decodeClusterLine("line", converter, log), u"by 4"_s);
    EXPECT_EQ(converter.tried, (std::vector<unsigned long>{4}));
    EXPECT_TRUE(log.lines.isEmpty());
}

TEST_F(TextDecoding, TriesTheFixedListInItsOrder)
{
    const std::vector<unsigned long> order{4, 1, 5, 9, 11, 12, 13, 15};
    for (std::size_t i = 0; i < order.size(); ++i) {
        converter.tried.clear();
        converter.results = {{order[i], u"text"_s}};
        EXPECT_EQ(decodeStringData("bytes", converter, log), u"text"_s);
        EXPECT_EQ(converter.tried,
                  std::vector(order.begin(), order.begin() + static_cast<std::ptrdiff_t>(i) + 1));
    }
    EXPECT_TRUE(log.lines.isEmpty());
}

TEST_F(TextDecoding, TriesEveryNumberDownwardsWhenTheListFailed)
{
    converter.results[2] = u"by 2"_s;
    EXPECT_EQ(decodeStringData("bytes", converter, log), u"by 2"_s);
    std::vector<unsigned long> expected{4, 1, 5, 9, 11, 12, 13, 15};
    for (unsigned long encoding = 30; encoding >= 2; --encoding)
        expected.push_back(encoding);
    EXPECT_EQ(converter.tried, expected);
    EXPECT_TRUE(log.lines.isEmpty());
}

TEST_F(TextDecoding, TakesAnEmptyConversionForAFailedOne)
{
    converter.results[4] = u""_s;
    converter.results[10] = u""_s;
    converter.results[9] = u"by 9"_s;
    EXPECT_EQ(decodeStringData("bytes", converter, log), u"by 9"_s);
}

TEST_F(TextDecoding, SaysSoWhenNothingTakesTheBytes)
{
    EXPECT_EQ(decodeStringData("ab\xE9\x80", converter, log), QString());
    EXPECT_EQ(converter.tried.size(), 38U);
    EXPECT_EQ(converter.tried.back(), 1U);
    EXPECT_EQ(log.lines, QStringList{u"decodeStringData:unable to decode c string:[ab\u00E9\u0080]"_s});
}

TEST_F(TextDecoding, SaysSoForTheLineToo)
{
    EXPECT_EQ(decodeClusterLine("ab\xE9", converter, log), QString());
    EXPECT_EQ(log.lines, (QStringList{u"decodeStringData:unable to decode c string:[ab\u00E9]"_s,
                                      u"decodeClusterLine:unable to decode c string:[ab\u00E9]"_s}));
}

TEST_F(TextDecoding, LeavesAnEmptyInputAlone)
{
    EXPECT_EQ(decodeClusterLine("", converter, log), QString());
    EXPECT_EQ(decodeClusterLine(nullptr, converter, log), QString());
    EXPECT_EQ(decodeStringData({}, converter, log), QString());
    EXPECT_TRUE(converter.tried.empty());
    EXPECT_TRUE(log.lines.isEmpty());
}

TEST(EncodingString, NamesTheKnownNumbersOnly)
{
    const std::map<unsigned long, QString> names{
        {1, u"NSASCIIStringEncoding"_s},          {2, u"NSNEXTSTEPStringEncoding"_s},
        {3, u"NSJapaneseEUCStringEncoding"_s},    {4, u"NSUTF8StringEncoding"_s},
        {5, u"NSISOLatin1StringEncoding"_s},      {6, u"NSSymbolStringEncoding"_s},
        {7, u"NSNonLossyASCIIStringEncoding"_s},  {8, u"NSShiftJISStringEncoding"_s},
        {9, u"NSISOLatin2StringEncoding"_s},      {10, u"NSUnicodeStringEncoding"_s},
        {11, u"NSWindowsCP1251StringEncoding"_s}, {12, u"NSWindowsCP1252StringEncoding"_s},
        {13, u"NSWindowsCP1253StringEncoding"_s}, {14, u"NSWindowsCP1254StringEncoding"_s},
        {15, u"NSWindowsCP1250StringEncoding"_s}, {21, u"NSISO2022JPStringEncoding"_s},
        {30, u"NSMacOSRomanStringEncoding"_s},
    };
    for (unsigned long encoding = 0; encoding <= 40; ++encoding) {
        const auto name = names.find(encoding);
        EXPECT_EQ(encodingString(encoding),
                  name == names.end() ? u"Unknown:"_s + QString::number(encoding) : name->second);
    }
    EXPECT_EQ(encodingString(0), u"Unknown:0"_s);
    EXPECT_EQ(encodingString(22), u"Unknown:22"_s);
    EXPECT_EQ(encodingString(18446744073709551615UL), u"Unknown:18446744073709551615"_s);
}

TEST_F(TextDecoding, ReturnsWhatWasDetected)
{
    converter.detected = {5, u"text"_s, false};
    EXPECT_EQ(stringUnknownEncoding("bytes", converter, log), u"text"_s);
    EXPECT_TRUE(log.lines.isEmpty());
}

TEST_F(TextDecoding, SaysWhatADetectionLacked)
{
    const QString undetermined = u"stringUnknownEncoding:Could not determine string encoding."_s;
    const QString lossy = u"stringUnknownEncoding:Lossy conversion occurred."_s;
    const QString empty = u"stringUnknownEncoding:empty string."_s;
    struct Row {
        DetectedText detected;
        QStringList lines;
    };
    for (const Row& row : {
             Row{{0, QString(), false}, {undetermined, empty}},
             Row{{0, QString(), true}, {undetermined, empty}},
             Row{{0, u"text"_s, false}, {undetermined}},
             Row{{5, u"text"_s, true}, {lossy}},
             Row{{5, QString(), true}, {lossy, empty}},
             Row{{5, QString(), false}, {empty}},
         }) {
        log.lines.clear();
        converter.detected = row.detected;
        EXPECT_EQ(stringUnknownEncoding("bytes", converter, log), row.detected.text);
        EXPECT_EQ(log.lines, row.lines);
    }
}

} // namespace

} // namespace spotwell
