// SPDX-FileCopyrightText: 2026 the spotwell developers
// SPDX-License-Identifier: MIT

#pragma once

#include "tools/spotwell-simulator/Scenario.h"

#include <cstddef>
#include <optional>
#include <vector>

namespace spotwell::simulator
{

/// Goes through the statements of a session, in and out of its repetitions. Refers to the session, which has
/// to outlive it.
class Cursor
{
public:
    explicit Cursor(const Session& session) : frames_{{&session, 0, 1}} {}

    /// The statement to play; null behind the last one.
    [[nodiscard]] const Statement* current() const;
    /// Goes on to the next statement. Without `anotherRound`, running repetitions end with their round.
    void next(bool anotherRound);
    /// Goes into the body of `repeat`, the current statement.
    void enter(const Repeat& repeat);

private:
    struct Frame {
        const Session* block;
        std::size_t index;
        std::optional<int> rounds;
    };
    std::vector<Frame> frames_;
};

} // namespace spotwell::simulator
