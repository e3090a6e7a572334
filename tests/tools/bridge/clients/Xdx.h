// SPDX-FileCopyrightText: 2026 the spotwell developers
// SPDX-License-Identifier: MIT

#pragma once

#include "tests/integration/support/Home.h"
#include "tests/integration/support/VirtualScreen.h"

#include <QString>
#include <QStringList>

#include <cstdint>
#include <optional>

namespace spotwell::bridge
{

/// xdx, a DX cluster client with a window, at a screen and in a home of its own. It gives the callsign N0CALL
/// by itself, and saves what it shows.
class Xdx
{
public:
    /// Starts it with a node on loopback in its history.
    explicit Xdx(std::uint16_t port);

    /// Opens the connection, as a user at the keyboard. Waits for the windows that takes.
    void connect();
    /// The lines that it has taken for spots and shows in its list.
    [[nodiscard]] QStringList spots() const;
    /// What else the node has said.
    [[nodiscard]] QString messages() const;
    /// Double-clicks on its list from top to bottom. It then sends each spot's frequency to a radio.
    void chooseEverySpot() const;
    /// The frequencies a radio was set to, in Hz.
    [[nodiscard]] QStringList tunedTo() const;
    /// Keeps the screen as NAME.png in the directory SPOTWELL_PICTURES, if there is one.
    void keepPicture(const QString& name) const;

private:
    /// Waits for a visible window with this title. Its id.
    [[nodiscard]] QString window(const QString& title) const;
    [[nodiscard]] QStringList xdotool(const QStringList& arguments) const;
    [[nodiscard]] QByteArray saved(const QString& name) const;

    Home home_;
    VirtualScreen screen_;
    std::optional<ChildProcess> process_;
};

} // namespace spotwell::bridge
