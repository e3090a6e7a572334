// SPDX-FileCopyrightText: 2026 the spotwell developers
// SPDX-License-Identifier: MIT

#include "tests/integration/support/ConsolePicture.h"

#include <algorithm>
#include <cmath>

namespace spotwell
{

namespace
{

double contrast(QRgb one, QRgb other)
{
    const auto [darker, lighter] = std::minmax({luminance(one), luminance(other)});
    return (lighter + 0.05) / (darker + 0.05);
}

} // namespace

double luminance(QRgb colour)
{
    const auto linear = [](int part) {
        const double value = part / 255.0;
        return value <= 0.03928 ? value / 12.92 : std::pow((value + 0.055) / 1.055, 2.4);
    };
    return 0.2126 * linear(qRed(colour)) + 0.7152 * linear(qGreen(colour)) + 0.0722 * linear(qBlue(colour));
}

ConsolePicture lookAtConsole(const QImage& picture)
{
    ConsolePicture seen;
    if (picture.isNull())
        return seen;
    // Text begins below and right of the corner.
    seen.background = picture.pixel(0, 0);
    bool insideLine = false;
    int end = 0;
    for (int y = 0; y < picture.height(); ++y) {
        bool isEmpty = true;
        for (int x = 0; x < picture.width(); ++x) {
            const QRgb colour = picture.pixel(x, y);
            if (colour == seen.background)
                continue;
            isEmpty = false;
            seen.readablePixels += contrast(colour, seen.background) >= 4.5 ? 1 : 0;
        }
        if (!isEmpty) {
            seen.lines += insideLine ? 0 : 1;
            end = y + 1;
        }
        insideLine = !isEmpty;
    }
    seen.text = picture.copy(0, 0, picture.width(), end);
    return seen;
}

} // namespace spotwell
