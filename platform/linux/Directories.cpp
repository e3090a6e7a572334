// SPDX-FileCopyrightText: 2026 the spotwell developers
// SPDX-License-Identifier: MIT

#include "platform/linux/Directories.h"

namespace spotwell
{

namespace
{

/// What a variable says, or a directory of the home.
QString base(const QString& variable, const QString& home, const QString& otherwise)
{
    return variable.startsWith(QLatin1Char('/')) ? variable : home + QLatin1Char('/') + otherwise;
}

} // namespace

QString debugLogDirectory(const QString& stateHome, const QString& home)
{
    return base(stateHome, home, QStringLiteral(".local/state")) +
           QStringLiteral("/tarnbrooksoftware/Logwright/debug_log_files");
}

QString settingsFilePath(const QString& configHome, const QString& home)
{
    return base(configHome, home, QStringLiteral(".config")) +
           QStringLiteral("/tarnbrooksoftware/spotwell.conf");
}

} // namespace spotwell
