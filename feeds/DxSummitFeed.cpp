// SPDX-FileCopyrightText: 2026 the spotwell developers
// SPDX-License-Identifier: MIT

#include "feeds/DxSummitFeed.h"

#include "feeds/JsonSpots.h"
#include "util/StringAdditions.h"

#include <optional>
#include <utility>

namespace spotwell
{

using namespace Qt::Literals::StringLiterals;

namespace
{

constexpr SpotKeys dxSummitKeys{"id"_L1,           "info"_L1,        "frequency"_L1,    "dx_latitude"_L1,
                                "dx_longitude"_L1, "de_latitude"_L1, "de_longitude"_L1, "time"_L1,
                                "dx_call"_L1,      "de_call"_L1};

QString dxSummitComment(const QJsonObject& entry)
{
    const QJsonValue info = entry.value("info"_L1);
    if (info.isUndefined())
        return u":(null)"_s;
    // What cannot be printed plainly is no comment.
    if (info.isNull() || info.isArray() || info.isObject())
        return u""_s;
    return u':' + printedText(info);
}

/// The service counts longitudes westwards.
std::optional<double> eastward(std::optional<double> longitude)
{
    return longitude ? std::optional{-*longitude} : std::nullopt;
}

/// The spot that `entry` is. Absent when a call is missing, empty or not legal, or when it is not wanted.
std::optional<Spot> dxSummitSpot(const QJsonObject& entry, bool dxsExclusive)
{
    std::optional<QString> call = textOf(entry, "dx_call"_L1);
    if (!call || call->isEmpty() || !legalCall(*call))
        return std::nullopt;
    std::optional<QString> spotter = textOf(entry, "de_call"_L1);
    if (!spotter || spotter->isEmpty() || !legalCall(*spotter))
        return std::nullopt;
    if (dxsExclusive && !spotter->endsWith(u"-@"))
        return std::nullopt;

    Spot spot;
    spot.call = std::move(call);
    spot.dxde = std::move(spotter);
    spot.source = u"DXSummit"_s;
    spot.timestamp = timeOf(entry, "time"_L1);
    spot.megahertz = megahertzOf(entry, "frequency"_L1);
    spot.mode = u""_s;
    spot.dxgrid = u""_s;
    spot.dxlatitude = numberOf(entry, "dx_latitude"_L1);
    spot.dxlongitude = eastward(numberOf(entry, "dx_longitude"_L1));
    spot.delatitude = numberOf(entry, "de_latitude"_L1);
    spot.delongitude = eastward(numberOf(entry, "de_longitude"_L1));
    spot.pota = u""_s;
    spot.comment = dxSummitComment(entry);
    spot.service = u"dxsu"_s;
    return spot;
}

} // namespace

void DxSummitFeed::parseDxSummitData(const QByteArray& body, bool dxsExclusive)
{
    const std::optional<QJsonArray> spots = spotsIn(body);
    if (!spots) {
        log_.line(u"parseDxSummitData:spots is not an array"_s);
        return;
    }
    if (_dxsummit_objects.size() >= mostRemembered)
        _dxsummit_objects.clear();

    // The service lists the newest first.
    StrayElements strays("parseDxSummitData"_L1, log_);
    for (qsizetype i = spots->size() - 1; i >= 0; --i) {
        const QJsonValueConstRef element = spots->begin()[i];
        if (!element.isObject()) {
            strays.skip(i);
            continue;
        }
        const QJsonObject entry = element.toObject();
        if (!remember(_dxsummit_objects, idOf(entry, "id"_L1, dxSummitKeys)))
            continue;
        const std::optional<Spot> spot = dxSummitSpot(entry, dxsExclusive);
        if (!spot)
            continue;
        host_.forward(*spot);
        if (!host_.pause(spotSpacing))
            return;
    }
    strays.end();
}

} // namespace spotwell
