// SPDX-FileCopyrightText: 2026 the spotwell developers
// SPDX-License-Identifier: MIT

#include "util/StringAdditions.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>

namespace spotwell
{

namespace
{

const QString lineWithQuotes = QStringLiteral("it's \"so\"");

/// Whether both share one piece of memory, so that nothing was copied.
bool isSame(const QString& a, const QString& b)
{
    return a == b && a.constData() == b.constData();
}

TEST(RemoveAllQuotes, RemovesBothKinds)
{
    EXPECT_EQ(removeAllQuotes(lineWithQuotes), QStringLiteral("its so"));
    EXPECT_EQ(removeAllQuotes(QStringLiteral("''\"\"")), QString());
    EXPECT_EQ(removeAllQuotes(QStringLiteral("`plain\u2019 \u201Ctext\u201D")),
              QStringLiteral("`plain\u2019 \u201Ctext\u201D"));
}

TEST(ContainsString, ObservesCaseUnlessTold)
{
    struct Row {
        QStringView receiver;
        QStringView search;
        bool exactly;
        bool ignoringCase;
    };
    for (const Row& row : {
             Row{u"Please enter your CALL:", u"enter your call", false, true},
             Row{u"LOGIN:", u"login:", false, true},
             Row{u"login:", u"LOGIN:", false, true},
             Row{u"login:", u"login:", true, true},
             Row{u"a login: prompt", u"login:", true, true},
             Row{u"logi", u"login", false, false},
             Row{u"", u"login", false, false},
             Row{u"login", u"", false, false},
             Row{u"", u"", false, false},
             Row{u"ÄRGER", u"ärger", false, true},
         }) {
        EXPECT_EQ(containsString(row.receiver, row.search, false), row.exactly)
            << row.search.toString().toStdString();
        EXPECT_EQ(containsString(row.receiver, row.search, true), row.ignoringCase)
            << row.search.toString().toStdString();
    }
}

TEST(LegalCall, ForbidsBlanksOnly)
{
    for (const QStringView legal : std::initializer_list<QStringView>{
             u"", u"K1ABC", u"12345", u"!?", u"DL/K1ABC/P", u"K1\tABC", u"K1\u00A0ABC"})
        EXPECT_TRUE(legalCall(legal)) << legal.toString().toStdString();
    for (const QStringView illegal :
         std::initializer_list<QStringView>{u" ", u"K1ABC ", u" K1ABC", u"K1 ABC"})
        EXPECT_FALSE(legalCall(illegal)) << illegal.toString().toStdString();
}

TEST(StringByPrependingString, PutsThePrefixInFront)
{
    const QString receiver = QStringLiteral("receiver");
    EXPECT_EQ(stringByPrependingString(receiver, QStringLiteral("\n")), QStringLiteral("\nreceiver"));
    EXPECT_EQ(stringByPrependingString(QString(), QStringLiteral("p")), QStringLiteral("p"));
    EXPECT_TRUE(isSame(stringByPrependingString(receiver, QStringLiteral("")), receiver));
    EXPECT_TRUE(isSame(stringByPrependingString(receiver, QString()), receiver));
    EXPECT_EQ(receiver, QStringLiteral("receiver"));
}

TEST(RemoveCharactersInSet, RemovesEveryMember)
{
    const QString receiver = QStringLiteral("\r\aDX de K1ABC\a\r\n\a");
    EXPECT_EQ(removeCharactersInSet(receiver, u"\r\a"), QStringLiteral("DX de K1ABC\n"));
    EXPECT_EQ(receiver.size(), 17);
    EXPECT_EQ(removeCharactersInSet(QStringLiteral("\r\a\a\r"), u"\r\a"), QString());
    EXPECT_EQ(removeCharactersInSet(QString(), u"\r\a"), QString());
    EXPECT_EQ(removeCharactersInSet(QStringLiteral("aXb\U0001F600X"), u"X"), QStringLiteral("ab\U0001F600"));
}

TEST(RemoveCharactersInSet, ReturnsTheReceiverWhenNoneIsThere)
{
    const QString receiver = QStringLiteral("nothing here");
    EXPECT_TRUE(isSame(removeCharactersInSet(receiver, u"\r\a"), receiver));
    EXPECT_TRUE(isSame(removeCharactersInSet(receiver, u""), receiver));
}

TEST(ReplaceCharactersInSet, ReplacesEachMemberByItself)
{
    EXPECT_EQ(replaceCharactersInSet(QStringLiteral("a\\b'c\"d''"), u"\\'\"", QStringLiteral(".")),
              QStringLiteral("a.b.c.d.."));
    EXPECT_EQ(replaceCharactersInSet(QStringLiteral("a,b"), u",", QStringLiteral(" and ")),
              QStringLiteral("a and b"));
    EXPECT_EQ(replaceCharactersInSet(QStringLiteral("a,b,"), u",", QString()), QStringLiteral("ab"));
}

TEST(ReplaceCharactersInSet, ReturnsTheReceiverWhenNoneIsThere)
{
    const QString receiver = QStringLiteral("nothing here");
    EXPECT_TRUE(isSame(replaceCharactersInSet(receiver, u"\\'\"", QStringLiteral(".")), receiver));
    // Nothing is replaced, so nothing is searched again.
    EXPECT_TRUE(isSame(replaceCharactersInSet(receiver, u"x", QStringLiteral("x")), receiver));
}

/// The contract by the letter: replace the first, search again from the start.
QString replacedOneByOne(QString text, QStringView set, const QString& withStr)
{
    const auto firstMember = [&]() -> qsizetype {
        for (qsizetype i = 0; i < text.size(); ++i) {
            if (set.contains(text.at(i)))
                return i;
        }
        return -1;
    };
    for (qsizetype at = firstMember(); at >= 0; at = firstMember())
        text.replace(at, 1, withStr);
    return text;
}

TEST(ReplaceCharactersInSet, GivesWhatSearchingFromTheStartGives)
{
    for (const QStringView receiver :
         std::initializer_list<QStringView>{u"abcabc", u"", u"aaa", u"xyz", u"cab"}) {
        for (const QStringView withStr : std::initializer_list<QStringView>{u"", u".", u"--", u"zyx"}) {
            EXPECT_EQ(replaceCharactersInSet(receiver.toString(), u"ab", withStr.toString()),
                      replacedOneByOne(receiver.toString(), u"ab", withStr.toString()));
        }
    }
}

#ifndef QT_NO_DEBUG
TEST(ReplaceCharactersInSetDeathTest, AssertsThatTheReplacementHoldsNoMember)
{
    EXPECT_DEATH((void)replaceCharactersInSet(QStringLiteral("a"), u"a", QStringLiteral("ba")),
                 "the replacement holds a member of the set");
}
#endif

TEST(ReplaceString, ReplacesEveryOccurrenceLiterally)
{
    struct Row {
        QStringView receiver;
        QStringView target;
        QStringView withStr;
        QStringView expected;
    };
    for (const Row& row : {
             Row{u"a&amp;b&amp;", u"&amp;", u"&", u"a&b&"},
             Row{u"aaa", u"aa", u"b", u"ba"},
             Row{u"aaaa", u"aa", u"aaa", u"aaaaaa"},
             Row{u"RBN rbn", u"rbn", u"x", u"RBN x"},
             Row{u"e\u0301", u"\u00E9", u"x", u"e\u0301"},
             Row{u"a.c abc", u"a.c", u"x", u"x abc"},
             Row{u"unchanged", u"", u"x", u"unchanged"},
             Row{u"unchanged", u"n", u"", u"unchanged"},
             Row{u"", u"n", u"x", u""},
         }) {
        EXPECT_EQ(replaceString(row.receiver.toString(), row.target.toString(), row.withStr.toString()),
                  row.expected.toString());
    }
    const QString receiver = QStringLiteral("target");
    EXPECT_TRUE(isSame(replaceString(receiver, QStringLiteral("target"), QString()), receiver));
}

TEST(RemoveLineControls, RemovesCarriageReturnsAndLineFeeds)
{
    EXPECT_EQ(removeLineControls(QStringLiteral("\r\na\rb\nc\td\v\r\n")), QStringLiteral("abc\td\v"));
}

TEST(InsertWithSpaceIfNotRedundant, PutsItInFrontUnlessThere)
{
    struct Row {
        QStringView receiver;
        QStringView insert;
        QStringView expected;
    };
    for (const Row& row : {
             Row{u"text", u"", u"text"},
             Row{u"", u"CQ", u"CQ"},
             Row{u"", u"", u""},
             Row{u"text", u"CQ", u"CQ text"},
             Row{u"cq", u"CQ", u"cq"},
             Row{u"a cQ b", u"Cq", u"a cQ b"},
         }) {
        EXPECT_EQ(insertWithSpaceIfNotRedundant(row.receiver.toString(), row.insert.toString()),
                  row.expected.toString());
    }
}

TEST(IntegerValue, ReadsTheLeadingNumber)
{
    using Limits = std::numeric_limits<std::int64_t>;
    struct Row {
        QStringView text;
        std::int64_t expected;
    };
    for (const Row& row : {
             Row{u"", 0},
             Row{u"abc", 0},
             Row{u"7300", 7300},
             Row{u"  \t\n7300", 7300},
             Row{u"23 and more", 23},
             Row{u"6.45", 6},
             Row{u"1e3", 1},
             Row{u"0x10", 0},
             Row{u"007", 7},
             Row{u"-5", -5},
             Row{u"+5", 5},
             Row{u"- 5", 0},
             Row{u"--5", 0},
             Row{u"+-5", 0},
             Row{u"-", 0},
             Row{u"\u0663", 0},
             Row{u"9223372036854775806", Limits::max() - 1},
             Row{u"9223372036854775807", Limits::max()},
             Row{u"9223372036854775808", Limits::max()},
             Row{u"-9223372036854775807", Limits::min() + 1},
             Row{u"-9223372036854775808", Limits::min()},
             Row{u"-9223372036854775809", Limits::min()},
             Row{u"99999999999999999999999999", Limits::max()},
             Row{u"-99999999999999999999999999", Limits::min()},
         }) {
        EXPECT_EQ(integerValue(row.text), row.expected) << row.text.toString().toStdString();
    }
}

TEST(DoubleValue, ReadsTheLeadingNumber)
{
    struct Row {
        QStringView text;
        double expected;
    };
    for (const Row& row : {
             Row{u"", 0.0},
             Row{u"abc", 0.0},
             Row{u".", 0.0},
             Row{u"-", 0.0},
             Row{u"e5", 0.0},
             Row{u".e5", 0.0},
             Row{u"6.45", 6.45},
             Row{u"6.45.1", 6.45},
             Row{u" \t6.45 beta", 6.45},
             Row{u"6,45", 6.0},
             Row{u"6.", 6.0},
             Row{u".5", 0.5},
             Row{u"-.5", -0.5},
             Row{u"+14.074", 14.074},
             Row{u"1e3", 1000.0},
             Row{u"1E+3x", 1000.0},
             Row{u"1.5e-3", 0.0015},
             Row{u"6e", 6.0},
             Row{u"6e+", 6.0},
             Row{u"6.e1", 60.0},
             Row{u"6 e1", 6.0},
             Row{u"0x10", 0.0},
             Row{u"inf", 0.0},
             Row{u"nan", 0.0},
             Row{u"1e400", HUGE_VAL},
             Row{u"-1e400", -HUGE_VAL},
             Row{u"1e99999999999999999999", HUGE_VAL},
             Row{u"1e-400", 0.0},
             Row{u"1e-99999999999999999999", 0.0},
             Row{u"0e99999999999999999999", 0.0},
             Row{u"\u0663", 0.0},
         }) {
        EXPECT_EQ(doubleValue(row.text), row.expected) << row.text.toString().toStdString();
    }
}

TEST(DoubleValue, TakesLongTexts)
{
    EXPECT_EQ(doubleValue(QString(1000, u'9')), HUGE_VAL);
    EXPECT_EQ(leadingNumber(u"-0.5 W"), -0.5);
    EXPECT_EQ(leadingNumber(u"0"), 0.0);
    for (const QStringView none : {u"", u" ", u"-", u".", u"+.e5", u"W 0.5"})
        EXPECT_EQ(leadingNumber(none), std::nullopt) << none.toString().toStdString();
    EXPECT_EQ(doubleValue(QStringLiteral("0.") + QString(1000, u'0') + u'1'), 0.0);
    EXPECT_EQ(doubleValue(QStringLiteral("1.") + QString(1000, u'0')), 1.0);
}

} // namespace

} // namespace spotwell
