// SPDX-FileCopyrightText: 2026 the spotwell developers
// SPDX-License-Identifier: MIT

#pragma once

#include "tools/spotwell-bridge/telnet/NodeLimits.h"

#include <QByteArray>

#include <cstdint>
#include <deque>

namespace spotwell::bridge
{

/// The spot lines sent last, numbered from 0 in the order they were sent.
///
/// They are kept here once for all clients: one that is behind remembers a number, so however many there are
/// and however slow they are, nothing grows. The oldest lines are forgotten first.
class SentLines
{
public:
    /// `lines` and `bytes` of the limits hold; the newest line is kept in any case.
    explicit SentLines(const NodeLimits& limits) : limits_(limits) {}

    /// Takes a line with its end.
    void add(const QByteArray& line);
    /// The number of the oldest line that is kept.
    [[nodiscard]] std::uint64_t begin() const { return begin_; }
    /// The number that the next line will have.
    [[nodiscard]] std::uint64_t end() const { return begin_ + lines_.size(); }
    /// The line of a number from begin() to below end().
    [[nodiscard]] const QByteArray& at(std::uint64_t number) const { return lines_[number - begin_]; }

private:
    const NodeLimits limits_;
    std::deque<QByteArray> lines_;
    std::uint64_t begin_ = 0;
    qsizetype bytes_ = 0;
};

} // namespace spotwell::bridge
