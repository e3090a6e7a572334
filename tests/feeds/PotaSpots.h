// SPDX-FileCopyrightText: 2026 the spotwell developers
// SPDX-License-Identifier: MIT

#pragma once

#include "tests/feeds/SpotTexts.h"

namespace spotwell
{

/// A spot as the service writes it, with keys that are not for us.
inline const Keys potaKeys = {{"spotId", "29000002"},
                              {"spotter", R"("N0CALL")"},
                              {"activator", R"("X1X")"},
                              {"reference", R"("US-1234")"},
                              {"frequency", R"("14074")"},
                              {"mode", R"("FT8")"},
                              {"name", R"("Some State Park")"},
                              {"comments", R"("cq")"},
                              {"grid6", R"("FN20xr")"},
                              {"grid4", R"("FN20")"},
                              {"latitude", "40.71"},
                              {"longitude", "-74.02"},
                              {"spotTime", R"("2024-03-01T14:28:59")"},
                              {"source", R"("Web")"},
                              {"parkName", "null"},
                              {"invalid", "null"},
                              {"expire", "1799"}};

/// The fields of that spot.
inline const QStringList potaFields = {QStringLiteral("'X1X'"),    QStringLiteral("'N0CALL'"),
                                       QStringLiteral("'POTA'"),   QStringLiteral("2024-03-01T14:28:59.000Z"),
                                       QStringLiteral("14.074"),   QStringLiteral("'FT8'"),
                                       QStringLiteral("'FN20xr'"), QStringLiteral("40.71"),
                                       QStringLiteral("-74.02"),   QStringLiteral("-"),
                                       QStringLiteral("-"),        QStringLiteral("'US-1234'"),
                                       QStringLiteral("'cq'"),     QStringLiteral("'pota'")};

/// That spot with other keys.
inline QByteArray potaSpotWith(const Keys& other)
{
    return object(with(potaKeys, other));
}

/// A spot of `activator`.
inline QByteArray potaSpotOf(const QByteArray& id, const QByteArray& activator, const QByteArray& time)
{
    return potaSpotWith(
        {{"spotId", id}, {"activator", '"' + activator + '"'}, {"spotTime", '"' + time + '"'}});
}

inline QByteArray potaSpotOf(const QByteArray& id, const QByteArray& activator)
{
    return potaSpotOf(id, activator, "2024-03-01T14:00:00");
}

} // namespace spotwell
