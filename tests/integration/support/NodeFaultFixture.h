// SPDX-FileCopyrightText: 2026 the spotwell developers
// SPDX-License-Identifier: MIT

#pragma once

#include "tests/integration/support/ClockFixture.h"
#include "tests/integration/support/ScreenReader.h"
#include "tests/integration/support/WindowPing.h"

#include <memory>
#include <optional>

namespace spotwell
{

/// The shipped program with a node in trouble, a wall clock in the test's hands, a logger, and a user who has
/// the window read to him. What the console shows and what the log says is expected line by line.
class NodeFaultFixture : public ClockFixture
{
protected:
    /// Starts the program with `node` under this name and "reconnect" on; `libraries` are loaded before it.
    /// When this returns it has begun to connect.
    void open(const QString& host = QStringLiteral("127.0.0.1"), const QStringList& libraries = {},
              const QStringList& variables = {});
    /// Likewise; there is a connection when this returns.
    void openConnected();
    /// The node asks for the callsign and gets it.
    void logIn();
    /// The node sends a spot, which is shown, and reaches the logger as the next one.
    void passSpot();
    /// A minute later the connection is made anew, and a spot passes.
    void comeBack();
    /// Without anybody doing anything, the connection is made anew, and a spot passes.
    void comeBackByItself();
    /// A connection is begun.
    void seeOpened();
    /// Likewise, and announced before.
    void seeReconnection();
    /// The window answers, the program ends in order, its settings are saved, and it says no more than it has
    /// to.
    void endInOrder(bool reconnect = true);

    /// Waits until the console shows these lines next, after those that were expected before.
    void see(const QStringList& lines);
    void seeInAnyOrder(QStringList lines);
    /// Likewise with the log's entries. When a socket has space is left out.
    void read(const QStringList& entries);
    /// That the connection is closed, and the toggle off; `last` is shown behind it.
    void seeClosed(const QString& last = {});
    /// That the node is left after this long a silence, and at once met again.
    void seeLeftForSilence(const QString& minutes);
    /// Waits until the connect toggle is on, or off.
    void seeToggle(bool on);
    /// Whether nothing new is shown or logged while the supervision looks twice.
    [[nodiscard]] bool staysQuiet();

    QString host;
    /// These have threads, and are there once the program is: a process with threads cannot start others
    /// under ThreadSanitizer.
    std::optional<ScreenReader> user;
    std::optional<WindowPing> ping;
    std::unique_ptr<BusPeer> logger = makeLogger(QStringLiteral("6.45"));

private:
    [[nodiscard]] QStringList newLines();
    [[nodiscard]] QStringList newEntries() const;

    qsizetype seen_ = 0;
    qsizetype read_ = 0;
    int spots_ = 0;
};

inline const QString toggleName = QStringLiteral("Connection to the DX cluster");
inline const QString reconnectName = QStringLiteral("Reconnect to the DX cluster");
inline const QString waitedForData = QStringLiteral("Waited 30 seconds for data, giving up.");
/// What the log says when "quit" goes to the node.
inline const QString quitEntry = QStringLiteral("DXClusterController:sendTelnet:[5]characters:quit");

} // namespace spotwell
