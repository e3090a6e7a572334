#pragma once

#include "bench/end-to-end/Run.h"

#include <QByteArray>
#include <QString>

#include <map>
#include <vector>

namespace spotwell::bench
{

/// The value that half of `values` do not exceed; 0 for none.
[[nodiscard]] double median(std::vector<double> values);
/// The value that the `share` (0 to 1) of `values` do not exceed; 0 for none.
[[nodiscard]] double quantile(std::vector<double> values, double share);

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
