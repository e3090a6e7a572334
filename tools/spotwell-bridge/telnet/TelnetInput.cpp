// SPDX-FileCopyrightText: 2026 the spotwell developers
// SPDX-License-Identifier: MIT

#include "tools/spotwell-bridge/telnet/TelnetInput.h"

#include <utility>

namespace spotwell::bridge
{
namespace
{

// RFC 854, "TELNET command structure".
constexpr unsigned char endOfSubnegotiation = 240;
constexpr unsigned char subnegotiationBegins = 250;
constexpr unsigned char will = 251;
constexpr unsigned char dont = 254;
constexpr unsigned char interpretAsCommand = 255;

constexpr unsigned char firstPrintable = 0x20;
constexpr unsigned char deleteCharacter = 0x7F;

bool continuesCharacter(char byte)
{
    return (static_cast<unsigned char>(byte) & 0xC0U) == 0x80U;
}

} // namespace

std::optional<InputLine> TelnetInput::takeLine(QByteArrayView& bytes)
{
    while (!bytes.isEmpty()) {
        const auto byte = static_cast<unsigned char>(bytes.front());
        bytes = bytes.sliced(1);
        if (isData(byte) && endsLine(byte))
            return std::exchange(line_, {});
    }
    return std::nullopt;
}

bool TelnetInput::isData(unsigned char byte)
{
    switch (state_) {
    case State::data:
        if (byte != interpretAsCommand)
            return true;
        state_ = State::command;
        return false;
    case State::command:
        if (byte == subnegotiationBegins)
            state_ = State::subnegotiation;
        else if (byte >= will && byte <= dont)
            state_ = State::option;
        else
            state_ = State::data;
        // Sent twice, the command byte stands for itself.
        return byte == interpretAsCommand;
    case State::option:
        state_ = State::data;
        return false;
    case State::subnegotiation:
        if (byte == interpretAsCommand)
            state_ = State::subnegotiationCommand;
        return false;
    case State::subnegotiationCommand:
        state_ = byte == endOfSubnegotiation ? State::data : State::subnegotiation;
        return false;
    }
    return false;
}

bool TelnetInput::endsLine(unsigned char byte)
{
    const bool afterReturn = std::exchange(afterReturn_, byte == '\r');
    switch (byte) {
    case '\r':
        return true;
    case '\n':
        return !afterReturn;
    case '\b':
    case deleteCharacter:
        eraseLast();
        return false;
    case '\t':
        append(' ');
        return false;
    default:
        if (byte >= firstPrintable)
            append(byte);
        return false;
    }
}

void TelnetInput::append(unsigned char byte)
{
    if (line_.text.size() < longestLine)
        line_.text.append(static_cast<char>(byte));
    else
        line_.tooLong = true;
}

void TelnetInput::eraseLast()
{
    while (!line_.text.isEmpty() && continuesCharacter(line_.text.back()))
        line_.text.chop(1);
    line_.text.chop(1);
}

} // namespace spotwell::bridge
