// SPDX-FileCopyrightText: 2026 the spotwell developers
// SPDX-License-Identifier: MIT

#pragma once

#include "platform/UserDefaults.h"

#include <QString>

#include <optional>

namespace spotwell
{

/// The user's persisted choices. A text is absent when its key was never written.
struct Settings {
    std::optional<QString> dxcluster;
    std::optional<QString> password;
    std::optional<QString> port;
    std::optional<QString> callsign;
    bool reconnect = false;
    bool wsprnet = false;
    bool dxsummit = false;
    bool pota = false;
    bool skimmers = false;
    bool dxsexclusive = false;
    bool dark = false;
};

/// Reads all eleven settings. Never-written Booleans are false.
[[nodiscard]] Settings readSettings(const UserDefaults& defaults);

/// Writes all eleven settings, absent texts as empty ones.
void writeSettings(UserDefaults& defaults, const Settings& settings);

} // namespace spotwell
