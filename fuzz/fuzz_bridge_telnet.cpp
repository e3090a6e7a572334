// SPDX-FileCopyrightText: 2026 the spotwell developers
// SPDX-License-Identifier: MIT

// What a telnet client sends to spotwell-bridge's node: bytes to lines, lines to answers, in any chunks.

#include "fuzz/Check.h"
#include "tools/spotwell-bridge/telnet/NodeDialogue.h"
#include "tools/spotwell-bridge/telnet/SentLines.h"
#include "tools/spotwell-bridge/telnet/TelnetInput.h"

#include <QByteArray>

#include <algorithm>
#include <vector>

namespace
{

using namespace spotwell;
using namespace spotwell::bridge;

constexpr TimePoint now = std::chrono::sys_days{std::chrono::year{2026} / 11 / 21};

/// More lines than sh/dx shows.
SentLines sentLines()
{
    SentLines lines{NodeLimits{}};
    for (int i = 0; i < 150; ++i)
        lines.add("DX de N0TEST: " + QByteArray::number(i) + "\r\n");
    return lines;
}

/// The chunks' lengths come from `lengths`, over and over; where there are none it is one chunk.
std::vector<InputLine> linesOf(QByteArrayView bytes, QByteArrayView lengths)
{
    TelnetInput input;
    std::vector<InputLine> lines;
    for (qsizetype i = 0; !bytes.isEmpty(); ++i) {
        const qsizetype wanted = lengths.isEmpty() ? bytes.size() : 1 + (lengths[i % lengths.size()] & 0x0F);
        QByteArrayView chunk = bytes.first(std::min(wanted, bytes.size()));
        bytes = bytes.sliced(chunk.size());
        while (!chunk.isEmpty()) {
            const qsizetype before = chunk.size();
            if (auto line = input.takeLine(chunk))
                lines.push_back(*std::move(line));
            else
                check(chunk.isEmpty(), "what ends no line is taken whole");
            check(chunk.size() < before, "something is taken");
        }
    }
    return lines;
}

void checkLine(const InputLine& line)
{
    check(line.text.size() <= TelnetInput::longestLine, "a line is bounded");
    check(std::none_of(line.text.cbegin(), line.text.cend(),
                       [](char c) { return static_cast<unsigned char>(c) < 0x20 || c == 0x7F; }),
          "no control characters are left");
}

void checkAnswer(const Answer& answer)
{
    check(answer.pieces.size() <= static_cast<qsizetype>(NodeDialogue::mostSpots) + 1,
          "an answer is bounded");
    check(!answer.pieces.isEmpty(), "every line has an answer");
    const QByteArray text = answer.pieces.join();
    check(text.size() < 10'000, "an answer's text is bounded");
    check(text.endsWith("\r\n") || (text.endsWith("login: ") && !answer.ends), "ends its line or asks");
    check(text.count('\r') == text.count('\n') && text.count("\r\n") == text.count('\n'),
          "lines end in CR LF");
    check(std::all_of(text.cbegin(), text.cend(),
                      [](char c) { return (c >= 0x20 && c < 0x7F) || c == '\r' || c == '\n'; }),
          "nothing but plain characters is said");
}

void checkAnswers(NodeDialogue& dialogue, const std::vector<InputLine>& lines)
{
    for (const InputLine& line : lines) {
        const Answer answer = dialogue.answer(line, now);
        checkAnswer(answer);
        if (answer.ends)
            return;
    }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const unsigned char* data, std::size_t size)
{
    static const SentLines sent = sentLines();
    const QByteArrayView all(data, static_cast<qsizetype>(size));
    const QByteArrayView lengths = all.first(std::min<qsizetype>(4, all.size()));
    const QByteArrayView bytes = all.sliced(lengths.size());

    const std::vector<InputLine> lines = linesOf(bytes, {});
    check(lines == linesOf(bytes, lengths), "chunks change nothing");
    for (const InputLine& line : lines)
        checkLine(line);
    // Once from the login on and once logged in, for few inputs hold a callsign.
    NodeDialogue dialogue(sent);
    checkAnswers(dialogue, lines);
    NodeDialogue loggedIn(sent);
    (void)loggedIn.answer({"N0CALL"}, now);
    checkAnswers(loggedIn, lines);
    return 0;
}
