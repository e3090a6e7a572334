// SPDX-FileCopyrightText: 2026 the spotwell developers
// SPDX-License-Identifier: MIT

#include "feeds/PotaFeed.h"

#include "feeds/JsonSpots.h"
#include "util/StringAdditions.h"

#include <algorithm>
#include <optional>
#include <utility>

namespace spotwell
{

using namespace Qt::Literals::StringLiterals;

namespace
{

constexpr SpotKeys potaKeys{"spotId"_L1,    "spotter"_L1,   "activator"_L1, "reference"_L1,
                            "frequency"_L1, "mode"_L1,      "comments"_L1,  "grid6"_L1,
                            "latitude"_L1,  "longitude"_L1, "spotTime"_L1};

/// Whether an automatic receiver is the spotter; so it is taken to be when none is named.
bool isSkimmer(const std::optional<QString>& spotter)
{
    return !spotter || spotter->contains(u"-#");
}

Spot potaSpot(const QJsonObject& entry, std::optional<TimePoint> time)
{
    Spot spot;
    spot.call = textOf(entry, "activator"_L1);
    spot.dxde = textOf(entry, "spotter"_L1);
    spot.source = u"POTA"_s;
    spot.timestamp = time;
    spot.megahertz = megahertzOf(entry, "frequency"_L1);
    spot.mode = textOf(entry, "mode"_L1);
    spot.dxgrid = textOf(entry, "grid6"_L1);
    spot.dxlatitude = numberOf(entry, "latitude"_L1);
    spot.dxlongitude = numberOf(entry, "longitude"_L1);
    spot.pota = textOf(entry, "reference"_L1);
    spot.comment = textOf(entry, "comments"_L1);
    spot.service = u"pota"_s;
    if (spot.comment && isSkimmer(spot.dxde))
        spot.comment = replaceString(*spot.comment, u"RBN"_s, spot.mode.value_or(QString()));
    return spot;
}

} // namespace

void PotaFeed::parsePotaData(const QByteArray& body, bool showSkimmers)
{
    const std::optional<QJsonArray> spots = spotsIn(body);
    if (!spots) {
        log_.line(u"parsePotaData:spots is not an array"_s);
        return;
    }
    if (spots->isEmpty()) {
        log_.line(u"parsePotaData:spots:[0]"_s);
        return;
    }
    if (_pota_objects.size() >= mostRemembered)
        _pota_objects.clear();

    for (const Candidate& candidate : oldestFirst(*spots, showSkimmers)) {
        const QJsonObject entry = spots->begin()[candidate.index].toObject();
        // Not every candidate is new any more: an answer may hold two entries of one id.
        if (!remember(_pota_objects, idOf(entry, "spotId"_L1, potaKeys)))
            continue;
        const bool hasTime = candidate.time != TimePoint::max();
        host_.forward(potaSpot(entry, hasTime ? std::optional{candidate.time} : std::nullopt));
        if (!host_.pause(spotSpacing))
            return;
    }
}

std::vector<PotaFeed::Candidate> PotaFeed::oldestFirst(const QJsonArray& spots, bool showSkimmers) const
{
    std::vector<Candidate> candidates;
    // Takes no memory before it is written to; growing by doubling would take half as much again.
    candidates.reserve(static_cast<std::size_t>(spots.size()));
    StrayElements strays("parsePotaData"_L1, log_);
    for (qsizetype i = 0; i < spots.size(); ++i) {
        const QJsonValueConstRef element = spots.begin()[i];
        if (!element.isObject()) {
            strays.skip(i);
            continue;
        }
        const QJsonObject entry = element.toObject();
        // Where there is no number its turn is early enough, for a digest costs more than all else here.
        if (const QJsonValue id = entry.value("spotId"_L1); id.isDouble() && _pota_objects.contains(id))
            continue;
        if (!showSkimmers && isSkimmer(textOf(entry, "spotter"_L1)))
            continue;
        candidates.push_back({timeOf(entry, "spotTime"_L1).value_or(TimePoint::max()), i});
    }
    strays.end();
    std::ranges::sort(candidates, {}, [](const Candidate& each) { return std::pair{each.time, each.index}; });
    return candidates;
}

} // namespace spotwell
