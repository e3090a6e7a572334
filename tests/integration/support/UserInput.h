// SPDX-FileCopyrightText: 2026 the spotwell developers
// SPDX-License-Identifier: MIT

#pragma once

#include "tests/support/bus/ChildProcess.h"

#include <QHash>
#include <QList>
#include <QProcessEnvironment>
#include <QRect>
#include <QString>
#include <QStringList>

#include <optional>

namespace spotwell
{

class VirtualScreen;

/// Somebody at a screen, with a mouse, a keyboard and a window manager. Windows have no frames there; Alt+F4
/// closes the active one, and the middle button with Alt any other.
class UserInput
{
public:
    struct Window {
        QString id;
        /// On the screen.
        QRect area;
    };

    /// Starts the window manager, and finds out where the controls of a program with these variables,
    /// "NAME=VALUE", are. Throws when that fails.
    UserInput(const VirtualScreen& screen, const QStringList& variables);

    /// The program's windows that can be seen (or could be, but for others in front of them), in no order.
    [[nodiscard]] QList<Window> windows() const;
    /// The window that has the keyboard; empty when none has.
    [[nodiscard]] QString activeWindow() const;
    /// Where a control is in its window: one of the main window by its object name, a button of the quit
    /// question by its text. "MainWindow" is the main window itself.
    [[nodiscard]] QRect place(const QString& control) const;

    /// On a place of the screen, with the left button or another one (3: the right one).
    void click(const QPoint& at, int button = 1) const;
    /// With the left button held, from one place of the screen to another.
    void drag(const QPoint& from, const QPoint& to) const;
    /// Tells the window at this place of the screen to close.
    void close(const QPoint& at) const;
    /// Keys at once, as "alt+F4".
    void press(const QString& keys) const { press(QStringList(keys)); }
    /// One after the other.
    void press(const QStringList& keys) const;
    void type(const QString& text) const;
    /// Gives a window the keyboard and leaves it behind others, as desktops do whose focus follows the mouse.
    void focus(const Window& window) const;
    /// Moves it by its upper left corner.
    void move(const Window& window, const QPoint& to) const;

private:
    [[nodiscard]] QStringList linesOf(const QString& program, const QStringList& arguments = {}) const;
    void startWindowManager(const VirtualScreen& screen);
    void findPlaces();

    QProcessEnvironment environment_;
    std::optional<ChildProcess> windowManager_;
    QHash<QString, QRect> places_;
};

} // namespace spotwell
