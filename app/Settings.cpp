// SPDX-FileCopyrightText: 2026 the spotwell developers
// SPDX-License-Identifier: MIT

#include "app/Settings.h"

#include <array>
#include <utility>

namespace spotwell
{

namespace
{

using TextKey = std::pair<const char*, std::optional<QString> Settings::*>;
using BooleanKey = std::pair<const char*, bool Settings::*>;

constexpr std::array<TextKey, 4> textKeys{{
    {"dxcluster", &Settings::dxcluster},
    {"password", &Settings::password},
    {"port", &Settings::port},
    {"callsign", &Settings::callsign},
}};

constexpr std::array<BooleanKey, 7> booleanKeys{{
    {"reconnect", &Settings::reconnect},
    {"wsprnet", &Settings::wsprnet},
    {"dxsummit", &Settings::dxsummit},
    {"pota", &Settings::pota},
    {"skimmers", &Settings::skimmers},
    {"dxsexclusive", &Settings::dxsexclusive},
    {"dark", &Settings::dark},
}};

} // namespace

Settings readSettings(const UserDefaults& defaults)
{
    Settings settings;
    for (const auto& [key, member] : textKeys)
        settings.*member = defaults.string(QLatin1String(key));
    for (const auto& [key, member] : booleanKeys)
        settings.*member = defaults.boolean(QLatin1String(key));
    return settings;
}

void writeSettings(UserDefaults& defaults, const Settings& settings)
{
    for (const auto& [key, member] : textKeys)
        defaults.setString(QLatin1String(key), (settings.*member).value_or(QString()));
    for (const auto& [key, member] : booleanKeys)
        defaults.setBoolean(QLatin1String(key), settings.*member);
}

} // namespace spotwell
