// SPDX-FileCopyrightText: 2026 the spotwell developers
// SPDX-License-Identifier: MIT

#include "app/BuiltInTests.h"

#include "cluster/TextDecoding.h"

#include <algorithm>
#include <array>
#include <string_view>

namespace spotwell
{

QString builtInTestLine(const TextConverter& converter, Log& log)
{
    constexpr std::string_view line =
        "DX de N0CALL:    21205.0  X1X          up\"Tks so Much\"GL Team!!       1428Z JN34";
    std::array<char, 100> buffer{};
    std::copy(line.begin(), line.end(), buffer.begin());
    return decodeClusterLine(buffer.data(), converter, log);
}

Spot builtInTestSpot(TimePoint now)
{
    Spot spot;
    spot.call = QStringLiteral("X1X");
    spot.dxde = QStringLiteral("N0CALL");
    spot.source = QStringLiteral("Test");
    spot.timestamp = now;
    spot.megahertz = 21.205;
    spot.mode = QString();
    spot.dxgrid = QString();
    spot.pota = QString();
    spot.comment = QStringLiteral("Tks so Much GL Team!!!!!!!!!!!!!");
    spot.service = QStringLiteral("test");
    return spot;
}

} // namespace spotwell
