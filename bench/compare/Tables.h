// SPDX-FileCopyrightText: 2026 the spotwell developers
// SPDX-License-Identifier: MIT

#pragma once

#include "bench/compare/Measures.h"

#include <QString>
#include <QStringList>

#include <vector>

namespace spotwell::bench
{

/// The figures of programs, in Markdown. `names` and `figures` belong together; what was not measured of a
/// program is a dash.
struct Tables {
    QStringList names;
    std::vector<Figures> figures;

    /// Medians, least and greatest in parentheses.
    [[nodiscard]] QString measured() const;
    /// Each program's median divided by the first one's.
    [[nodiscard]] QString ratios() const;
    /// What is hoped for of the first program, and what came of it. Targets whose figures are missing are
    /// left out.
    [[nodiscard]] QString targets() const;
};

} // namespace spotwell::bench
