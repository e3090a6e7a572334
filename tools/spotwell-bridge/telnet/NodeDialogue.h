// SPDX-FileCopyrightText: 2026 the spotwell developers
// SPDX-License-Identifier: MIT

#pragma once

#include "platform/Time.h"
#include "tools/spotwell-bridge/telnet/SentLines.h"
#include "tools/spotwell-bridge/telnet/TelnetInput.h"

#include <QByteArray>
#include <QByteArrayList>

#include <cstddef>
#include <optional>

namespace spotwell::bridge
{

/// `text` as a callsign in capitals: 3 to 15 letters, digits, strokes and hyphens, a letter and a digit among
/// them, with or without blanks around. Absent when it is none.
[[nodiscard]] std::optional<QByteArray> callsignOf(const QByteArray& text);

/// What the node says to a line of a client.
struct Answer {
    /// Pieces to send one after another. Spot lines among them are shared, not copied.
    QByteArrayList pieces;
    /// The connection ends behind them.
    bool ends = false;
};

/// The node's side of a dialogue with one client: the login, then commands.
class NodeDialogue
{
public:
    /// `lines` outlives the dialogue.
    explicit NodeDialogue(const SentLines& lines) : lines_(lines) {}

    /// What the node says first.
    [[nodiscard]] static QByteArray opening();
    /// What it says to `line`, which came at `now`.
    [[nodiscard]] Answer answer(const InputLine& line, TimePoint now);
    /// What it says when it is the node that ends the dialogue between two lines.
    [[nodiscard]] QByteArray goodbye() const;

    [[nodiscard]] bool isLoggedIn() const { return !callsign_.isEmpty(); }
    /// Empty before the login.
    [[nodiscard]] const QByteArray& callsign() const { return callsign_; }

    /// Spots for sh/dx without a number, and the most there are.
    static constexpr std::size_t usualSpots = 10;
    static constexpr std::size_t mostSpots = 100;
    /// Answers to the question for a callsign that may fail, the last one with the end.
    static constexpr int mostFailures = 3;

private:
    Answer logIn(const InputLine& line, TimePoint now);
    [[nodiscard]] Answer obey(const QByteArray& command, TimePoint now) const;
    [[nodiscard]] QByteArrayList spots(const QByteArray& count) const;

    const SentLines& lines_;
    QByteArray callsign_;
    int failures_ = 0;
};

} // namespace spotwell::bridge
