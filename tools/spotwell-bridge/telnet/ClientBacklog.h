// SPDX-FileCopyrightText: 2026 the spotwell developers
// SPDX-License-Identifier: MIT

#pragma once

#include "tools/spotwell-bridge/telnet/SentLines.h"

#include <QByteArray>
#include <QByteArrayList>
#include <QByteArrayView>

#include <cstdint>

namespace spotwell::bridge
{

/// What waits to be sent to one client: answers, and behind them the spot lines since it began to follow
/// them.
///
/// Where lines were forgotten before the client took them it is told how many. No line is ever cut by that.
class ClientBacklog
{
public:
    /// `lines` outlives the backlog.
    explicit ClientBacklog(const SentLines& lines) : lines_(lines) {}

    /// Adds what goes ahead of all spot lines that are not being sent yet.
    void add(const QByteArray& answer) { answers_.append(answer); }
    /// Lines sent from now on wait here too.
    void follow();
    /// No further line does.
    void unfollow() { follows_ = false; }

    [[nodiscard]] bool isEmpty() const;
    /// The bytes to be sent next, whole lines but for what taken() took of them; empty when nothing waits.
    /// Valid until the next call.
    [[nodiscard]] QByteArrayView next();
    /// The first `count` bytes of next() are on their way.
    void taken(qsizetype count);

    /// Lines are put together up to this many bytes, to be sent at once.
    static constexpr qsizetype pieceSize = qsizetype{16} * 1024;

private:
    void refill();
    [[nodiscard]] bool isBehind() const { return follows_ && position_ < lines_.end(); }

    const SentLines& lines_;
    QByteArrayList answers_;
    bool follows_ = false;
    /// The number of the line that comes next.
    std::uint64_t position_ = 0;
    /// What is being sent, and how much of it has been.
    QByteArray piece_;
    qsizetype sent_ = 0;
};

} // namespace spotwell::bridge
