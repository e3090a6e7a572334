// SPDX-FileCopyrightText: 2026 the spotwell developers
// SPDX-License-Identifier: MIT

#include "tools/spotwell-simulator/StatementParser.h"

#include <gtest/gtest.h>

namespace spotwell::simulator
{
namespace
{

Words split(const QString& line)
{
    return splitWords(
        line, {{QStringLiteral("n"), QStringLiteral("7")}, {QStringLiteral("c"), QStringLiteral("W1")}});
}

template <typename What>
What parsed(const QString& line)
{
    const ParsedStatement result = parseStatement(split(line).words, 3);
    EXPECT_TRUE(result.error.isNull()) << qPrintable(line) << ": " << qPrintable(result.error);
    EXPECT_EQ(result.statement.line, 3);
    const What* what = std::get_if<What>(&result.statement.what);
    EXPECT_NE(what, nullptr) << qPrintable(line);
    return what ? *what : What{};
}

TEST(StatementParser, send)
{
    EXPECT_EQ(parsed<Send>(u"send \"login: \""_qs).bytes, "login: ");
    EXPECT_EQ(parsed<Send>(u"send \"é\""_qs).bytes, "\xC3\xA9");
    EXPECT_EQ(parsed<Send>(u"send latin1 \"é\""_qs).bytes, "\xE9");
    EXPECT_EQ(parsed<Send>(u"send \"a\" $c \"\\r\\n\""_qs).bytes, "aW1\r\n");
}

TEST(StatementParser, cutAndWait)
{
    EXPECT_EQ(parsed<Cut>(u"cut"_qs).pause, Seconds{0.05});
    EXPECT_EQ(parsed<Cut>(u"cut 0.3"_qs).pause, Seconds{0.3});
    EXPECT_EQ(parsed<Wait>(u"wait 1.5"_qs).duration, Seconds{1.5});
    EXPECT_EQ(parsed<Wait>(u"wait 0"_qs).duration, Seconds{0});
    EXPECT_EQ(parsed<Wait>(u"wait 86400"_qs).duration, Seconds{86400});
    EXPECT_EQ(parsed<Wait>(u"wait $n"_qs).duration, Seconds{7});
}

TEST(StatementParser, spots)
{
    const Spots steady = parsed<Spots>(u"spots 100 at 12.5"_qs);
    EXPECT_EQ(steady.count, 100);
    EXPECT_EQ(steady.rate, 12.5);
    EXPECT_EQ(steady.format, (SpotFormat{75, SpotFormat::Comment::numbered}));
    EXPECT_FALSE(parsed<Spots>(u"spots $n as fast as possible"_qs).rate.has_value());
    EXPECT_EQ(parsed<Spots>(u"spots 1 at $n length 80"_qs).format.length, 80);
    EXPECT_EQ(parsed<Spots>(u"spots 1 at 1 plain"_qs).format.comment, SpotFormat::Comment::plain);
    EXPECT_EQ(parsed<Spots>(u"spots 1 at 1 length 4096 stamped"_qs).format,
              (SpotFormat{4096, SpotFormat::Comment::stamped}));
}

TEST(StatementParser, flood)
{
    EXPECT_EQ(parsed<Flood>(u"flood 10000000000"_qs).bytes, 10'000'000'000);
    EXPECT_FALSE(parsed<Flood>(u"flood 1"_qs).oneLine);
    EXPECT_TRUE(parsed<Flood>(u"flood 5 in one line"_qs).oneLine);
}

TEST(StatementParser, expectText)
{
    const ExpectText plain = parsed<ExpectText>(u"expect \"quit\\n\""_qs);
    EXPECT_EQ(plain.bytes, QByteArray{"quit\n"});
    EXPECT_FALSE(plain.after.has_value());
    EXPECT_EQ(plain.within, Seconds{5});
    const ExpectText timed = parsed<ExpectText>(u"expect $c \"\\n\" after 0.9 within 2"_qs);
    EXPECT_EQ(timed.bytes, QByteArray{"W1\n"});
    EXPECT_EQ(timed.after, Seconds{0.9});
    EXPECT_EQ(timed.within, Seconds{2});
    EXPECT_EQ(parsed<ExpectText>(u"expect \"a\" after 10"_qs).within, Seconds{15});
    EXPECT_EQ(parsed<ExpectText>(u"expect koi8-r \"я\""_qs).bytes, QByteArray{"\xD1"});
    EXPECT_FALSE(parsed<ExpectText>(u"expect line within 60"_qs).bytes.has_value());
    EXPECT_EQ(parsed<ExpectText>(u"expect line within 60"_qs).within, Seconds{60});
}

TEST(StatementParser, otherChecks)
{
    EXPECT_EQ(parsed<ExpectNothing>(u"expect nothing for 2.5"_qs).duration, Seconds{2.5});
    EXPECT_EQ(parsed<ExpectClose>(u"expect close"_qs).within, Seconds{5});
    EXPECT_FALSE(parsed<ExpectClose>(u"expect close"_qs).ignoringText);
    EXPECT_EQ(parsed<ExpectClose>(u"expect close within 2 ignoring text"_qs).within, Seconds{2});
    EXPECT_TRUE(parsed<ExpectClose>(u"expect close within 2 ignoring text"_qs).ignoringText);
}

TEST(StatementParser, endsAndSilence)
{
    EXPECT_FALSE(parsed<StaySilent>(u"stay silent"_qs).duration.has_value());
    EXPECT_EQ(parsed<StaySilent>(u"stay silent for 30"_qs).duration, Seconds{30});
    parsed<Close>(u"close"_qs);
    parsed<HalfClose>(u"half-close"_qs);
    parsed<Reset>(u"reset"_qs);
    EXPECT_EQ(parsed<Repeat>(u"repeat 3"_qs).times, 3);
    EXPECT_FALSE(parsed<Repeat>(u"repeat forever"_qs).times.has_value());
}

TEST(StatementParser, saysWhatIsWrong)
{
    const QString sets = u"utf-8, latin1, latin2, windows-1250, windows-1251, windows-1252, koi8-r"_qs;
    const struct {
        QString line;
        QString error;
    } cases[]{
        {u"sned \"a\""_qs, u"unknown command \"sned\""_qs},
        {u"\"a\""_qs, u"a command expected instead of \"a\""_qs},
        {u"send"_qs, u"a text expected at the end of the line"_qs},
        {u"send \"\""_qs, u"the text is empty"_qs},
        {u"send klingon \"a\""_qs,
         u"a text or a character set expected instead of \"klingon\"; the character sets are "_qs + sets},
        {u"send latin1"_qs, u"a text expected at the end of the line"_qs},
        {u"send latin1 5"_qs, u"a text expected instead of \"5\""_qs},
        {u"send latin1 \"я\""_qs, u"latin1 has no character \"я\""_qs},
        {u"send \"a\" 5"_qs, u"nothing more expected instead of \"5\""_qs},
        {u"cut soon"_qs, u"seconds expected, a number from 0 to 86400 instead of \"soon\""_qs},
        {u"wait"_qs, u"seconds expected, a number from 0 to 86400 at the end of the line"_qs},
        {u"wait -1"_qs, u"seconds expected, a number from 0 to 86400 instead of \"-1\""_qs},
        {u"wait 86401"_qs, u"seconds expected, a number from 0 to 86400 instead of \"86401\""_qs},
        {u"wait 1.2.3"_qs, u"seconds expected, a number from 0 to 86400 instead of \"1.2.3\""_qs},
        {u"wait nan"_qs, u"seconds expected, a number from 0 to 86400 instead of \"nan\""_qs},
        {u"wait \"1\""_qs, u"seconds expected, a number from 0 to 86400 instead of \"1\""_qs},
        {u"wait 1 2"_qs, u"nothing more expected instead of \"2\""_qs},
        {u"spots 0 at 1"_qs,
         u"how many spots expected, a whole number from 1 to 9999999 instead of \"0\""_qs},
        {u"spots 10000000 at 1"_qs,
         u"how many spots expected, a whole number from 1 to 9999999 instead of \"10000000\""_qs},
        {u"spots 1.5 at 1"_qs,
         u"how many spots expected, a whole number from 1 to 9999999 instead of \"1.5\""_qs},
        {u"spots 5"_qs, u"\"at\" expected at the end of the line"_qs},
        {u"spots 5 at 0"_qs, u"lines a second expected, a number from 0.01 to 100000 instead of \"0\""_qs},
        {u"spots 5 as slow"_qs, u"\"fast as possible\" expected instead of \"slow\""_qs},
        {u"spots 5 at 1 length 74"_qs,
         u"characters expected, a whole number from 75 to 4096 instead of \"74\""_qs},
        {u"spots 5 at 1 length 4097"_qs,
         u"characters expected, a whole number from 75 to 4096 instead of \"4097\""_qs},
        {u"spots 5 at 1 plain stamped"_qs, u"nothing more expected instead of \"stamped\""_qs},
        {u"flood"_qs,
         u"how many bytes expected, a whole number from 1 to 10000000000 at the end of the line"_qs},
        {u"flood 10000000001"_qs,
         u"how many bytes expected, a whole number from 1 to 10000000000 instead of \"10000000001\""_qs},
        {u"flood 5 in two lines"_qs, u"\"one line\" expected instead of \"two\""_qs},
        {u"expect"_qs, u"a text expected at the end of the line"_qs},
        {u"expect nothing"_qs, u"\"for\" expected at the end of the line"_qs},
        {u"expect \"a\" after 2 within 2"_qs, u"\"within\" has to be later than \"after\""_qs},
        {u"expect \"a\" within 2 after 1"_qs, u"nothing more expected instead of \"after\""_qs},
        {u"expect close ignoring noise"_qs, u"\"text\" expected instead of \"noise\""_qs},
        {u"stay calm"_qs, u"\"silent\" expected instead of \"calm\""_qs},
        {u"stay silent for"_qs, u"seconds expected, a number from 0 to 86400 at the end of the line"_qs},
        {u"close now"_qs, u"nothing more expected instead of \"now\""_qs},
        {u"repeat"_qs,
         u"\"forever\" or how often expected, a whole number from 1 to 1000000 at the end of the line"_qs},
        {u"repeat 0"_qs,
         u"\"forever\" or how often expected, a whole number from 1 to 1000000 instead of \"0\""_qs},
    };
    for (const auto& c : cases)
        EXPECT_EQ(parseStatement(split(c.line).words, 1).error, c.error) << qPrintable(c.line);
}

} // namespace
} // namespace spotwell::simulator
