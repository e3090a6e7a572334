// SPDX-FileCopyrightText: 2026 the spotwell developers
// SPDX-License-Identifier: MIT

#include "tools/spotwell-simulator/ScenarioWords.h"

#include "tools/spotwell-simulator/Charset.h"

#include <gtest/gtest.h>

namespace spotwell::simulator
{
namespace
{

using Kind = Word::Kind;

QString joined(const Words& words)
{
    QString text;
    for (const Word& word : words.words)
        text += QChar{word.kind == Kind::bare   ? u'['
                      : word.kind == Kind::text ? u'"'
                                                : u'$'} +
                word.text + u'|';
    return text;
}

TEST(ScenarioWords, cutsALineIntoWords)
{
    const Variables variables{{QStringLiteral("rate"), QStringLiteral("200")},
                              {QStringLiteral("my-call"), QStringLiteral("W1AW")}};
    const struct {
        QString line;
        QString words;
    } cases[]{
        {u""_qs, u""_qs},
        {u" \t "_qs, u""_qs},
        {u"# only a comment"_qs, u""_qs},
        {u"wait 0.5 # a comment"_qs, u"[wait|[0.5|"_qs},
        {u"half-close"_qs, u"[half-close|"_qs},
        {u"wait\t1"_qs, u"[wait|[1|"_qs},
        {u"send \"a # b\""_qs, u"[send|\"a # b|"_qs},
        {u"send \"\""_qs, u"[send|\"|"_qs},
        {u"send \"a\" \"b\""_qs, u"[send|\"a|\"b|"_qs},
        {u"spots 5 at $rate"_qs, u"[spots|[5|[at|$200|"_qs},
        {u"expect $my-call \"\\n\""_qs, u"[expect|$W1AW|\"\n|"_qs},
        {u"send \"$rate\""_qs, u"[send|\"$rate|"_qs},
        {u"send \"\\r\\n\\a\\t\\\\\\\"\\x41\\x0a\""_qs, u"[send|\"\r\n\a\t\\\"A\n|"_qs},
    };
    for (const auto& c : cases) {
        const Words words = splitWords(c.line, variables);
        EXPECT_TRUE(words.error.isNull()) << qPrintable(c.line) << ": " << qPrintable(words.error);
        EXPECT_EQ(joined(words), c.words) << qPrintable(c.line);
    }
}

TEST(ScenarioWords, keepsNulAndHighBytes)
{
    const Words words = splitWords(u"\"\\0\\xE9\\xff\\x80\\x7F\""_qs, {});
    ASSERT_EQ(words.words.size(), 1U);
    EXPECT_EQ(encode(words.words[0].text, u"utf-8"_qs), QByteArray("\0\xE9\xFF\x80\x7F", 5));
    EXPECT_EQ(encode(words.words[0].text, u"windows-1251"_qs), QByteArray("\0\xE9\xFF\x80\x7F", 5));
}

TEST(ScenarioWords, saysWhatIsWrong)
{
    const struct {
        QString line;
        QString error;
    } cases[]{
        {u"send \"abc"_qs, u"the text is not closed with a quotation mark"_qs},
        {u"send \"abc\\"_qs, u"the text is not closed with a quotation mark"_qs},
        {u"send \"\\q\""_qs, u"unknown escape \"\\q\""_qs},
        {u"send \"\\x4\""_qs, u"\"\\x\" needs two hexadecimal digits"_qs},
        {u"send \"\\xg0\""_qs, u"\"\\x\" needs two hexadecimal digits"_qs},
        {u"send \"\\x 1\""_qs, u"\"\\x\" needs two hexadecimal digits"_qs},
        {u"send \"\\x-1\""_qs, u"\"\\x\" needs two hexadecimal digits"_qs},
        {u"wait 1;"_qs, u"unexpected character \";\""_qs},
        {u"wait $pause"_qs, u"no variable \"pause\" was set"_qs},
        {u"wait $"_qs, u"no variable \"\" was set"_qs},
    };
    for (const auto& c : cases)
        EXPECT_EQ(splitWords(c.line, {}).error, c.error) << qPrintable(c.line);
}

TEST(ScenarioWords, escapesWhatAScenarioCanRead)
{
    EXPECT_EQ(escaped("N0CALL\n"), u"N0CALL\\n"_qs);
    EXPECT_EQ(escaped(QByteArray("\r\n\a\t\0\\\"\x1b\x7f\xe9 ~", 12)),
              u"\\r\\n\\a\\t\\0\\\\\\\"\\x1b\\x7f\\xe9 ~"_qs);

    QByteArray all;
    for (int value = 0; value < 256; ++value)
        all.append(static_cast<char>(value));
    const Words words = splitWords(u'"' + escaped(all) + u'"', {});
    ASSERT_EQ(words.words.size(), 1U);
    EXPECT_EQ(encode(words.words[0].text, u"latin1"_qs), all);
}

TEST(Charset, encodes)
{
    const struct {
        QString text;
        QString charset;
        QByteArray bytes;
    } cases[]{
        {u"abc"_qs, u"utf-8"_qs, "abc"},       {u"é\U0001F4E1"_qs, u"utf-8"_qs, "\xC3\xA9\xF0\x9F\x93\xA1"},
        {u"é"_qs, u"latin1"_qs, "\xE9"},       {u"ő"_qs, u"latin2"_qs, "\xF5"},
        {u"š"_qs, u"windows-1250"_qs, "\x9A"}, {u"Привет"_qs, u"windows-1251"_qs, "\xCF\xF0\xE8\xE2\xE5\xF2"},
        {u"€"_qs, u"windows-1252"_qs, "\x80"}, {u"я"_qs, u"koi8-r"_qs, "\xD1"},
    };
    for (const auto& c : cases)
        EXPECT_EQ(encode(c.text, c.charset), c.bytes) << qPrintable(c.charset);
}

TEST(Charset, refusesWhatASetLacks)
{
    QString missing;
    EXPECT_FALSE(encode(u"aя"_qs, u"latin1"_qs, &missing).has_value());
    EXPECT_EQ(missing, u"я"_qs);
    EXPECT_FALSE(encode(u"\U0001F4E1"_qs, u"windows-1251"_qs, &missing).has_value());
    EXPECT_EQ(missing, u"\U0001F4E1"_qs);
    EXPECT_FALSE(encode(u"a"_qs, u"klingon"_qs).has_value());
}

} // namespace
} // namespace spotwell::simulator
