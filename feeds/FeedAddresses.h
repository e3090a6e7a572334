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
