// SPDX-FileCopyrightText: 2026 the spotwell developers
// SPDX-License-Identifier: MIT

#pragma once

#include "tests/integration/support/Home.h"
#include "tests/support/bus/ChildProcess.h"

#include <QString>
#include <QStringList>

#include <cstdint>
#include <optional>

namespace spotwell::bridge
{

/// tlf, a contest logger, in a terminal of 100 columns and 40 rows and in a home of its own. It connects to a
/// node and gives the callsign N0CALL by itself.
class Tlf
{
public:
    /// Starts it with a node on loopback.
    explicit Tlf(std::uint16_t port);

    /// What the terminal shows, row by row.
    [[nodiscard]] QStringList screen() const;
    /// Waits until some row contains this.
    [[nodiscard]] bool shows(const QString& text) const;
    /// Passes its greeting, which waits for a key, and waits for its main screen.
    [[nodiscard]] bool becomesReady() const;
    /// Types a text and the return key.
    void enter(const QString& text) const;
    /// All that it has received from the node, as it saves it.
    [[nodiscard]] QString received() const;

private:
    [[nodiscard]] QByteArray tmux(const QStringList& arguments) const;
    [[nodiscard]] QStringList tmuxCommand() const;

    Home home_;
    std::optional<ChildProcess> terminals_;
};

} // namespace spotwell::bridge
