// SPDX-FileCopyrightText: 2026 the spotwell developers
// SPDX-License-Identifier: MIT

#pragma once

#include <QByteArray>

#include <cstdint>
#include <random>

namespace spotwell::simulator
{

/// What somebody is heard doing.
struct Activity {
    /// In units of 100 Hz.
    int frequency;
    /// "CW", "SSB" or "FT8".
    QByteArray mode;
    /// What a spotter may say of it, the mode in front but for speech.
    QByteArray words;
};

/// Invents stations and what they do on the bands. The same come in every run.
class Stations
{
public:
    explicit Stations(unsigned seed) : random_(seed) {}

    /// A number from 0 up to but not including `bound`.
    int pick(int bound);
    /// A callsign.
    QByteArray call();
    Activity activity();

private:
    std::minstd_rand random_;
};

/// `number` in at least `width` digits.
QByteArray digits(std::int64_t number, int width);
/// A frequency in units of 100 Hz as kHz with one decimal.
QByteArray kilohertz(int frequency);

} // namespace spotwell::simulator
