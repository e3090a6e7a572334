// SPDX-FileCopyrightText: 2026 the spotwell developers
// SPDX-License-Identifier: MIT

#pragma once

#include "tests/integration/support/ConsolePicture.h"
#include "tests/integration/support/ProgramFixture.h"
#include "tests/integration/support/UserInput.h"
#include "tests/integration/support/VirtualScreen.h"

namespace spotwell
{

/// The shipped program with a user in front of it, at a screen of their own. Its web feeds reach nobody.
class UserFixture : public ProgramFixture
{
protected:
    /// Starts it and waits until its window has the keyboard.
    void open();
    /// Likewise, connected to `node`.
    void openConnected();

    /// Where a control of the main window is on the screen.
    [[nodiscard]] QRect placeOf(const QString& control) const;
    /// Clicks on a control of the main window; of a box, the part that is always there, its left end.
    void click(const QString& control) const;
    /// Waits until the program has two windows, and the other one, the quit question, has the keyboard.
    [[nodiscard]] UserInput::Window question() const;
    /// Waits until the main window is alone, with the keyboard.
    [[nodiscard]] bool isAlone() const;

    /// What the beginnings of the console's lines look like.
    [[nodiscard]] ConsolePicture console() const;
    /// Waits until it shows that many.
    [[nodiscard]] bool shows(int lines) const;
    /// Keeps the screen as NAME.png in the directory SPOTWELL_PICTURES, if there is one.
    void keepPicture(const QString& name) const;

    /// What leads the program to this screen, and its feeds nowhere.
    [[nodiscard]] QStringList variables() const;

    VirtualScreen screen;
    UserInput user{screen, desktop()};
    UserInput::Window window;

private:
    /// What leads a program to the test's home and bus.
    [[nodiscard]] QStringList desktop() const;
    void findWindow();
};

} // namespace spotwell
