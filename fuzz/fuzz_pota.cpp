// SPDX-FileCopyrightText: 2026 the spotwell developers
// SPDX-License-Identifier: MIT

// The answers of the Parks on the Air service, with both states of the option and at the program's end.

#include "feeds/PotaFeed.h"
#include "fuzz/FeedChecks.h"
#include "fuzz/Input.h"

namespace
{

using namespace spotwell;

void checkOldestFirst(const std::vector<Spot>& spots)
{
    const auto turn = [](const Spot& spot) { return spot.timestamp.value_or(TimePoint::max()); };
    check(std::ranges::is_sorted(spots, {}, turn), "the oldest first, those without a time last");
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const unsigned char* data, std::size_t size)
{
    Input input(data, size);
    const unsigned options = input.byte();
    const bool showSkimmers = (options & 1U) != 0;
    const QByteArray body = input.all().toByteArray();

    const auto hear = [&body, showSkimmers](Heard<PotaFeed>& heard) -> const FakeFeedHost& {
        return heard.hear(&PotaFeed::parsePotaData, QLatin1String("POTA"), body, showSkimmers);
    };
    Heard<PotaFeed> once;
    if ((options & 2U) != 0)
        once.host.endsAtPause = 1;
    const FakeFeedHost& host = hear(once);
    const std::size_t forwarded = host.spots.size();
    checkOldestFirst(host.spots);
    check(once.feed.remembered().size() == static_cast<qsizetype>(forwarded),
          "what is forwarded is remembered");
    check(showSkimmers ||
              std::ranges::none_of(host.spots,
                                   [](const Spot& spot) { return !spot.dxde || spot.dxde->contains(u"-#"); }),
          "no skimmers unless they are wanted");
    if (once.host.endsAtPause > 1)
        check(hear(once).spots.empty(), "nothing is forwarded twice");

    static Heard<PotaFeed> always;
    hear(always);
    static BoundCheck checkBound;
    checkBound(always.feed.remembered().size(), body.size());
    return 0;
}
