// SPDX-FileCopyrightText: 2026 the spotwell developers
// SPDX-License-Identifier: MIT

#pragma once

#include "tools/spotwell-simulator/Connection.h"
#include "tools/spotwell-simulator/Cursor.h"
#include "tools/spotwell-simulator/Pace.h"
#include "tools/spotwell-simulator/SpotLines.h"

#include <deque>
#include <functional>
#include <optional>

namespace spotwell::simulator
{

/// Plays one session of a scenario to one client.
///
/// Every wake-up looks at the current statement anew until one has to wait. When the client has left,
/// statements that send or wait are passed over and checks go on being checked. A failed check ends the
/// session.
class NodeSession final : public Connection
{
public:
    NodeSession(std::unique_ptr<PeerSocket> socket, int number, const Setting& setting,
                std::function<void()> over);

private:
    /// A statement whose bytes are in the queue.
    struct Unsent {
        int line;
        /// Its last byte, counted from the beginning of the connection.
        qint64 end;
        qint64 bytes;
        qint64 lines;
    };

    void play() override;
    void received(const QByteArray& bytes) override;
    void reportSent() override;

    /// As settled(), and notes the statement's beginning.
    bool begun();
    void queue(const QByteArray& bytes);
    /// Notes that the current statement has queued its last byte; its "sent" follows when that one has left.
    void noteSent(qint64 bytes, qint64 lines);
    void reportProgress();

    // Each plays one statement as far as it goes now; whether it is finished.
    bool advance(const Send& send);
    bool advance(const Cut& cut);
    bool advance(const Spots& spots);
    bool advance(const Flood& flood);
    bool advance(const Wait& wait);
    bool advance(const ExpectText& expect);
    bool advance(const ExpectNothing& expect);
    bool advance(const ExpectClose& expect);
    bool advance(const StaySilent& stay);
    bool advance(const HalfClose& halfClose);
    bool advance(const Close& close);
    bool advance(const Reset& reset);
    bool advance(const Repeat& repeat);

    bool judge(const QString& what, const Inbox::Comparison& found, const ExpectText& expect);
    [[nodiscard]] QString unread() const;

    Cursor cursor_;
    SpotLines spotLines_;
    std::deque<Unsent> unsent_;
    qint64 queuedInAll_ = 0;

    // Of the current statement.
    std::optional<Moment> startedAt_;
    std::optional<Moment> arrivedAt_;
    qint64 produced_ = 0;
    qint64 producedBytes_ = 0;
    Moment reportedAt_;
};

} // namespace spotwell::simulator
