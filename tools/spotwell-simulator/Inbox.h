// SPDX-FileCopyrightText: 2026 the spotwell developers
// SPDX-License-Identifier: MIT

#pragma once

#include "tools/spotwell-simulator/Report.h"

#include <QByteArray>

#include <deque>

namespace spotwell::simulator
{

/// What a client sent and no statement has taken yet, with the moments it came.
class Inbox
{
public:
    /// How what has come compares with what is expected.
    enum class Match { waiting, matched, different };

    struct Comparison {
        Match match = Match::waiting;
        /// How many bytes matched.
        qsizetype length = 0;
        /// When the last of them came.
        Moment at;
    };

    void add(const QByteArray& bytes, Moment at);
    [[nodiscard]] const QByteArray& bytes() const { return bytes_; }
    [[nodiscard]] bool isEmpty() const { return bytes_.isEmpty(); }

    /// Compares the beginning with `expected`.
    [[nodiscard]] Comparison compare(const QByteArray& expected) const;
    /// Looks for a whole line, its line feed included.
    [[nodiscard]] Comparison compareLine() const;
    /// Takes the first `length` bytes away.
    void take(qsizetype length);
    void clear() { take(bytes_.size()); }

private:
    struct Arrival {
        qsizetype end;
        Moment at;
    };
    [[nodiscard]] Comparison matched(qsizetype length) const;

    QByteArray bytes_;
    std::deque<Arrival> arrivals_;
};

} // namespace spotwell::simulator
