// SPDX-FileCopyrightText: 2026 the spotwell developers
// SPDX-License-Identifier: MIT

#include "tools/spotwell-bridge/Bridge.h"

#include "tools/spotwell-bridge/spots/N1mmSpot.h"
#include "tools/spotwell-bridge/spots/SpotLine.h"
#include "tools/spotwell-bridge/spots/SpotReport.h"

#include <algorithm>
#include <utility>

namespace spotwell::bridge
{

namespace
{

/// The line of a line notification; null when it has none.
const QString* lineOf(const Notification& notification)
{
    const auto entry = std::find_if(notification.userInfo.begin(), notification.userInfo.end(),
                                    [](const auto& candidate) { return candidate.first == u"line"; });
    return entry == notification.userInfo.end() ? nullptr : std::get_if<QString>(&entry->second);
}

} // namespace

Bridge::Bridge(Outlets outlets, Complaints& complaints)
    : outlets_(std::move(outlets)), complaints_(complaints)
{
}

void Bridge::handOn(const Notification& notification, TimePoint received)
{
    if (!outlets_.line && !outlets_.datagram)
        return;
    if (notification.name == u"com.tarnbrooksoftware.spotwell_spot")
        return handOnSpot(notification, received);
    if (const QString* const line = lineOf(notification))
        handOnLine(*line, received);
    else
        complaints_.complain(QStringLiteral("a line notification without a line was left out"));
}

void Bridge::handOnSpot(const Notification& notification, TimePoint received)
{
    const auto report = reportOfSpot(notification, received);
    if (!report)
        return complaints_.complain(QStringLiteral("a spot without a call or a frequency was left out"));
    if (outlets_.line)
        outlets_.line(spotLine(*report));
    if (outlets_.datagram)
        outlets_.datagram(n1mmSpot(*report));
}

void Bridge::handOnLine(const QString& text, TimePoint received)
{
    if (!outlets_.line && !outlets_.datagram)
        return;
    const auto line = clusterLine(text);
    if (!line)
        return complaints_.complain(QStringLiteral("a line that is empty or too long was left out"));
    if (outlets_.line)
        outlets_.line(*line);
    if (!outlets_.datagram)
        return;
    if (const auto report = reportOfLine(*line, received))
        outlets_.datagram(n1mmSpot(*report));
    else
        complaints_.complain(QStringLiteral("a line that is no spot was not sent to N1MM programs"));
}

} // namespace spotwell::bridge
