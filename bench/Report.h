// SPDX-FileCopyrightText: 2026 the spotwell developers
// SPDX-License-Identifier: MIT

#pragma once

#include <QString>

#include <vector>

namespace spotwell::bench
{

/// The value that half of `values` do not exceed; 0 for none.
[[nodiscard]] double median(std::vector<double> values);
/// The value that the `share` (0 to 1) of `values` do not exceed; 0 for none.
[[nodiscard]] double quantile(std::vector<double> values, double share);

/// The median of the `values` of several runs, the least and the greatest behind it; there must be a value.
[[nodiscard]] QString inTable(const std::vector<double>& values, int decimals);
/// Processors and kernel of this machine.
[[nodiscard]] QString machine();

} // namespace spotwell::bench
