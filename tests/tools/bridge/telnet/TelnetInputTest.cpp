// SPDX-FileCopyrightText: 2026 the spotwell developers
// SPDX-License-Identifier: MIT

#include "tools/spotwell-bridge/telnet/TelnetInput.h"

#include "tests/tools/bridge/telnet/Bytes.h"

#include <gtest/gtest.h>

#include <vector>

namespace spotwell::bridge
{

static void PrintTo(const InputLine& line, std::ostream* stream)
{
    ::PrintTo(line.text, stream);
    *stream << (line.tooLong ? " (too long)" : "");
}

namespace
{

/// The lines in `bytes`, handed over in chunks of at most `chunk` bytes, and what is left without an end.
std::vector<InputLine> linesOf(const QByteArray& bytes, qsizetype chunk)
{
    TelnetInput input;
    std::vector<InputLine> lines;
    for (qsizetype at = 0; at < bytes.size(); at += chunk) {
        QByteArrayView view = QByteArrayView(bytes).sliced(at, std::min(chunk, bytes.size() - at));
        while (!view.isEmpty()) {
            if (const auto line = input.takeLine(view))
                lines.push_back(*line);
            else
                EXPECT_TRUE(view.isEmpty());
        }
    }
    return lines;
}

struct InputCase {
    QByteArray bytes;
    std::vector<QByteArray> lines;
};

std::vector<InputCase> inputCases()
{
    const auto bytes = [](std::initializer_list<int> values) {
        QByteArray made;
        for (const int value : values)
            made.append(static_cast<char>(value));
        return made;
    };
    return {
        // Line ends.
        {"a\r\nb\r\n", {"a", "b"}},
        {"a\nb\n", {"a", "b"}},
        {"a\rb\r", {"a", "b"}},
        {"a\r" + bytes({0}) + "b\r" + bytes({0}), {"a", "b"}},
        {"\r\n\r\n", {"", ""}},
        {"\n\n", {"", ""}},
        {"\r\r", {"", ""}},
        {"\n\r", {"", ""}},
        {"\n\r\n", {"", ""}},
        {"a\r\n\nb\n", {"a", "", "b"}},
        {"a\r" + bytes({0}) + "\nb\n", {"a", "", "b"}},
        {"no end", {}},
        // Control characters.
        {"a" + bytes({0, 1, 7, 11, 12, 27, 31}) + "b\n", {"ab"}},
        {"a\tb\n", {"a b"}},
        {"sh/dy\bx\n", {"sh/dx"}},
        {"sh/dy\x7Fx\n", {"sh/dx"}},
        {"\b\x7F"
         "a\b\b\bb\n",
         {"b"}},
        {QByteArray("caf\xC3\xA9\b\be\n"), {"cae"}},
        {QByteArray("\xF0\x9F\x93\xA1\b\n"), {""}},
        {QByteArray("\xA9\xA9\b\n"), {""}},
        {QByteArray("caf\xC3\xA9\n"), {QByteArray("caf\xC3\xA9")}},
        // Telnet commands: negotiation, two-byte commands, subnegotiations with anything inside.
        {bytes({255, 251, 1}) + "a\n", {"a"}},
        {"a" + bytes({255, 252, 10}) + "b\n", {"ab"}},
        {"a" + bytes({255, 253, 13}) + "b\n", {"ab"}},
        {"a" + bytes({255, 254, 255}) + "b\n", {"ab"}},
        {"a" + bytes({255, 241}) + "b\n", {"ab"}},
        {"a" + bytes({255, 244, 255, 240, 255, 249}) + "b\n", {"ab"}},
        {"a" + bytes({255, 250, 24, 0}) + "xterm\r\n" + bytes({255, 240}) + "b\n", {"ab"}},
        {"a" + bytes({255, 250, 31, 0, 255, 255, 0, 24, 255, 240}) + "b\n", {"ab"}},
        {"a" + bytes({255, 250, 255, 255, 240, 255, 240}) + "b\n", {"ab"}},
        {"a" + bytes({255, 250, 1, 255, 250, 255, 240}) + "b\n", {"ab"}},
        {"a" + bytes({255, 255}) + "b\n", {"a" + bytes({255}) + "b"}},
        {"a\r" + bytes({255, 241}) + "\nb\n", {"a", "b"}},
        {"a\r" + bytes({255, 251, 10}) + "\nb\n", {"a", "b"}},
    };
}

TEST(TelnetInput, makesLinesHoweverTheChunksCut)
{
    for (const InputCase& expected : inputCases()) {
        std::vector<InputLine> lines;
        for (const QByteArray& text : expected.lines)
            lines.push_back({text});
        for (qsizetype chunk = 1; chunk <= expected.bytes.size(); ++chunk)
            EXPECT_EQ(linesOf(expected.bytes, chunk), lines)
                << testing::PrintToString(expected.bytes) << " in chunks of " << chunk;
    }
}

TEST(TelnetInput, keepsALineOfTheLongestLengthWhole)
{
    const QByteArray longest(256, 'x');
    EXPECT_EQ(linesOf(longest + "\nnext\n", 100), (std::vector<InputLine>{{longest}, {"next"}}));
}

TEST(TelnetInput, tellsThatALineIsTooLong)
{
    const QByteArray longest(256, 'x');
    EXPECT_EQ(linesOf(longest + "y\nnext\n", 100), (std::vector<InputLine>{{longest, true}, {"next"}}));
    // What is missing cannot be taken back.
    EXPECT_EQ(linesOf(longest + "y\b\b\n", 100), (std::vector<InputLine>{{longest.left(254), true}}));
}

TEST(TelnetInput, holdsNoMoreThanALine)
{
    TelnetInput input;
    const QByteArray megabyte(1024 * 1024, 'x');
    for (int i = 0; i < 10; ++i) {
        QByteArrayView view(megabyte);
        EXPECT_FALSE(input.takeLine(view));
    }
    QByteArrayView end("\n");
    const auto line = input.takeLine(end);
    ASSERT_TRUE(line);
    EXPECT_EQ(line->text.size(), 256);
    EXPECT_TRUE(line->tooLong);
}

} // namespace
} // namespace spotwell::bridge
