// SPDX-FileCopyrightText: 2026 the spotwell developers
// SPDX-License-Identifier: MIT

#pragma once

#include "cluster/ClusterHost.h"
#include "platform/Log.h"
#include "platform/Queues.h"

#include <QString>
#include <QStringList>

namespace spotwell
{

/// The text of one read, cut into lines: carriage returns and bells removed, split at line feeds, empty lines
/// kept. What stands behind the last line feed is a line of its own.
[[nodiscard]] QStringList linesOfChunk(const QString& text);

/// Whether `line` is a spot for the logger: at least 75 characters, beginning with "DX de ".
[[nodiscard]] bool isSpotLine(const QString& line);

/// Whether `line` asks for the callsign: it holds one of the known prompts, in any case, and not "qrx:".
[[nodiscard]] bool isCallsignPrompt(const QString& line);

/// Whether `line` asks for the password, in any case.
[[nodiscard]] bool isPasswordPrompt(const QString& line);

/// What the login dialogue needs of the connection.
class LoginLine
{
public:
    virtual ~LoginLine() = default;
    /// Whether prompts are answered: since the first connection of the process was made. From any thread.
    [[nodiscard]] virtual bool promptsAreArmed() const = 0;
    /// Writes `text` to the node. Main thread.
    virtual void sendTelnet(const QString& text) = 0;
    /// Notes that the login was sent. Main thread.
    virtual void setLoggedIn() = 0;
};

/// Treats the lines of the node: shows each, passes the spots on and answers the login prompts.
class LineAssembly
{
public:
    LineAssembly(ClusterHost& host, LoginLine& line, MainQueue& mainQueue, Log& log);

    /// Treats the lines of one read, heard from `node`, in order. On the buffer queue.
    void processInputStream(const QStringList& lines, const QString& node);
    /// Has login() called once, 1.0 s from now. Main thread.
    void startLogintimer();
    /// Sends the callsign. Main thread.
    void login();

private:
    void answerPrompts(const QString& line);

    ClusterHost& host_;
    LoginLine& line_;
    MainQueue& mainQueue_;
    Log& log_;
};

} // namespace spotwell
