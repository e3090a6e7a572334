#pragma once

#include "platform/Time.h"
#include "tools/spotwell-bridge/Notification.h"

#include <QString>
#include <QStringView>

#include <optional>

namespace spotwell::bridge
{

/// What a logger needs to know of a spot, whichever way it came. Texts are empty where nothing is known; they
/// hold no control characters.
struct SpotReport {
    /// The station heard; never empty.
    QString call;
    /// The spotter; never empty, the service's name where none is known.
    QString spotter;
    /// A finite number above 0.
    double kilohertz = 0.0;
    QString comment;
    /// The reference of an activated park.
    QString park;
    QString mode;
    /// The locator of the station heard.
    QString grid;
    TimePoint time;
};

/// Reads the dictionary of a spot notification that arrived at `now`, which is also the time of a spot that
/// has none. Absent without a call or a frequency: no logger can use such a spot.
[[nodiscard]] std::optional<SpotReport> reportOfSpot(const Notification& notification, TimePoint now);

/// Reads a cluster line that arrived at `now`. Its four digits become the point in time nearest to `now`.
/// Absent when it has no spotter, frequency or call where cluster lines have them.
[[nodiscard]] std::optional<SpotReport> reportOfLine(QStringView line, TimePoint now);

} // namespace spotwell::bridge
