// SPDX-FileCopyrightText: 2026 the spotwell developers
// SPDX-License-Identifier: MIT

#pragma once

#include <QString>

namespace spotwell
{

/// Where the web feeds are fetched from: whole addresses.
struct FeedAddresses {
    QString pota;
    QString dxsummit;
    QString wsprnet;
};

} // namespace spotwell
