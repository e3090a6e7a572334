// SPDX-FileCopyrightText: 2026 the spotwell developers
// SPDX-License-Identifier: MIT

#pragma once

#include "tests/integration/support/ProgramFixture.h"
#include "tests/integration/support/SteppedClock.h"

#include <optional>

namespace spotwell
{

/// The shipped program with a wall clock that moves only when the test steps it.
class ClockFixture : public ProgramFixture
{
protected:
    using Time = SteppedClock::Time;

    /// What an entry of the log says of itself when it was written; that of the `number`th with this text,
    /// counted from 1.
    [[nodiscard]] std::optional<Time> timeOf(const QString& text, int number = 1) const;

    SteppedClock clock{home.filePath(QStringLiteral("clock"))};
};

} // namespace spotwell
