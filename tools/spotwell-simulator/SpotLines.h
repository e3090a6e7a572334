// SPDX-FileCopyrightText: 2026 the spotwell developers
// SPDX-License-Identifier: MIT

#pragma once

#include "platform/Time.h"
#include "tools/spotwell-simulator/Stations.h"

#include <QByteArray>

#include <cstdint>

namespace spotwell::simulator
{

/// How a generated spot line looks.
struct SpotFormat {
    /// What its comment column holds.
    enum class Comment {
        numbered, ///< `#` and the line's number, then words
        plain,    ///< words only
        stamped,  ///< `#` and the line's number, then the time of sending in microseconds
    };

    static constexpr int shortest = 75;
    static constexpr int longest = 4096;

    /// Characters without the line end, `shortest` to `longest`.
    int length = shortest;
    Comment comment = Comment::numbered;

    bool operator==(const SpotFormat&) const = default;
};

/// Generates spot lines in the column layout common to cluster nodes, with varied calls, bands and comments.
/// The same lines come in every run, but for the times in them.
///
/// Columns, counted from 1: 1 "DX de ", 7 spotter and colon, to 24 the frequency in kHz (flush right), 27 the
/// station, 40 the comment (30 characters), 71 the time of day in UTC as "1428Z"; longer lines go on with a
/// blank and a locator. A numbered comment is `#` and seven digits; a stamped one goes on in column 49 with
/// sixteen digits, the microseconds since 1970-01-01T00:00:00Z.
class SpotLines
{
public:
    /// The highest number that the comment column has room for.
    static constexpr int mostLines = 9'999'999;

    /// The next line, "\r\n" included, as sent at `now`. Numbers count from 1 and begin anew after
    /// `mostLines`.
    QByteArray next(const SpotFormat& format, TimePoint now);

private:
    QByteArray spotter();

    Stations stations_{20270203};
    int number_ = 0;
};

/// Filler line number `number` of a flood: 78 characters and "\r\n", no spot and no prompt.
QByteArray floodLine(std::int64_t number);

} // namespace spotwell::simulator
