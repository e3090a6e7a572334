// SPDX-FileCopyrightText: 2026 the spotwell developers
// SPDX-License-Identifier: MIT

#pragma once

#include <QProcessEnvironment>
#include <QString>
#include <QStringList>

namespace spotwell::bench
{

/// Who uses the windows of a display, by way of xdotool. What does not come about throws std::runtime_error.
class Hands
{
public:
    /// `environment` says which display.
    explicit Hands(QProcessEnvironment environment);

    /// Whether a visible window has a title that `pattern`, a regular expression, matches.
    [[nodiscard]] bool sees(const QString& pattern) const { return !windows(pattern).isEmpty(); }
    /// Waits until a visible window has a title that `pattern` matches, two minutes at most; gives its
    /// number.
    [[nodiscard]] QString window(const QString& pattern) const { return anotherWindow(pattern, {}); }
    /// The same, but not the window of the number `known`.
    [[nodiscard]] QString anotherWindow(const QString& pattern, const QString& known) const;
    /// Waits until no such window is left, two minutes at most.
    void waitUntilGone(const QString& pattern) const;
    /// Gives `window` the keyboard and types `keys` there, names of xdotool.
    void press(const QString& window, const QStringList& keys) const;
    /// The same with `text` and the Enter key.
    void enter(const QString& window, const QString& text) const;
    void click(int x, int y) const;
    /// Moves `window` to the upper left corner and gives it that size.
    void place(const QString& window, int width, int height) const;
    /// Takes mouse and keyboard away from all windows.
    void letGo() const;

private:
    [[nodiscard]] QStringList windows(const QString& pattern) const;
    [[nodiscard]] QString xdotool(const QStringList& arguments) const;

    const QProcessEnvironment environment_;
};

} // namespace spotwell::bench
