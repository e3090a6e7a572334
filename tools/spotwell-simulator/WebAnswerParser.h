// SPDX-FileCopyrightText: 2026 the spotwell developers
// SPDX-License-Identifier: MIT

#pragma once

#include "tools/spotwell-simulator/ScenarioWords.h"
#include "tools/spotwell-simulator/WebAnswer.h"

#include <QString>

namespace spotwell::simulator
{

/// Adds to `answer` what the words of one line say; `words` holds at least one. Files are looked for in
/// `folder`. What is wrong with the line; null when nothing is.
QString addToAnswer(WebAnswer& answer, const std::vector<Word>& words, int line, const QString& folder);

/// What is wrong with the answer as a whole, once its last line was added; null when nothing is.
QString faultOf(const WebAnswer& answer);

} // namespace spotwell::simulator
