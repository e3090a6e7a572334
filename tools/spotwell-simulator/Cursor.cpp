// SPDX-FileCopyrightText: 2026 the spotwell developers
// SPDX-License-Identifier: MIT

#include "tools/spotwell-simulator/Cursor.h"

namespace spotwell::simulator
{

const Statement* Cursor::current() const
{
    const Frame& frame = frames_.back();
    return frame.index < frame.block->size() ? &(*frame.block)[frame.index] : nullptr;
}

void Cursor::next(bool anotherRound)
{
    ++frames_.back().index;
    while (frames_.size() > 1 && !current()) {
        Frame& frame = frames_.back();
        if (frame.rounds)
            --*frame.rounds;
        if (anotherRound && frame.rounds != 0) {
            frame.index = 0;
        } else {
            frames_.pop_back();
            ++frames_.back().index;
        }
    }
}

void Cursor::enter(const Repeat& repeat)
{
    frames_.push_back({&repeat.body, 0, repeat.times});
}

} // namespace spotwell::simulator
