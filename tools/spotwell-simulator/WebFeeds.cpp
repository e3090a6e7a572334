// SPDX-FileCopyrightText: 2026 the spotwell developers
// SPDX-License-Identifier: MIT

#include "tools/spotwell-simulator/WebFeeds.h"

#include <QDateTime>

#include <algorithm>
#include <cstddef>

namespace spotwell::simulator
{
namespace
{

using namespace std::chrono_literals;

constexpr std::array parks{"Misty Hollow", "Long Lake", "Old Fort", "Twin Pines", "Sandy Point", "High Moor"};
constexpr std::array countries{"US", "CA", "GB", "DE", "JP", "AU", "FI", "PL"};
constexpr std::array activatorSays{
    "", "CQ POTA", "QRV now", "TNX for the park", "QRP 5 W, be patient", "calling on 40 m, QSY soon"};
constexpr std::array spotterSays{"", "TNX QSO", "up 2", "loud in EU", "CQ DX", "QSX 21023", "pse QSL"};
/// The middle of each WSPR segment, in Hz.
constexpr std::array wsprSegments{1'838'100,  3'570'100,  7'040'100,  10'140'200, 14'097'100,
                                  18'106'100, 21'096'100, 24'926'100, 28'126'100};
constexpr std::array<double, 6> watts{0.1, 0.2, 0.5, 1, 2, 5};

template <typename Array>
auto any(Stations& stations, const Array& array)
{
    return array[static_cast<std::size_t>(stations.pick(static_cast<int>(array.size())))];
}

QByteArray text(TimePoint time, const QString& pattern)
{
    const auto milliseconds = std::chrono::floor<std::chrono::milliseconds>(time.time_since_epoch());
    return QDateTime::fromMSecsSinceEpoch(milliseconds.count(), Qt::UTC).toString(pattern).toLatin1();
}

QByteArray isoTime(TimePoint time)
{
    return text(time, QStringLiteral("yyyy-MM-ddTHH:mm:ss"));
}

/// A JSON object whose fields are written one after the other.
class Fields
{
public:
    /// `json` as it stands.
    Fields& value(const char* name, const QByteArray& json)
    {
        json_.append(json_.isEmpty() ? "{\"" : ",\"").append(name).append("\":").append(json);
        return *this;
    }
    /// `text` is free of what JSON has to escape.
    Fields& text(const char* name, const QByteArray& text) { return value(name, '"' + text + '"'); }
    [[nodiscard]] QByteArray object() const { return json_ + '}'; }

private:
    QByteArray json_;
};

QByteArray framed(WebFeed feed, const std::deque<QByteArray>& rows)
{
    const bool isPage = feed == WebFeed::wsprnet;
    QByteArray body = isPage ? "<!DOCTYPE html>\n<html>\n<head><title>Spots</title></head>\n<body>\n"
                               "<h1>Spot database</h1>\n<table>\n"
                               "<tr><th>Timestamp</th><th>Call</th><th>MHz</th><th>SNR</th><th>Drift</th>"
                               "<th>Grid</th><th>Pwr</th><th>Reporter</th><th>RGrid</th><th>km</th>"
                               "<th>az</th></tr>\n"
                             : "[";
    for (const QByteArray& row : rows) {
        if (!isPage && &row != &rows.front())
            body += ',';
        body += row;
    }
    return body + (isPage ? "</table>\n</body>\n</html>\n" : "]");
}

} // namespace

QByteArray WebFeeds::next(WebFeed feed, int rows, int fresh, TimePoint now)
{
    List& list = lists_[static_cast<std::size_t>(feed)];
    const auto wanted = static_cast<std::size_t>(rows);
    const bool first = list.rows.empty();
    const std::size_t missing = list.rows.size() < wanted ? wanted - list.rows.size() : 0;
    const auto count = static_cast<int>(std::max(missing, static_cast<std::size_t>(fresh)));
    // New spots lie between the answer before and this one, the newest being of the present.
    const auto span = first ? std::chrono::microseconds{30min} : std::clamp(now - list.at, 0us, 30'000'000us);
    for (int left = count - 1; left >= 0; --left)
        list.rows.push_front(row(feed, now - span * left / count));
    list.at = now;
    if (list.rows.size() > wanted)
        list.rows.resize(wanted);
    return framed(feed, list.rows);
}

QByteArray WebFeeds::row(WebFeed feed, TimePoint time)
{
    ++lists_[static_cast<std::size_t>(feed)].id;
    switch (feed) {
    case WebFeed::pota:
        return potaRow(time);
    case WebFeed::dxsummit:
        return dxsummitRow(time);
    case WebFeed::wsprnet:
        break;
    }
    return wsprnetRow(time);
}

QByteArray WebFeeds::potaRow(TimePoint time)
{
    const Activity activity = stations_.activity();
    const QByteArray activator = stations_.call();
    const bool isSkimmer = activity.mode == "CW" && stations_.pick(4) > 0;
    const QByteArray spotter = stations_.call() + (isSkimmer ? "-#" : "");
    const QByteArray strength = QByteArray::number(3 + stations_.pick(40));
    const QByteArray speed = QByteArray::number(18 + stations_.pick(20));
    const QByteArray country = any(stations_, countries);
    const QByteArray comments = isSkimmer ? "RBN " + strength + " dB " + speed + " WPM via " + spotter
                                          : QByteArray{any(stations_, activatorSays)};
    // The service gives whole kilohertz without decimals.
    QByteArray frequency = kilohertz(activity.frequency);
    if (frequency.endsWith(".0"))
        frequency.chop(2);
    const QByteArray grid = locator();
    return Fields{}
        .value("spotId", QByteArray::number(lists_[0].id))
        .text("activator", activator)
        .text("frequency", frequency)
        .text("mode", activity.mode)
        .text("reference", country + '-' + digits(stations_.pick(10'000), 4))
        .value("parkName", "null")
        .text("spotTime", isoTime(time))
        .text("spotter", spotter)
        .text("comments", comments)
        .text("source", isSkimmer ? "RBN" : "Web")
        .value("invalid", "null")
        .text("name", any(stations_, parks))
        .text("locationDesc", country)
        .text("grid4", grid.left(4))
        .text("grid6", grid)
        .value("latitude", position(70))
        .value("longitude", position(170))
        .value("count", QByteArray::number(1 + stations_.pick(40)))
        .object();
}

QByteArray WebFeeds::dxsummitRow(TimePoint time)
{
    const Activity activity = stations_.activity();
    const QByteArray spotter = stations_.call() + (stations_.pick(3) == 0 ? "-@" : "");
    const QByteArray info = any(stations_, spotterSays);
    return Fields{}
        .value("id", QByteArray::number(lists_[1].id))
        .text("de_call", spotter)
        .text("dx_call", stations_.call())
        .value("frequency", kilohertz(activity.frequency))
        .value("info", info.isEmpty() ? "null" : '"' + info + '"')
        .text("time", isoTime(time))
        .text("dx_country", any(stations_, countries))
        .value("de_latitude", position(70))
        .value("de_longitude", position(170))
        .value("dx_latitude", position(70))
        .value("dx_longitude", position(170))
        .object();
}

QByteArray WebFeeds::wsprnetRow(TimePoint time)
{
    // A report's time is that of its two-minute slot.
    const TimePoint slot = std::chrono::floor<std::chrono::duration<int, std::ratio<120>>>(time);
    const int hertz = any(stations_, wsprSegments) - 100 + stations_.pick(200);
    const QByteArray cells[]{
        text(slot, QStringLiteral("yyyy-MM-dd HH:mm")),
        stations_.call(),
        QByteArray::number(hertz / 1e6, 'f', 6),
        QByteArray::number(stations_.pick(35) - 30),
        QByteArray::number(stations_.pick(5) - 2),
        locator(),
        QByteArray::number(any(stations_, watts)),
        stations_.call(),
        locator(),
        QByteArray::number(50 + stations_.pick(18'000)),
        QByteArray::number(stations_.pick(360)),
    };
    QByteArray row = "<tr>";
    for (const QByteArray& cell : cells)
        row += "<td>&nbsp;" + cell + "&nbsp;</td>";
    return row + "</tr>\n";
}

QByteArray WebFeeds::position(int most)
{
    return QByteArray::number((stations_.pick(2 * most * 10'000) - most * 10'000) / 1e4, 'f', 4);
}

QByteArray WebFeeds::locator()
{
    QByteArray text;
    for (int pair = 0; pair < 3; ++pair) {
        const char first = pair == 0 ? 'A' : pair == 1 ? '0' : 'a';
        const int range = pair == 0 ? 18 : pair == 1 ? 10 : 24;
        text += static_cast<char>(first + stations_.pick(range));
        text += static_cast<char>(first + stations_.pick(range));
    }
    return text;
}

} // namespace spotwell::simulator
