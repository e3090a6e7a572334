// SPDX-FileCopyrightText: 2026 the spotwell developers
// SPDX-License-Identifier: MIT

#pragma once

#include <QString>

namespace spotwell
{

/// The directory of the diagnostics logs, without a slash at its end: below `stateHome` (the variable
/// XDG_STATE_HOME; a relative or empty one does not count, as the XDG Base Directory Specification says),
/// else below ~/.local/state of `home`.
[[nodiscard]] QString debugLogDirectory(const QString& stateHome, const QString& home);

/// The settings file: likewise below `configHome` (the variable XDG_CONFIG_HOME), else below ~/.config.
[[nodiscard]] QString settingsFilePath(const QString& configHome, const QString& home);

} // namespace spotwell
