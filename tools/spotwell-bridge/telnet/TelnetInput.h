// SPDX-FileCopyrightText: 2026 the spotwell developers
// SPDX-License-Identifier: MIT

#pragma once

#include <QByteArray>
#include <QByteArrayView>

#include <optional>

namespace spotwell::bridge
{

/// A line that a client has typed, without its end and without control characters.
struct InputLine {
    QByteArray text;
    /// What exceeded TelnetInput::longestLine is missing.
    bool tooLong = false;

    bool operator==(const InputLine&) const = default;
};

/// Makes lines of the bytes of a telnet client, however they are cut into chunks.
///
/// Option negotiation and all other commands (RFC 854, RFC 855) are swallowed. CR LF, CR NUL, a CR and a LF
/// by themselves each end a line once. Backspace and DEL take back a character, UTF-8 or ASCII; a tab counts
/// as a blank. Holds no more than one line of limited length.
class TelnetInput
{
public:
    /// In bytes.
    static constexpr qsizetype longestLine = 256;

    /// Takes bytes off the front of `bytes`, up to and including the next end of a line, and returns that
    /// line. Absent, with nothing left in `bytes`, when no line ends there.
    [[nodiscard]] std::optional<InputLine> takeLine(QByteArrayView& bytes);

private:
    enum class State { data, command, option, subnegotiation, subnegotiationCommand };

    bool isData(unsigned char byte);
    bool endsLine(unsigned char byte);
    void append(unsigned char byte);
    void eraseLast();

    State state_ = State::data;
    bool afterReturn_ = false;
    InputLine line_;
};

} // namespace spotwell::bridge
