// SPDX-FileCopyrightText: 2026 the spotwell developers
// SPDX-License-Identifier: MIT

#pragma once

#include <QPalette>
#include <QString>

#include <memory>

class QStyle;

namespace spotwell
{

/// How the program looks: a name and the colours that go with it.
struct Appearance {
    QString name;
    /// Every role of every group is set, so that nothing of the desktop's own colours shows through.
    QPalette palette;
};

enum class Contrast { normal, high };

/// The dark appearance for true, the light one for false; with high contrast, in colours that keep 7:1.
[[nodiscard]] Appearance desiredAppearanceObject(bool dark, Contrast contrast = Contrast::normal);

/// Whether a desktop whose colours these are wants high contrast: its text is black on white, or white on
/// black, and nothing between.
[[nodiscard]] Contrast contrastOf(const QPalette& desktop);

[[nodiscard]] Appearance darkAppearnace();
[[nodiscard]] Appearance lightAppearnace();

/// The widget style made for these appearances: Qt's Fusion, with the outlines of boxes, fields, buttons,
/// menus and scroll bars' sliders in the palette's Dark role. Fusion alone derives them from the window's
/// colour, too faint for the 3:1 that WCAG 2.1 (1.4.11) asks of them.
[[nodiscard]] std::unique_ptr<QStyle> makeStyle();

} // namespace spotwell
