// SPDX-FileCopyrightText: 2026 the spotwell developers
// SPDX-License-Identifier: MIT

#pragma once

#include "delivery/Spot.h"
#include "platform/Log.h"
#include "platform/TextConverter.h"

#include <QString>

namespace spotwell
{

/// The built-in test line: a spot line with two double quotes, decoded like a node's own. Any thread.
[[nodiscard]] QString builtInTestLine(const TextConverter& converter, Log& log);

/// The built-in test spot, made at `now`.
[[nodiscard]] Spot builtInTestSpot(TimePoint now);

} // namespace spotwell
