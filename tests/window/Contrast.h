// SPDX-FileCopyrightText: 2026 the spotwell developers
// SPDX-License-Identifier: MIT

#pragma once

#include "app/Appearance.h"

#include <QColor>
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <string>

namespace spotwell
{

/// Relative luminance and contrast ratio as WCAG 2.1 defines them.
inline double luminance(const QColor& colour)
{
    const auto linear = [](double c) {
        return c <= 0.03928 ? c / 12.92 : std::pow((c + 0.055) / 1.055, 2.4);
    };
    return 0.2126 * linear(colour.redF()) + 0.7152 * linear(colour.greenF()) +
           0.0722 * linear(colour.blueF());
}

inline double contrast(const QColor& a, const QColor& b)
{
    const double first = luminance(a);
    const double second = luminance(b);
    return (std::max(first, second) + 0.05) / (std::min(first, second) + 0.05);
}

/// What an appearance is asked for with.
struct Wanted {
    bool dark;
    Contrast contrast;
};

/// The least that text keeps, by WCAG 2.1: AA, and AAA with high contrast.
inline double leastOfText(const Wanted& wanted)
{
    return wanted.contrast == Contrast::high ? 7.0 : 4.5;
}

/// The least that disabled text keeps, of which WCAG asks nothing.
inline double leastOfDisabledText(const Wanted& wanted)
{
    return wanted.contrast == Contrast::high ? 4.5 : 3.0;
}

inline auto eachWantedAppearance()
{
    return testing::Values(Wanted{false, Contrast::normal}, Wanted{true, Contrast::normal},
                           Wanted{false, Contrast::high}, Wanted{true, Contrast::high});
}

inline std::string nameOfWanted(const testing::TestParamInfo<Wanted>& test)
{
    return std::string(test.param.dark ? "dark" : "light") +
           (test.param.contrast == Contrast::high ? "HighContrast" : "");
}

} // namespace spotwell
