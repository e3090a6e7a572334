// SPDX-FileCopyrightText: 2026 the spotwell developers
// SPDX-License-Identifier: MIT

#pragma once

#include "platform/Log.h"
#include "platform/Time.h"
#include "tools/spotwell-bridge/telnet/ClientBacklog.h"
#include "tools/spotwell-bridge/telnet/NodeDialogue.h"
#include "tools/spotwell-bridge/telnet/NodeLimits.h"
#include "tools/spotwell-bridge/telnet/TelnetInput.h"

#include <QSocketNotifier>
#include <QString>

#include <chrono>
#include <functional>
#include <memory>

namespace spotwell::bridge
{

/// One client's connection.
///
/// Works on the bare socket: Qt's socket class closes as soon as the client has ended its side, before what
/// the client asked for is answered, and copies what it is given to write.
class NodeClient
{
public:
    /// What all clients share; each part outlives them.
    struct Setting {
        const SentLines& lines;
        const Clock& clock;
        const MonotonicClock& monotonic;
        const NodeLimits& limits;
        Log& log;
    };

    /// Called with the client when its isOver() or isWatched() may have become true; must not destroy it.
    using Changed = std::function<void(const NodeClient&)>;

    /// Takes over the connected, non-blocking socket `descriptor`.
    NodeClient(int descriptor, const Setting& setting, Changed changed);
    ~NodeClient();
    NodeClient(const NodeClient&) = delete;
    NodeClient& operator=(const NodeClient&) = delete;

    /// Opens the dialogue.
    void start();
    /// Sends what lines there are for it, if it takes any now.
    void wake();
    /// Says goodbye, if it takes that now, and closes.
    void dismiss();
    /// Drops the client if one of the limits' times has run out at `now`.
    void look(std::chrono::steady_clock::time_point now);

    /// Drops the client if it has taken longer over its login than it may while others have no room. Whether
    /// it did.
    bool giveWay(std::chrono::steady_clock::time_point now);

    /// The connection is closed; nothing more happens.
    [[nodiscard]] bool isOver() const { return descriptor_ < 0; }
    /// One of the limits' times is running.
    [[nodiscard]] bool isWatched() const;

private:
    void readyToRead();
    void goOn();
    void answerNextLine();
    void send();
    void leave();
    void drop(const QString& reason);
    void close();
    void closeSocket();
    [[nodiscard]] QString name() const;

    int descriptor_;
    const Setting setting_;
    const Changed changed_;
    std::unique_ptr<QSocketNotifier> reading_;
    std::unique_ptr<QSocketNotifier> writing_;
    QString address_;

    TelnetInput input_;
    NodeDialogue dialogue_;
    ClientBacklog backlog_;
    /// What was read and has not been answered. Nothing is answered or read while something waits to be sent,
    /// so a client that asks without listening makes nothing grow.
    QByteArray unread_;
    bool inputEnded_ = false;
    bool ending_ = false;
    /// All is said and this side closed; only the client's side is waited for.
    bool leaving_ = false;
    /// When the present wait began: for the login, for what waits to be taken, for the client's side to
    /// close.
    std::chrono::steady_clock::time_point connected_;
    std::chrono::steady_clock::time_point lastTaken_;
    std::chrono::steady_clock::time_point left_;
};

} // namespace spotwell::bridge
