// SPDX-FileCopyrightText: 2026 the spotwell developers
// SPDX-License-Identifier: MIT

#pragma once

#include "platform/Time.h"
#include "tools/spotwell-simulator/Stations.h"

#include <QByteArray>

#include <array>
#include <deque>

namespace spotwell::simulator
{

/// The web services whose answers can be generated.
enum class WebFeed { pota, dxsummit, wsprnet };

/// What the web services list: spots of the present time, newest first, of which some are new at each answer
/// while the oldest leave. Rows that stay are the same, byte for byte. But for the times in them the same
/// rows come in every run.
class WebFeeds
{
public:
    /// Rows of an answer at most.
    static constexpr int mostRows = 10'000;

    /// The body of the next answer: `rows` rows, of which `fresh` are new since the answer before; the first
    /// one reaches half an hour back.
    QByteArray next(WebFeed feed, int rows, int fresh, TimePoint now);

private:
    struct List {
        std::deque<QByteArray> rows;
        TimePoint at;
        qint64 id;
    };

    QByteArray row(WebFeed feed, TimePoint time);
    QByteArray potaRow(TimePoint time);
    QByteArray dxsummitRow(TimePoint time);
    QByteArray wsprnetRow(TimePoint time);
    /// Degrees from -`most` to `most`, with four decimals.
    QByteArray position(int most);
    QByteArray locator();

    Stations stations_{20270401};
    std::array<List, 3> lists_{{{{}, {}, 31'000'000}, {{}, {}, 52'000'000}, {{}, {}, 0}}};
};

} // namespace spotwell::simulator
