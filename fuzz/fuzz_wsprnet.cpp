// SPDX-FileCopyrightText: 2026 the spotwell developers
// SPDX-License-Identifier: MIT

// The pages of WSPRnet, also at the program's end.

#include "feeds/WsprnetFeed.h"
#include "fuzz/FeedChecks.h"
#include "fuzz/Input.h"
#include "tests/fakes/FakeServices.h"
#include "tests/fakes/FakeTime.h"

namespace
{

using namespace spotwell;

constexpr QLatin1String source("WSPRnet");

/// A feed that has heard nothing yet, or all that went before.
struct HeardPages {
    FakeFeedHost host;
    FakeClock clock;
    FakeLog log;
    WsprnetFeed feed{host, clock, log};

    /// What it forwards of `page`.
    const FakeFeedHost& hear(const QByteArray& page)
    {
        host.clear();
        log.lines.clear();
        feed.parseWsprnetData(page);
        checkAnswer(host, source, page.size());
        check(log.lines.size() == 1, "a line of the log for a page");
        return host;
    }
};

/// The calls of `page` from its last row to its first: each stands somewhere in a row of its own.
void checkRows(const FakeFeedHost& host, const QByteArray& page)
{
    QByteArrayList rows = page.split('\n');
    rows.removeIf([](const QByteArray& row) { return !row.startsWith("<tr>"); });
    auto row = rows.crbegin();
    for (const Spot& spot : host.spots) {
        row = std::find_if(row, rows.crend(),
                           [&](const QByteArray& each) { return each.contains(spot.call->toLatin1()); });
        check(row != rows.crend(), "a row for each spot, from the last to the first");
        ++row;
    }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const unsigned char* data, std::size_t size)
{
    Input input(data, size);
    const unsigned options = input.byte();
    const QByteArray page = input.all().toByteArray();

    HeardPages once;
    if ((options & 2U) != 0)
        once.host.endsAtPause = 1;
    const FakeFeedHost& host = once.hear(page);
    for (const Spot& spot : host.spots) {
        check(spot.call && !spot.call->isEmpty() && spot.dxde && !spot.dxde->isEmpty(),
              "both calls are there");
        check(!spot.timestamp || *spot.timestamp - once.clock.now() < std::chrono::hours{24},
              "nothing to come");
    }
    checkRows(host, page);
    check(once.feed.remembered().size() == static_cast<qsizetype>(host.spots.size()),
          "what is sent is remembered");
    if (once.host.endsAtPause > 1)
        check(once.hear(page).spots.empty(), "nothing is forwarded twice");

    static HeardPages always;
    always.hear(page);
    static BoundCheck checkBound;
    checkBound(always.feed.remembered().size(), page.size());
    check(std::ranges::all_of(once.feed.remembered(),
                              [](const QByteArray& key) { return key.size() <= WsprnetFeed::longestKept; }),
          "what is remembered is short");
    return 0;
}
