// SPDX-FileCopyrightText: 2026 the spotwell developers
// SPDX-License-Identifier: MIT

#include "tools/spotwell-bridge/telnet/NodeTexts.h"

#include <algorithm>
#include <array>
#include <cstdio>

namespace spotwell::bridge
{
namespace
{

/// The longest word that is told back, in characters.
constexpr qsizetype longestWord = 20;

char tellable(char character)
{
    const bool plain = (character >= '0' && character <= '9') || (character >= 'A' && character <= 'Z') ||
                       (character >= 'a' && character <= 'z') || character == '/' || character == '-';
    return plain ? character : '?';
}

QByteArray toldBack(const QByteArray& word)
{
    QByteArray told = word.left(longestWord);
    std::transform(told.cbegin(), told.cend(), told.begin(), tellable);
    return word.size() > longestWord ? told + "..." : told;
}

} // namespace

QByteArray callsignQuestion()
{
    return "login: ";
}

QByteArray notACallsign()
{
    return "Sorry, that is not a callsign.\r\n";
}

QByteArray greeting(const QByteArray& callsign)
{
    return "\r\nHello " + callsign +
           ", this is spotwell-bridge " SPOTWELL_VERSION ".\r\n"
           "Every spot that spotwell finds is shown here.\r\n"
           "Commands are SH/DX [number of spots] and BYE.\r\n";
}

QByteArray prompt(const QByteArray& callsign, TimePoint now)
{
    static constexpr std::array<const char*, 12> months{"Jan", "Feb", "Mar", "Apr", "May", "Jun",
                                                        "Jul", "Aug", "Sep", "Oct", "Nov", "Dec"};
    const auto day = std::chrono::floor<std::chrono::days>(now);
    const std::chrono::year_month_day date{day};
    const std::chrono::hh_mm_ss time{now - day};
    std::array<char, 40> text{};
    (void)std::snprintf(text.data(), text.size(), "%02u-%s-%04d %02u%02uZ", static_cast<unsigned>(date.day()),
                        months[static_cast<unsigned>(date.month()) - 1], static_cast<int>(date.year()),
                        static_cast<unsigned>(time.hours().count()),
                        static_cast<unsigned>(time.minutes().count()));
    return callsign + " de SPOTWELL " + text.data() + " spotwell >\r\n";
}

QByteArray unknownCommand(const QByteArray& word)
{
    return "Sorry, \"" + toldBack(word) + "\" is no command here, only SH/DX and BYE are.\r\n";
}

QByteArray badSpotCount()
{
    return "Sorry, SH/DX takes a number of spots from 1 to 100, or none.\r\n";
}

QByteArray noSpotsYet()
{
    return "There are no spots yet.\r\n";
}

QByteArray lineTooLong()
{
    return "Sorry, that line is too long.\r\n";
}

QByteArray spotsLeftOut(std::uint64_t count)
{
    if (count == 1)
        return "SPOTWELL: 1 spot was left out, for it was not taken in time.\r\n";
    return "SPOTWELL: " + QByteArray::number(static_cast<qulonglong>(count)) +
           " spots were left out, for they were not taken in time.\r\n";
}

QByteArray noRoom()
{
    return "Sorry, there is no room for a further client. 73 de SPOTWELL\r\n";
}

QByteArray farewell()
{
    return "73 de SPOTWELL\r\n";
}

} // namespace spotwell::bridge
