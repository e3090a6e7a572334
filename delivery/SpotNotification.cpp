// SPDX-FileCopyrightText: 2026 the spotwell developers
// SPDX-License-Identifier: MIT

#include "delivery/SpotNotification.h"

#include "util/NumberText.h"
#include "util/TimeFormats.h"

#include <utility>

namespace spotwell
{

namespace
{

constexpr qsizetype spotterColumns = 9;
constexpr qsizetype frequencyColumns = 8;
constexpr qsizetype callColumns = 12;
constexpr qsizetype commentColumns = 30;
constexpr qsizetype timeColumns = 5;

QString inColumns(const std::optional<QString>& text, qsizetype columns)
{
    return text.value_or(QString()).leftJustified(columns, QLatin1Char(' '), true);
}

// "%8.1f"
QString kilohertzColumns(double megahertz)
{
    return fixedNumber(megahertz * 1000.0, 1).rightJustified(frequencyColumns);
}

void addText(UserInfo& info, const QString& key, const std::optional<QString>& text)
{
    if (text && !text->isEmpty())
        info.emplace_back(key, *text);
}

template <typename Value>
void addPresent(UserInfo& info, const QString& key, const std::optional<Value>& value)
{
    if (value)
        info.emplace_back(key, *value);
}

} // namespace

QString spotConsoleLine(const Spot& spot)
{
    const QString time = spot.timestamp ? spotTime(*spot.timestamp) : QString(timeColumns, QLatin1Char(' '));
    QString line = spot.service.value_or(QString()) + QStringLiteral(" DX de ") +
                   inColumns(spot.dxde, spotterColumns) + QLatin1Char(' ') +
                   kilohertzColumns(spot.megahertz.value_or(0.0)) + QStringLiteral("  ") +
                   inColumns(spot.call, callColumns) + QLatin1Char(' ') +
                   inColumns(spot.comment, commentColumns) + QLatin1Char(' ') + time;
    if (spot.pota && !spot.pota->isEmpty())
        line += QLatin1Char(' ') + *spot.pota;
    return line;
}

UserInfo spotUserInfo(const Spot& spot)
{
    UserInfo info;
    addText(info, QStringLiteral("combinedCallsign"), spot.call);
    addText(info, QStringLiteral("mode"), spot.mode);
    addPresent(info, QStringLiteral("timestamp"), spot.timestamp);
    addPresent(info, QStringLiteral("megahertz"), spot.megahertz);
    addText(info, QStringLiteral("comments"), spot.comment);
    addText(info, QStringLiteral("source"), spot.source);
    addText(info, QStringLiteral("grid"), spot.dxgrid);
    addPresent(info, QStringLiteral("latitude"), spot.dxlatitude);
    addPresent(info, QStringLiteral("longitude"), spot.dxlongitude);
    addPresent(info, QStringLiteral("dxde_call"), spot.dxde);
    addPresent(info, QStringLiteral("de_latitude"), spot.delatitude);
    addPresent(info, QStringLiteral("de_longitude"), spot.delongitude);
    addText(info, QStringLiteral("pota_ref"), spot.pota);
    return info;
}

SpotNotification::SpotNotification(std::function<void(const QString&)> appendText,
                                   NotificationCenter& notificationCenter)
    : appendText_(std::move(appendText)), notificationCenter_(notificationCenter)
{
}

void SpotNotification::sendSpotCall(const Spot& spot)
{
    appendText_(spotConsoleLine(spot));
    notificationCenter_.post(QStringLiteral("com.tarnbrooksoftware.spotwell_spot"),
                             QStringLiteral("string object"), spotUserInfo(spot));
}

} // namespace spotwell
