// SPDX-FileCopyrightText: 2026 the spotwell developers
// SPDX-License-Identifier: MIT

#pragma once

#include "delivery/SpotNotification.h"
#include "fuzz/BusTextChecks.h"
#include "tests/fakes/FakeServices.h"
#include "tests/feeds/FakeFeedHost.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>

#include <algorithm>
#include <cmath>
#include <iterator>

namespace spotwell
{

/// Whether `spot` can be shown and posted.
inline void checkSpot(const Spot& spot, QLatin1String source)
{
    check(spot.source == source && spot.service && spot.service->size() == 4, "a spot says where it is from");
    for (const auto& number :
         {spot.megahertz, spot.dxlatitude, spot.dxlongitude, spot.delatitude, spot.delongitude})
        check(!number || !std::isnan(*number), "numbers are numbers");
    check(spotConsoleLine(spot).size() >= 80, "a spot has its columns");
    QStringList keys;
    for (const auto& [key, value] : spotUserInfo(spot)) {
        keys.append(key);
        if (const auto* const text = std::get_if<QString>(&value))
            checkBusText(*text);
    }
    check(keys.removeDuplicates() == 0 && keys.size() <= 13, "no key stands twice");
}

/// The spots of one answer, of a body of so many bytes.
inline void checkAnswer(const FakeFeedHost& host, QLatin1String source, qsizetype bodySize)
{
    for (const Spot& spot : host.spots)
        checkSpot(spot, source);
    check(host.journal.count(QStringLiteral("spot")) * 2 == host.journal.size(), "a pause for each spot");
    for (qsizetype i = 1; i < host.journal.size(); i += 2)
        check(host.journal[i] == u"pause", "a pause after each spot");
    check(std::ranges::all_of(host.pauses, [](Seconds each) { return each == spotSpacing; }),
          "ten spots a second");
    check(host.spots.size() <= host.endsAtPause, "nothing comes after the end");
    check(static_cast<qsizetype>(host.spots.size()) <= bodySize, "spots do not come from nowhere");
}

/// A feed of JSON answers that has heard nothing yet, or all that went before.
template <typename Feed>
struct Heard {
    FakeFeedHost host;
    FakeLog log;
    Feed feed{host, log};

    /// What it forwards of `body`.
    const FakeFeedHost& hear(void (Feed::*parse)(const QByteArray& body, bool option), QLatin1String source,
                             const QByteArray& body, bool option)
    {
        host.clear();
        log.lines.clear();
        (feed.*parse)(body, option);
        checkAnswer(host, source, body.size());
        check(log.lines.size() <= 22, "the log is not filled");
        return host;
    }
};

/// What a feed remembers that lives as long as the process: forgotten once there are as many as the bound, at
/// the next answer that is a list, so up to one answer more.
class BoundCheck
{
public:
    void operator()(qsizetype remembered, qsizetype bodySize)
    {
        largest_ = std::max(largest_, bodySize);
        check(remembered < mostRemembered + largest_, "what is remembered is bounded");
    }

private:
    qsizetype largest_ = 0;
};

/// Whether `calls` occur in `row` in this order.
inline void checkOrder(const QStringList& calls, const QStringList& row)
{
    auto from = row.begin();
    for (const QString& call : calls) {
        from = std::find(from, row.end(), call);
        check(from != row.end(), "spots keep their order");
        ++from;
    }
}

inline QStringList callsOf(const FakeFeedHost& host)
{
    QStringList calls;
    std::ranges::transform(host.spots, std::back_inserter(calls),
                           [](const Spot& spot) { return spot.call.value_or(QString()); });
    return calls;
}

} // namespace spotwell
