// SPDX-FileCopyrightText: 2026 the spotwell developers
// SPDX-License-Identifier: MIT

#include "tools/spotwell-simulator/Stations.h"

#include <array>
#include <cstddef>

namespace spotwell::simulator
{
namespace
{

struct Band {
    // Segments in kHz: Morse from `morse` over `morseWidth`, speech from `speech` over `speechWidth` (0 for
    // none), and the frequency where FT8 is worked.
    int morse;
    int morseWidth;
    int speech;
    int speechWidth;
    int ft8;
};

constexpr std::array bands{
    Band{1810, 28, 0, 0, 1840},         Band{3502, 50, 3690, 100, 3573},
    Band{7002, 35, 7080, 110, 7074},    Band{10103, 22, 0, 0, 10136},
    Band{14002, 58, 14130, 210, 14074}, Band{18069, 20, 18120, 45, 18100},
    Band{21002, 58, 21160, 280, 21074}, Band{24891, 18, 24935, 50, 24915},
    Band{28002, 58, 28310, 290, 28074}, Band{50080, 20, 50110, 90, 50313},
};

constexpr std::array prefixes{
    "K",  "W",  "N",  "VE", "JA", "JH", "DL",  "DK",  "F",   "G",   "GM",  "EA",  "I",  "IK",
    "OH", "SM", "LA", "OZ", "PA", "ON", "HB9", "OE",  "OK",  "SP",  "HA",  "YO",  "LZ", "SV",
    "UA", "UR", "PY", "LU", "CE", "ZS", "VK",  "ZL",  "BY",  "HL",  "VU",  "4X",  "9A", "S5",
    "TF", "EI", "CT", "5B", "A6", "HS", "YB",  "9M2", "KH6", "KP4", "VP9", "3B8", "FR",
};

constexpr std::array speechWords{"CQ",   "59 TNX QSO", "loud here",    "CQ DX",
                                 "up 5", "QRP 5 W",    "strong in EU", "TNX"};

} // namespace

int Stations::pick(int bound)
{
    // The standard's distributions differ between libraries; this does not.
    return static_cast<int>(random_() % static_cast<unsigned>(bound));
}

QByteArray Stations::call()
{
    QByteArray call = prefixes[static_cast<std::size_t>(pick(static_cast<int>(prefixes.size())))];
    if (call.size() < 3)
        call += static_cast<char>('0' + pick(10));
    for (int letters = 2 + pick(2); letters > 0; --letters)
        call += static_cast<char>('A' + pick(26));
    return call;
}

Activity Stations::activity()
{
    const Band& band = bands[static_cast<std::size_t>(pick(static_cast<int>(bands.size())))];
    const int kind = pick(band.speechWidth > 0 ? 4 : 3);
    if (kind == 0) {
        const QByteArray strength = digits(1 + pick(20), 2);
        return {band.ft8 * 10, "FT8",
                "FT8 -" + strength + " dB " + QByteArray::number(300 + pick(2400)) + " Hz"};
    }
    if (kind < 3) {
        const int frequency = band.morse * 10 + pick(band.morseWidth * 10);
        const QByteArray strength = QByteArray::number(3 + pick(40));
        return {frequency, "CW", "CW " + strength + " dB " + QByteArray::number(18 + pick(20)) + " WPM CQ"};
    }
    const int frequency = (band.speech + pick(band.speechWidth)) * 10;
    return {frequency, "SSB",
            speechWords[static_cast<std::size_t>(pick(static_cast<int>(speechWords.size())))]};
}

QByteArray digits(std::int64_t number, int width)
{
    return QByteArray::number(qlonglong{number}).rightJustified(width, '0');
}

QByteArray kilohertz(int frequency)
{
    return QByteArray::number(frequency / 10) + '.' + digits(frequency % 10, 1);
}

} // namespace spotwell::simulator
