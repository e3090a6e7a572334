// SPDX-FileCopyrightText: 2026 the spotwell developers
// SPDX-License-Identifier: MIT

#pragma once

#include "app/Settings.h"

namespace spotwell
{

class MainWindow;

/// Puts `settings` into the controls of `window`. An option of a feed that is off cannot be switched.
void showSettings(const Settings& settings, const MainWindow& window);

/// What the controls of `window` say.
[[nodiscard]] Settings shownSettings(const MainWindow& window);

} // namespace spotwell
