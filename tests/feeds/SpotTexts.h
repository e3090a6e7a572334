// SPDX-FileCopyrightText: 2026 the spotwell developers
// SPDX-License-Identifier: MIT

#pragma once

#include "delivery/Spot.h"

#include <QByteArray>
#include <QDateTime>
#include <QList>
#include <QLocale>
#include <QString>
#include <QStringList>

#include <map>
#include <vector>

// Answers and spots as the tests' tables write them: an element by its keys' JSON, a spot as a line of
// fourteen fields.

namespace spotwell
{

/// The JSON of each key of one element. A key whose JSON is empty is left out.
using Keys = std::map<QByteArray, QByteArray>;

/// `keys` with those of `other` instead where there are such.
inline Keys with(Keys keys, const Keys& other)
{
    for (const auto& [key, json] : other)
        keys[key] = json;
    return keys;
}

inline QByteArray object(const Keys& keys)
{
    QByteArray members;
    for (const auto& [key, json] : keys) {
        if (!json.isEmpty())
            members += (members.isEmpty() ? "\"" : ",\"") + key + "\":" + json;
    }
    return '{' + members + '}';
}

inline QByteArray array(const QList<QByteArray>& elements)
{
    return '[' + elements.join(',') + ']';
}

inline QString shown(const std::optional<QString>& text)
{
    return text ? QLatin1Char('\'') + *text + QLatin1Char('\'') : QStringLiteral("-");
}
inline QString shown(const std::optional<double>& number)
{
    // As many digits as tell the number from all others.
    return number ? QString::number(*number, 'g', QLocale::FloatingPointShortest) : QStringLiteral("-");
}
inline QString shown(const std::optional<TimePoint>& time)
{
    if (!time)
        return QStringLiteral("-");
    const auto milliseconds = std::chrono::floor<std::chrono::milliseconds>(*time).time_since_epoch().count();
    return QDateTime::fromMSecsSinceEpoch(milliseconds, Qt::UTC).toString(Qt::ISODateWithMs);
}

/// The fourteen fields in their order: texts in apostrophes, what is absent as a minus.
inline QStringList fields(const Spot& spot)
{
    return {shown(spot.call),        shown(spot.dxde),       shown(spot.source),      shown(spot.timestamp),
            shown(spot.megahertz),   shown(spot.mode),       shown(spot.dxgrid),      shown(spot.dxlatitude),
            shown(spot.dxlongitude), shown(spot.delatitude), shown(spot.delongitude), shown(spot.pota),
            shown(spot.comment),     shown(spot.service)};
}

/// The places of the fields in that order.
enum Field {
    call,
    dxde,
    source,
    timestamp,
    megahertz,
    mode,
    dxgrid,
    dxlatitude,
    dxlongitude,
    delatitude,
    delongitude,
    pota,
    comment,
    service
};

/// What is neither a text nor missing.
inline const QList<QByteArray> noTexts = {"null", "0", "14.5", "true", "[]", R"(["x"])", R"({"x":"x"})"};
/// What no position can be read from, and nothing at all.
inline const QList<QByteArray> noNumbers = {"",           "null", R"("")", R"("N 40.7")", R"("-")",
                                            R"("1e999")", "true", "[]",    "[7]",         R"({"x":7})"};
/// 40.75 degrees in all the ways that count.
inline const QList<QByteArray> numbersOf4075 = {"40.75", "4075e-2", R"("40.75")", R"(" 40.750 N")",
                                                R"("4.075e1")"};
/// What no frequency can be read from, and 0.
inline const QList<QByteArray> noFrequencies = {"",     "null", R"("")",      R"("QRX")",
                                                "true", "[7]",  R"({"x":7})", "0"};
/// 14062 kHz in all the ways it is written.
inline const QList<QByteArray> frequenciesOf14062 = {"14062",        R"("14062")",      "14062.0",
                                                     R"("14062.0")", R"("14062.0 CW")", "14.062e3"};
/// What no time can be read from.
inline const QList<QByteArray> noTimes = {"",
                                          "null",
                                          R"("")",
                                          R"("2024-03-01T14:28:59Z")",
                                          R"("2024-03-01T14:28:59.1")",
                                          R"("yesterday")",
                                          "[]",
                                          "{}",
                                          "true",
                                          "1709303339"};
/// Bodies that are no array, the last for being cut off.
inline const QList<QByteArray> noArrays = {
    "{}",
    R"({"id":1})",
    R"("text")",
    "7",
    "null",
    "no JSON",
    " ",
    "<html><body>502 Bad Gateway</body></html>",
    R"([{"id":1,"spotId":1,"spotter":"N0CALL","dx_call":"X1X","de_call":"N0CALL"},{"id":2,"spotId")"};

/// One field of each of `spots`.
inline QStringList column(const std::vector<Spot>& spots, Field field)
{
    QStringList texts;
    for (const Spot& spot : spots)
        texts.append(fields(spot)[field]);
    return texts;
}

} // namespace spotwell
