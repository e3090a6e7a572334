// SPDX-FileCopyrightText: 2026 the spotwell developers
// SPDX-License-Identifier: MIT

#pragma once

#include "tools/spotwell-simulator/ScenarioWords.h"
#include "tools/spotwell-simulator/Statement.h"

#include <QString>

namespace spotwell::simulator
{

/// A statement of a single line, or what is wrong with it.
struct ParsedStatement {
    Statement statement;
    /// Null when the line is well formed.
    QString error;
};

/// Parses the words of one line; `words` holds at least one. For "repeat" the body is left empty.
ParsedStatement parseStatement(const std::vector<Word>& words, int line);

} // namespace spotwell::simulator
