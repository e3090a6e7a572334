// SPDX-FileCopyrightText: 2026 the spotwell developers
// SPDX-License-Identifier: MIT

#pragma once

#include "app/Appearance.h"
#include "app/MainWindow.h"
#include "platform/DesktopContrast.h"

namespace spotwell
{

/// The colours of the window: light or dark as its user wants them, and with the contrast that the desktop
/// wants. Main thread; outlives the window's events.
class WindowColours
{
public:
    WindowColours(MainWindow& window, DesktopContrast& desktop) : window_(window), desktop_(desktop) {}

    /// Takes what the desktop's own colours tell; to be called before show().
    void begin();
    void show(bool dark);
    /// Asks the desktop, now and each time that the user comes back from another window: there the desktop's
    /// settings are changed.
    void follow();

private:
    void ask();

    MainWindow& window_;
    DesktopContrast& desktop_;
    bool dark_ = false;
    Contrast ofColours_ = Contrast::normal;
    Contrast asked_ = Contrast::normal;
};

} // namespace spotwell
