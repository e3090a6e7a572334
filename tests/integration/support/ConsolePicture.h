// SPDX-FileCopyrightText: 2026 the spotwell developers
// SPDX-License-Identifier: MIT

#pragma once

#include <QImage>

namespace spotwell
{

/// What can be seen on a picture of the console, or of a part of it with the beginnings of all lines.
struct ConsolePicture {
    QRgb background = 0;
    /// Pixels that stand out from the background by 4.5:1, the least that WCAG 2.1 AA asks of text.
    int readablePixels = 0;
    /// Lines of text.
    int lines = 0;
    /// The lines' part of the picture, from its top to the lower end of the last one.
    QImage text;
};

[[nodiscard]] ConsolePicture lookAtConsole(const QImage& picture);

/// Relative luminance as WCAG 2.1 defines it: 0 for black, 1 for white.
[[nodiscard]] double luminance(QRgb colour);

} // namespace spotwell
