// SPDX-FileCopyrightText: 2026 the spotwell developers
// SPDX-License-Identifier: MIT

#pragma once

#include "bench/end-to-end/Run.h"

#include <QByteArray>
#include <QString>

#include <map>
#include <vector>

namespace spotwell::bench
{

/// All runs that were made.
struct Summary {
    /// By rate.
    std::map<int, std::vector<RunFigures>> runs;
    /// At the lowest of the rates.
    std::vector<BareWindowFigures> bareWindow;
    int seconds = 0;
    int idleSeconds = 0;

    /// Medians of the runs, and where it matters the least and the greatest.
    [[nodiscard]] QString table() const;
    /// Every run.
    [[nodiscard]] QByteArray json() const;
};

} // namespace spotwell::bench
