// SPDX-FileCopyrightText: 2026 the spotwell developers
// SPDX-License-Identifier: MIT

#include "platform/linux/IcuTextConverter.h"

#include "tests/platform/PublishedTables.h"

#include <gtest/gtest.h>

#include <atomic>
#include <thread>

namespace spotwell
{

namespace
{

using namespace Qt::StringLiterals;

constexpr unsigned long everyEncoding[]{1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15, 21, 30};

QByteArray bytesOf(const char* hex)
{
    return QByteArray::fromHex(hex);
}

struct Row {
    const char* hex;
    std::optional<QString> text;
};

void expectRows(unsigned long encoding, std::initializer_list<Row> rows)
{
    const IcuTextConverter converter;
    for (const Row& row : rows)
        EXPECT_EQ(converter.convert(bytesOf(row.hex), encoding), row.text) << encoding << ": " << row.hex;
}

/// Each byte by itself, and all valid ones in one text, against a table; 0 where a byte is not defined.
void expectTable(unsigned long encoding, const std::array<char16_t, 256>& table)
{
    const IcuTextConverter converter;
    QByteArray validBytes;
    QString validText;
    for (unsigned byte = 0; byte < 256; ++byte) {
        const char single = static_cast<char>(byte);
        const bool isDefined = byte == 0 || table[byte] != 0;
        const std::optional<QString> expected =
            isDefined ? std::optional(QString(QChar(table[byte]))) : std::nullopt;
        EXPECT_EQ(converter.convert(QByteArrayView(&single, 1), encoding), expected)
            << encoding << ": " << byte;
        if (isDefined) {
            validBytes += single;
            validText += QChar(table[byte]);
        } else {
            EXPECT_EQ(converter.convert(QByteArray("a") + single + 'b', encoding), std::nullopt);
        }
    }
    EXPECT_EQ(converter.convert(validBytes, encoding), validText);
}

/// A whole table from ASCII and an upper half.
template <typename Upper>
std::array<char16_t, 256> aboveAscii(Upper upper)
{
    std::array<char16_t, 256> table{};
    for (unsigned byte = 0; byte < 256; ++byte)
        table[byte] = static_cast<char16_t>(byte < 128 ? byte : upper(byte));
    return table;
}

std::array<char16_t, 256> aboveAscii(const UpperHalfTable& upper)
{
    return aboveAscii([&upper](unsigned byte) { return upper[byte - 128]; });
}

TEST(IcuTextConverter, KnowsSeventeenEncodings)
{
    const IcuTextConverter converter;
    for (unsigned long encoding = 0; encoding <= 100; ++encoding) {
        const bool isKnown = std::find(std::begin(everyEncoding), std::end(everyEncoding), encoding) !=
                             std::end(everyEncoding);
        EXPECT_EQ(converter.convert(bytesOf("0041"), encoding).has_value(), isKnown) << encoding;
        EXPECT_EQ(converter.convert({}, encoding).has_value(), isKnown) << encoding;
    }
    EXPECT_EQ(converter.convert("A", ~0UL), std::nullopt);
}

TEST(IcuTextConverter, GivesAnEmptyTextForNoBytes)
{
    const IcuTextConverter converter;
    for (const unsigned long encoding : everyEncoding)
        EXPECT_EQ(converter.convert({}, encoding), QString()) << encoding;
}

TEST(IcuTextConverter, ReadsAsciiUnderItsMany)
{
    const QByteArray line =
        "DX de K1ABC:     14074.0  DL1XYZ       FT8  -12 dB                   0705Z\a\r\n";
    const IcuTextConverter converter;
    for (const unsigned long encoding :
         {1UL, 2UL, 3UL, 4UL, 5UL, 7UL, 8UL, 9UL, 11UL, 12UL, 13UL, 14UL, 15UL, 21UL, 30UL})
        EXPECT_EQ(converter.convert(line, encoding), QString::fromLatin1(line)) << encoding;
}

TEST(IcuTextConverter, KeepsEveryAsciiByte)
{
    QByteArray all;
    for (char byte = 0; byte < 0x7F; ++byte)
        all += byte;
    all += '\x7F';
    const IcuTextConverter converter;
    for (const unsigned long encoding :
         {1UL, 2UL, 3UL, 4UL, 5UL, 8UL, 9UL, 11UL, 12UL, 13UL, 14UL, 15UL, 30UL})
        EXPECT_EQ(converter.convert(all, encoding), QString::fromLatin1(all)) << encoding;
}

TEST(IcuTextConverter, ConvertsWithoutMemoryOfWhatWentBefore)
{
    const IcuTextConverter converter;
    // Cut inside a character, and inside a shifted state.
    EXPECT_EQ(converter.convert(bytesOf("82"), 8), std::nullopt);
    EXPECT_EQ(converter.convert("A", 8), u"A"_s);
    EXPECT_EQ(converter.convert(bytesOf("1B2442 2422"), 21), u"\u3042"_s);
    EXPECT_EQ(converter.convert(bytesOf("2422"), 21), u"$\""_s);
}

TEST(IcuTextConverter, ConvertsLongTexts)
{
    const IcuTextConverter converter;
    EXPECT_EQ(converter.convert(bytesOf("82A0").repeated(10000), 8), QString(10000, u'\u3042'));
    EXPECT_EQ(converter.convert(bytesOf("82A0").repeated(10000) + '\x82', 8), std::nullopt);
    EXPECT_EQ(converter.convert(QByteArray(16383, '\xE9'), 12), QString(16383, u'\u00E9'));
}

TEST(IcuTextConverter, ReadsAscii)
{
    expectTable(1, aboveAscii([](unsigned) { return 0; }));
}

TEST(IcuTextConverter, ReadsNextStep)
{
    expectTable(2, aboveAscii(nextStepTable));
    expectRows(2, {{"E9", u"\u00D8"_s},
                   {"AE", u"\uFB01"_s},
                   {"80", u"\u00A0"_s},
                   {"FD", u"\u00FF"_s},
                   {"A9", u"\u2019"_s},
                   {"FE", std::nullopt},
                   {"FF", std::nullopt},
                   {"41FE42", std::nullopt}});
}

TEST(IcuTextConverter, ReadsJapaneseEuc)
{
    expectRows(3, {{"C6FCCBDC", u"\u65E5\u672C"_s}, // two bytes
                   {"8EB1", u"\uFF71"_s},           // half-width katakana
                   {"8FB0A1", u"\u4E02"_s},         // three bytes
                   {"C6", std::nullopt},            // cut
                   {"8F", std::nullopt},
                   {"8FB0", std::nullopt},
                   {"C641", std::nullopt}, // bad second byte
                   {"80", std::nullopt},   // controls of no meaning here
                   {"9F", std::nullopt},
                   {"A0", std::nullopt},
                   {"FF", std::nullopt},
                   {"F5A1", std::nullopt}}); // for users' own characters
}

TEST(IcuTextConverter, ReadsUtf8)
{
    expectRows(4, {{"C3A9", u"\u00E9"_s},
                   {"E282AC", u"\u20AC"_s},
                   {"F09F9880", u"\U0001F600"_s},
                   {"00", QString(QChar(u'\0'))},
                   {"7F", u"\u007F"_s},
                   {"C280", u"\u0080"_s},
                   {"DFBF", u"\u07FF"_s},
                   {"E0A080", u"\u0800"_s},
                   {"ED9FBF", QString(QChar(0xD7FF))},
                   {"EE8080", QString(QChar(0xE000))},
                   {"EFBFBD", QString(QChar(0xFFFD))}, // the replacement character itself
                   {"EFBFBF", QString(QChar(0xFFFF))},
                   {"F48FBFBF", u"\U0010FFFF"_s},
                   {"EFBBBF41", QString(QChar(0xFEFF)) + u'A'}, // a byte order mark stays
                   {"EFBBBF", QString(QChar(0xFEFF))},
                   {"80", std::nullopt}, // continuation alone
                   {"BF", std::nullopt},
                   {"E9", std::nullopt}, // truncated
                   {"C3", std::nullopt},
                   {"41C3", std::nullopt},
                   {"E282", std::nullopt},
                   {"F09F98", std::nullopt},
                   {"C341", std::nullopt},
                   {"E28241", std::nullopt},
                   {"C0AF", std::nullopt}, // overlong
                   {"C180", std::nullopt},
                   {"E09FBF", std::nullopt},
                   {"F08FBFBF", std::nullopt},
                   {"EDA080", std::nullopt}, // surrogates
                   {"EDBFBF", std::nullopt},
                   {"EDA080EDB080", std::nullopt},
                   {"F4908080", std::nullopt}, // beyond the last character
                   {"F5808080", std::nullopt},
                   {"F888808080", std::nullopt},
                   {"FE", std::nullopt},
                   {"FF", std::nullopt}});
}

TEST(IcuTextConverter, FindsABadByteAnywhereInUtf8)
{
    const IcuTextConverter converter;
    for (qsizetype size = 1; size <= 80; ++size) {
        for (qsizetype at = 0; at < size; ++at) {
            QByteArray bytes(size, 'a');
            bytes[at] = '\xE9';
            EXPECT_EQ(converter.convert(bytes, 4), std::nullopt) << at << " of " << size;
        }
    }
}

TEST(IcuTextConverter, ReadsIsoLatin1)
{
    expectTable(5, aboveAscii([](unsigned byte) { return byte; }));
}

TEST(IcuTextConverter, ReadsSymbol)
{
    expectTable(6, symbolTable);
    expectRows(6, {{"61", u"\u03B1"_s},
                   {"44", u"\u0394"_s},
                   {"57", u"\u03A9"_s},
                   {"6D", u"\u03BC"_s},
                   {"22", u"\u2200"_s},
                   {"A0", u"\u20AC"_s},
                   {"E6", QString(QChar(0xF8EB))},
                   {"FE", QString(QChar(0xF8FE))},
                   {"303132", u"012"_s},
                   {"0D0A", u"\r\n"_s},
                   {"20", u" "_s},
                   {"7F", std::nullopt},
                   {"80", std::nullopt},
                   {"9F", std::nullopt},
                   {"F0", std::nullopt},
                   {"FF", std::nullopt},
                   {"61F061", std::nullopt}});
}

TEST(IcuTextConverter, ReadsAsciiWithEscapes)
{
    const auto expectText = [](const char* bytes, const std::optional<QString>& text) {
        EXPECT_EQ(IcuTextConverter().convert(bytes, 7), text) << bytes;
    };
    expectText("plain", u"plain"_s);
    expectText("\\u20AC \\u20ac", u"\u20AC \u20AC"_s);
    expectText("\\351t\\351", u"\u00E9t\u00E9"_s);
    expectText("\\377\\101", u"\u00FFA"_s);
    expectText("a\\\\b", u"a\\b"_s);
    expectText("\\\\u20AC", u"\\u20AC"_s);
    expectText("\\ud83d\\ude00", u"\U0001F600"_s);
    for (const char* invalid :
         {"\\",      "a\\",     "\\n",     "\\x41",   "\\u",      "\\u20A",         "\\u20AG",
          "\\U20AC", "\\u 0AC", "\\400",   "\\777",   "\\8",      "\\18",           "\\35",
          "\\35x",   "\\ 51",   "\\ud83d", "\\ude00", "\\ud83dx", "\\ude00\\ud83d", "\xE9",
          "a\x80"})
        expectText(invalid, std::nullopt);
}

TEST(IcuTextConverter, ReadsShiftJis)
{
    expectRows(8, {{"93FA967B", u"\u65E5\u672C"_s},
                   {"82A0", u"\u3042"_s},
                   {"B1", u"\uFF71"_s}, // half-width katakana
                   {"5C7E", u"\\~"_s},
                   {"1A1C7F", QString(u"\u001A\u001C\u007F"_s)},
                   {"82", std::nullopt}, // cut
                   {"4182", std::nullopt},
                   {"8220", std::nullopt}, // bad second byte
                   {"82FF", std::nullopt},
                   {"80", std::nullopt},
                   {"A0", std::nullopt},
                   {"FD", std::nullopt},
                   {"FE", std::nullopt},
                   {"FF", std::nullopt},
                   {"F040", std::nullopt}}); // for users' own characters
}

TEST(IcuTextConverter, ReadsIsoLatin2)
{
    expectTable(9, aboveAscii(isoLatin2Table));
}

TEST(IcuTextConverter, ReadsUtf16)
{
    expectRows(10, {{"00410042", u"AB"_s}, // big-endian unless told otherwise
                    {"FEFF0041", u"A"_s},
                    {"FFFE4100", u"A"_s},
                    {"FEFF", u""_s},
                    {"FFFE", u""_s},
                    {"FEFFFEFF", QString(QChar(0xFEFF))}, // only the first is a byte order mark
                    {"0041FEFF", u'A' + QString(QChar(0xFEFF))},
                    {"D83DDE00", u"\U0001F600"_s},
                    {"FFFE3DD800DE", u"\U0001F600"_s},
                    {"00", std::nullopt}, // odd
                    {"004100", std::nullopt},
                    {"FEFF00", std::nullopt},
                    {"D83D", std::nullopt}, // half a pair
                    {"DE00", std::nullopt},
                    {"D83D0041", std::nullopt},
                    {"0041DE00", std::nullopt},
                    {"D83DD83DDE00", std::nullopt},
                    {"DE00D83D", std::nullopt}});
}

TEST(IcuTextConverter, ReadsWindowsCodePages)
{
    expectTable(11, aboveAscii(windows1251Table));
    expectTable(12, aboveAscii(windows1252Table));
    expectTable(13, aboveAscii(windows1253Table));
    expectTable(14, aboveAscii(windows1254Table));
    expectTable(15, aboveAscii(windows1250Table));
}

TEST(IcuTextConverter, ReadsIso2022Japanese)
{
    expectRows(21, {{"1B24424B5C1B2842", u"\u672C"_s},
                    {"1B2440 2422 1B284A 41 1B2842 42", u"\u3042AB"_s},
                    {"414243", u"ABC"_s},
                    {"1B24424B", std::nullopt},           // cut inside a character
                    {"1B24", std::nullopt},               // cut inside an escape
                    {"1B2458", std::nullopt},             // unknown escape
                    {"1B2443 4B5C 1B2842", std::nullopt}, // Korean, of no place here
                    {"80", std::nullopt},
                    {"B1", std::nullopt},
                    {"93FA", std::nullopt}});
}

TEST(IcuTextConverter, ReadsMacOsRoman)
{
    expectTable(30, aboveAscii(macOsRomanTable));
    expectRows(30, {{"F0", QString(QChar(0xF8FF))}, {"DB", u"\u20AC"_s}, {"8E", u"\u00E9"_s}});
}

TEST(IcuTextConverter, IsUsableFromManyThreadsAtOnce)
{
    const IcuTextConverter converter;
    std::atomic<int> wrong = 0;
    std::vector<std::thread> threads;
    for (int i = 0; i < 4; ++i) {
        threads.emplace_back([&] {
            for (int round = 0; round < 50; ++round) {
                if (converter.convert("\x93\xFA", 8) != u"\u65E5"_s ||
                    converter.convert("\xE9", 12) != u"\u00E9"_s || converter.convert("\x81", 12) ||
                    converter.detect("\xC3\xA9t\xC3\xA9").text != u"\u00E9t\u00E9"_s)
                    ++wrong;
            }
        });
    }
    for (std::thread& thread : threads)
        thread.join();
    EXPECT_EQ(wrong, 0);
}

} // namespace

} // namespace spotwell
