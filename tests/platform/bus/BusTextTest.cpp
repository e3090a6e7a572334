// SPDX-FileCopyrightText: 2026 the spotwell developers
// SPDX-License-Identifier: MIT

#include "platform/linux/bus/BusText.h"

#include <gtest/gtest.h>

#include <vector>

namespace spotwell
{

namespace
{

/// The units as they are; QString's own conversion would take some for a byte order mark.
QString exactly(const std::u16string& units)
{
    QString text;
    for (const char16_t unit : units)
        text.append(QChar(unit));
    return text;
}

TEST(BusText, CarriesWhatTheBusCanAndReplacesTheRest)
{
    const struct {
        std::u16string text;
        std::string expected;
    } table[] = {
        {u"", ""},
        {u"DX de N0CALL: \\'\"%s", "DX de N0CALL: \\'\"%s"},
        {u"\u00e9\u20ac", "\xc3\xa9\xe2\x82\xac"},
        {u"\U0001F4FB", "\xf0\x9f\x93\xbb"},
        {u"\a\r\n\t\u001b\u007f\u0085", "\a\r\n\t\x1b\x7f\xc2\x85"},
        {u"\u07ff\u0800\ud7ff\ue000\ufffd", "\xdf\xbf\xe0\xa0\x80\xed\x9f\xbf\xee\x80\x80\xef\xbf\xbd"},
        {std::u16string(u"a\0b", 3), "a\xef\xbf\xbd"
                                     "b"},
        {{0xD83D}, "\xef\xbf\xbd"},
        {{0xDCFB}, "\xef\xbf\xbd"},
        {{u'a', 0xD83D, u'b'},
         "a\xef\xbf\xbd"
         "b"},
        {{0xDCFB, 0xD83D}, "\xef\xbf\xbd\xef\xbf\xbd"},
        {{0xD83D, 0xD83D, 0xDCFB}, "\xef\xbf\xbd\xf0\x9f\x93\xbb"},
        {{0xFFFE}, "\xef\xbf\xbd"},
        {{0xFFFF}, "\xef\xbf\xbd"},
        {{0xFDCF, 0xFDD0, 0xFDEF, 0xFDF0}, "\xef\xb7\x8f\xef\xbf\xbd\xef\xbf\xbd\xef\xb7\xb0"},
        {u"\U0001FFFE\U0010FFFF\U0010FFFD", "\xef\xbf\xbd\xef\xbf\xbd\xf4\x8f\xbf\xbd"},
    };
    for (const auto& row : table)
        EXPECT_EQ(busSafeText(exactly(row.text)), row.expected);
}

TEST(BusText, CutsALongTextAfterAWholeCharacter)
{
    const auto text = QString::fromUtf16(u"ab\u20ac\U0001F4FBz");
    const struct {
        std::size_t maxBytes;
        std::string expected;
    } table[] = {{0, ""},
                 {1, "a"},
                 {4, "ab"},
                 {5, "ab\xe2\x82\xac"},
                 {8, "ab\xe2\x82\xac"},
                 {9, "ab\xe2\x82\xac\xf0\x9f\x93\xbb"},
                 {10, "ab\xe2\x82\xac\xf0\x9f\x93\xbbz"}};
    for (const auto& row : table)
        EXPECT_EQ(busSafeText(text, row.maxBytes), row.expected);
    EXPECT_EQ(busSafeText(QString(1 << 20, u'x')).size(), std::size_t{1} << 20);
    EXPECT_EQ(busSafeText(QString((1 << 20) + 1, u'x')).size(), std::size_t{1} << 20);
}

} // namespace

} // namespace spotwell
