// SPDX-FileCopyrightText: 2026 the spotwell developers
// SPDX-License-Identifier: MIT

#include "tools/spotwell-bridge/spots/SpotText.h"

#include "tests/tools/bridge/spots/SpotTestData.h"

#include <gtest/gtest.h>

namespace spotwell::bridge
{
namespace
{

const QString highSurrogate(QChar(char16_t{0xD83D}));
const QString lowSurrogate(QChar(char16_t{0xDCFB}));

TEST(PlainText, hasBlanksForControlCharacters)
{
    for (int code = 0; code <= 0xFFFF; ++code) {
        const QString plain = plainText(u'a' + QString(QChar(code)) + u'b');
        ASSERT_EQ(plain, u'a' + QString(plainFor(code)) + u'b') << code;
        ASSERT_EQ(isControl(QChar(code)), isControlCode(code)) << code;
    }
}

TEST(PlainText, keepsPairsAndReplacesWhatIsHalfOfOne)
{
    const QString replacement(QChar(QChar::ReplacementCharacter));
    EXPECT_EQ(plainText(radio), radio);
    EXPECT_EQ(plainText(radio + radio), radio + radio);
    EXPECT_EQ(plainText(highSurrogate), replacement);
    EXPECT_EQ(plainText(lowSurrogate), replacement);
    EXPECT_EQ(plainText(lowSurrogate + highSurrogate), replacement + replacement);
    EXPECT_EQ(plainText(highSurrogate + radio), replacement + radio);
    EXPECT_EQ(plainText(QStringView()), QString());
}

TEST(Characters, areCodePoints)
{
    EXPECT_EQ(characterCount(u""), 0);
    EXPECT_EQ(characterCount(u"abc"), 3);
    EXPECT_EQ(characterCount(radio), 1);
    EXPECT_EQ(characterCount(u'a' + radio + u'b' + radio), 4);
    EXPECT_EQ(characterCount(highSurrogate), 1);
    EXPECT_EQ(characterCount(lowSurrogate + highSurrogate), 2);
}

TEST(FirstCharacters, neverSplitAPair)
{
    const QString text = u'a' + radio + u'b';
    EXPECT_EQ(firstCharacters(text, -1), u"");
    EXPECT_EQ(firstCharacters(text, 0), u"");
    EXPECT_EQ(firstCharacters(text, 1), u"a");
    EXPECT_EQ(firstCharacters(text, 2), u'a' + radio);
    EXPECT_EQ(firstCharacters(text, 3), text);
    EXPECT_EQ(firstCharacters(text, 4), text);
    EXPECT_EQ(firstCharacters(highSurrogate, 1), highSurrogate);
}

TEST(Words, arePartedByBlanks)
{
    Words words(u"  one two\u00A0three ");
    EXPECT_EQ(words.next(), u"one");
    EXPECT_EQ(words.rest(), u" two\u00A0three ");
    EXPECT_EQ(words.next(), u"two");
    EXPECT_EQ(words.next(), u"three");
    EXPECT_EQ(words.rest(), u" ");
    EXPECT_EQ(words.next(), u"");
    EXPECT_EQ(words.next(), u"");
    EXPECT_EQ(Words(QStringView()).next(), u"");
}

TEST(Locators, haveFourToTenCharactersInPairs)
{
    for (const QStringView text : {u"JN34", u"jn34", u"Jn34kE", u"AA00", u"RR99", u"RR99XX", u"rr99xx",
                                   u"AA00aa", u"JN34ke12", u"JN34ke12xx"})
        EXPECT_TRUE(isLocator(text)) << text.toString().toStdString();
    for (const QStringView text : {u"",
                                   u"J",
                                   u"JN",
                                   u"JN3",
                                   u"JN34k",
                                   u"JN34ke1",
                                   u"JN34ke12x",
                                   u"JN34ke12xx1",
                                   u"JN34ke12xx12",
                                   u"SN34",
                                   u"JS34",
                                   u"sn34",
                                   u"js34",
                                   u"@N34",
                                   u"`N34",
                                   u"J434",
                                   u"JNA4",
                                   u"JN3A",
                                   u"JN34YE",
                                   u"JN34KY",
                                   u"JN34ye",
                                   u"JN34ky",
                                   u"JN3412",
                                   u"JN34keA2",
                                   u"JN34ke1A",
                                   u"JN34ke1211",
                                   u"JN34ke12yx",
                                   u"JN:4",
                                   u"JN/4",
                                   u"1428Z",
                                   u"JN\u0663\u0664"})
        EXPECT_FALSE(isLocator(text)) << text.toString().toStdString();
}

TEST(CommentWithPark, namesTheParkOnce)
{
    const struct {
        QStringView comment;
        QStringView park;
        QStringView both;
    } cases[] = {
        {u"", u"", u""},
        {u"cq", u"", u"cq"},
        {u"", u"US-1123", u"US-1123"},
        {u"cq", u"US-1123", u"cq US-1123"},
        {u"US-1123", u"US-1123", u"US-1123"},
        {u"cq us-1123", u"US-1123", u"cq us-1123"},
        {u"POTA #US-1123!", u"us-1123", u"POTA #US-1123!"},
        // Another park's reference that holds this one.
        {u"US-11234", u"US-1123", u"US-11234 US-1123"},
        {u"AUS-1123", u"US-1123", u"AUS-1123 US-1123"},
        {u"US-11234, US-1123", u"US-1123", u"US-11234, US-1123"},
        {u"AUS-1123 US-1123", u"US-1123", u"AUS-1123 US-1123"},
        {u"US-112", u"US-1123", u"US-112 US-1123"},
    };
    for (const auto& [comment, park, both] : cases)
        EXPECT_EQ(commentWithPark(comment.toString(), park.toString()), both.toString());
}

} // namespace
} // namespace spotwell::bridge
