// SPDX-FileCopyrightText: 2026 the spotwell developers
// SPDX-License-Identifier: MIT

#pragma once

#include "platform/Queues.h"

#include <QString>

namespace spotwell
{

/// What the cluster session needs of the program around it. Main thread, unless it says otherwise.
class ClusterHost
{
public:
    virtual ~ClusterHost() = default;

    /// The texts of the four fields, as they are now.
    [[nodiscard]] virtual QString dxclusterText() const = 0;
    [[nodiscard]] virtual QString portText() const = 0;
    [[nodiscard]] virtual QString callsignText() const = 0;
    [[nodiscard]] virtual QString passwordText() const = 0;
    /// Whether the password field holds nothing. From any thread.
    [[nodiscard]] virtual bool passwordIsEmpty() const = 0;

    /// The state of the reconnect box.
    [[nodiscard]] virtual bool reconnectIsOn() const = 0;
    virtual void setReconnect(bool on) = 0;
    /// Sets the connect toggle, without acting on it.
    virtual void setConnected(bool on) = 0;

    /// Appends one entry to the console, behind all that was posted.
    virtual void appendText(const QString& text) = 0;
    /// Has the main thread append one entry to the console, soon. From any thread; does not wait.
    virtual void postText(const QString& text) = 0;
    /// Warns in the log when the calling thread is not the main one. From any thread.
    virtual void threadCheckWarning() const = 0;

    /// The queue on which received lines are treated.
    [[nodiscard]] virtual SerialQueue& bufferQueue() = 0;
    /// Takes a spot line heard from `node` on its way to the logger. From any thread; does not wait.
    virtual void takeSpotLine(const QString& line, const QString& node) = 0;
};

} // namespace spotwell
