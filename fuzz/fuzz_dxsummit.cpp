// SPDX-FileCopyrightText: 2026 the spotwell developers
// SPDX-License-Identifier: MIT

// The answers of the DXSummit service, with both states of the option and at the program's end.

#include "feeds/DxSummitFeed.h"
#include "fuzz/FeedChecks.h"
#include "fuzz/Input.h"

namespace
{

using namespace spotwell;

/// The calls of `body` from its last element to its first.
QStringList callsBackwards(const QByteArray& body)
{
    QStringList calls;
    // What is no UTF-8 is replaced only where the reader refuses it; behind a backslash it does not.
    QJsonDocument answer = QJsonDocument::fromJson(body);
    if (answer.isNull())
        answer = QJsonDocument::fromJson(QString::fromUtf8(body).toUtf8());
    for (const auto& element : answer.array())
        calls.prepend(element[QLatin1String("dx_call")].toString());
    return calls;
}

void checkCalls(const Spot& spot, bool dxsExclusive)
{
    check(spot.call && !spot.call->isEmpty() && !spot.call->contains(u' '), "a call is there and legal");
    check(spot.dxde && !spot.dxde->isEmpty() && !spot.dxde->contains(u' '), "so is the spotter's");
    check(!dxsExclusive || spot.dxde->endsWith(u"-@"), "only the service's own spots if these are wanted");
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const unsigned char* data, std::size_t size)
{
    Input input(data, size);
    const unsigned options = input.byte();
    const bool dxsExclusive = (options & 1U) != 0;
    const QByteArray body = input.all().toByteArray();

    const auto hear = [&body, dxsExclusive](Heard<DxSummitFeed>& heard) -> const FakeFeedHost& {
        return heard.hear(&DxSummitFeed::parseDxSummitData, QLatin1String("DXSummit"), body, dxsExclusive);
    };
    Heard<DxSummitFeed> once;
    if ((options & 2U) != 0)
        once.host.endsAtPause = 1;
    const FakeFeedHost& host = hear(once);
    for (const Spot& spot : host.spots)
        checkCalls(spot, dxsExclusive);
    if (!host.spots.empty())
        checkOrder(callsOf(host), callsBackwards(body));
    check(once.feed.remembered().size() >= static_cast<qsizetype>(host.spots.size()),
          "all spots are remembered");
    if (once.host.endsAtPause > 1)
        check(hear(once).spots.empty(), "nothing is forwarded twice");

    static Heard<DxSummitFeed> always;
    hear(always);
    static BoundCheck checkBound;
    checkBound(always.feed.remembered().size(), body.size());
    return 0;
}
