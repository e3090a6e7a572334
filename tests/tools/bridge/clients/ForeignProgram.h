// SPDX-FileCopyrightText: 2026 the spotwell developers
// SPDX-License-Identifier: MIT

#pragma once

#include "tests/integration/support/Home.h"

#include <QStringList>

#include <string>
#include <vector>

namespace spotwell::bridge
{

/// The command that starts a program which is not ours: in `home`, with `variables` ("NAME=VALUE") and little
/// else. Nothing of the test's own environment reaches it, what is meant for sanitizers least of all.
[[nodiscard]] std::vector<std::string> foreignCommand(const Home& home, const QStringList& variables,
                                                      const QStringList& command);

} // namespace spotwell::bridge
