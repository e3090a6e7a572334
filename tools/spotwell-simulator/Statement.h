// SPDX-FileCopyrightText: 2026 the spotwell developers
// SPDX-License-Identifier: MIT

#pragma once

#include "platform/Time.h"
#include "tools/spotwell-simulator/SpotLines.h"

#include <QByteArray>

#include <optional>
#include <variant>
#include <vector>

namespace spotwell::simulator
{

struct Statement;

/// Sends bytes. What is sent without a pause in between leaves together.
struct Send {
    QByteArray bytes;
};

/// Ends a packet: waits until the client's system has what was sent, then `pause` longer.
struct Cut {
    Seconds pause;
};

/// Sends generated spot lines.
struct Spots {
    int count;
    /// Lines a second; absent for as fast as possible.
    std::optional<double> rate;
    SpotFormat format;
};

/// Sends filler.
struct Flood {
    qint64 bytes;
    bool oneLine;
};

struct Wait {
    Seconds duration;
};

/// Checks what the client sends next.
struct ExpectText {
    /// The exact bytes; absent for any one line.
    std::optional<QByteArray> bytes;
    /// Not earlier than this after the node's last bytes.
    std::optional<Seconds> after;
    /// Counted like `after` when that is given, else from the beginning of the statement.
    Seconds within;
};

/// Checks that nothing comes and the client stays.
struct ExpectNothing {
    Seconds duration;
};

/// Checks that the client leaves.
struct ExpectClose {
    Seconds within;
    /// Whether text before the end is accepted.
    bool ignoringText;
};

/// Waits for the client to leave, reading and ignoring what it sends.
struct StaySilent {
    /// Absent for as long as the client stays.
    std::optional<Seconds> duration;
};

/// Ends the sending direction and goes on reading.
struct HalfClose {
};

/// Ends the connection after what was sent.
struct Close {
};

/// Ends the connection with a TCP reset.
struct Reset {
};

struct Repeat {
    /// Absent for as long as the client stays.
    std::optional<int> times;
    std::vector<Statement> body;
};

/// One statement of a scenario.
struct Statement {
    /// The line of the file it stands on, from 1.
    int line;
    std::variant<Send, Cut, Spots, Flood, Wait, ExpectText, ExpectNothing, ExpectClose, StaySilent, HalfClose,
                 Close, Reset, Repeat>
        what;
};

} // namespace spotwell::simulator
