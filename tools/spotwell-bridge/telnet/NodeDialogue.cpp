// SPDX-FileCopyrightText: 2026 the spotwell developers
// SPDX-License-Identifier: MIT

#include "tools/spotwell-bridge/telnet/NodeDialogue.h"

#include "tools/spotwell-bridge/telnet/NodeTexts.h"

#include <algorithm>

namespace spotwell::bridge
{
namespace
{

bool isDigit(char character)
{
    return character >= '0' && character <= '9';
}

bool isCapital(char character)
{
    return character >= 'A' && character <= 'Z';
}

/// The number of spots that the text behind sh/dx asks for. Absent when it does not say a number above 0.
std::optional<std::size_t> spotCount(const QByteArray& text)
{
    if (text.isEmpty())
        return NodeDialogue::usualSpots;
    if (!std::all_of(text.cbegin(), text.cend(), isDigit))
        return std::nullopt;
    bool fits = false;
    const qulonglong number = text.toULongLong(&fits);
    if (fits && number == 0)
        return std::nullopt;
    return fits ? std::min<std::size_t>(number, NodeDialogue::mostSpots) : NodeDialogue::mostSpots;
}

/// What stands behind the name of the command that shows spots, or absent when `command`, which is in small
/// letters and has single blanks, is another one.
std::optional<QByteArray> spotArgument(const QByteArray& command)
{
    for (const QByteArrayView name : {QByteArrayView("sh/dx"), QByteArrayView("show/dx")}) {
        if (command == name)
            return QByteArray{};
        if (command.startsWith(name) && (command[name.size()] == ' ' || command[name.size()] == '/')) {
            const QByteArray argument = command.sliced(name.size() + 1);
            // Nothing behind the stroke is no number.
            return argument.isEmpty() ? QByteArray("/") : argument;
        }
    }
    return std::nullopt;
}

bool isEnd(const QByteArray& command)
{
    return command == "bye" || command == "b" || command == "quit" || command == "q" || command == "exit";
}

} // namespace

std::optional<QByteArray> callsignOf(const QByteArray& text)
{
    constexpr qsizetype shortest = 3;
    constexpr qsizetype longest = 15;
    const QByteArray callsign = text.trimmed().toUpper();
    const bool valid = callsign.size() >= shortest && callsign.size() <= longest &&
                       std::any_of(callsign.cbegin(), callsign.cend(), isCapital) &&
                       std::any_of(callsign.cbegin(), callsign.cend(), isDigit) &&
                       std::all_of(callsign.cbegin(), callsign.cend(),
                                   [](char c) { return isCapital(c) || isDigit(c) || c == '/' || c == '-'; });
    return valid ? std::optional{callsign} : std::nullopt;
}

QByteArray NodeDialogue::opening()
{
    return callsignQuestion();
}

Answer NodeDialogue::answer(const InputLine& line, TimePoint now)
{
    if (!isLoggedIn())
        return logIn(line, now);
    if (line.tooLong)
        return {{lineTooLong(), prompt(callsign_, now)}};
    return obey(line.text.simplified(), now);
}

QByteArray NodeDialogue::goodbye() const
{
    // The question has not ended its line.
    return isLoggedIn() ? farewell() : "\r\n" + farewell();
}

Answer NodeDialogue::logIn(const InputLine& line, TimePoint now)
{
    if (!line.tooLong && line.text.trimmed().isEmpty())
        return {{callsignQuestion()}};
    const std::optional<QByteArray> callsign = line.tooLong ? std::nullopt : callsignOf(line.text);
    if (callsign) {
        callsign_ = *callsign;
        return {{greeting(callsign_), prompt(callsign_, now)}};
    }
    ++failures_;
    if (failures_ == mostFailures)
        return {{notACallsign(), farewell()}, true};
    return {{notACallsign(), callsignQuestion()}};
}

Answer NodeDialogue::obey(const QByteArray& command, TimePoint now) const
{
    const QByteArray name = command.toLower();
    if (isEnd(name))
        return {{farewell()}, true};
    Answer answer;
    if (const std::optional<QByteArray> argument = spotArgument(name))
        answer.pieces = spots(*argument);
    else if (!command.isEmpty())
        answer.pieces = {unknownCommand(command.split(' ').constFirst())};
    answer.pieces.append(prompt(callsign_, now));
    return answer;
}

QByteArrayList NodeDialogue::spots(const QByteArray& count) const
{
    const std::optional<std::size_t> wanted = spotCount(count);
    if (!wanted)
        return {badSpotCount()};
    const std::uint64_t present = lines_.end() - lines_.begin();
    if (present == 0)
        return {noSpotsYet()};
    QByteArrayList pieces;
    for (std::uint64_t i = lines_.end() - std::min<std::uint64_t>(*wanted, present); i < lines_.end(); ++i)
        pieces.append(lines_.at(i));
    return pieces;
}

} // namespace spotwell::bridge
