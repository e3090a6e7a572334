// SPDX-FileCopyrightText: 2026 the spotwell developers
// SPDX-License-Identifier: MIT

#pragma once

#include "platform/Time.h"
#include "tools/spotwell-simulator/Inbox.h"
#include "tools/spotwell-simulator/PeerSocket.h"
#include "tools/spotwell-simulator/Report.h"
#include "tools/spotwell-simulator/Scenario.h"

#include <QTimer>

#include <functional>
#include <memory>
#include <optional>

namespace spotwell::simulator
{

/// What no client can exceed.
struct ConnectionLimits {
    /// How long a client may take no bytes while some wait for it.
    Seconds stall{30.0};
    /// How long this side waits for the client's end after its own.
    Seconds farewell{2.0};
    /// Bytes kept of what the client sent and nothing has taken yet.
    qsizetype unread = 1 << 16;
};

/// One client's connection, whatever is played on it: wakes up when something happens or is due, ends in
/// order, and reports what happens.
class Connection
{
public:
    /// What a connection needs; all of it outlives the connection.
    struct Setting {
        const Scenario& scenario;
        const Clock& clock;
        const Report& report;
        ConnectionLimits limits;
    };

    /// `number` counts the connections of a scenario from 1; `side` is what the report calls this side.
    /// `over` is called once, when the connection has ended; it must not destroy the connection.
    Connection(std::unique_ptr<PeerSocket> socket, int number, const Setting& setting, const QString& side,
               std::function<void()> over);
    virtual ~Connection() = default;
    Connection(const Connection&) = delete;
    Connection& operator=(const Connection&) = delete;

    void start();
    /// Ends the connection at once.
    void abandon();

    [[nodiscard]] bool isOver() const { return phase_ == Phase::over; }
    [[nodiscard]] int passedChecks() const { return passed_; }
    [[nodiscard]] int failedChecks() const { return failed_; }
    /// Bytes that wait to be sent.
    [[nodiscard]] qsizetype queued() const { return socket_->queued(); }

protected:
    /// Goes on as far as it is possible now.
    virtual void play() = 0;
    /// Bytes came and lie in inbox_.
    virtual void received(const QByteArray& bytes) = 0;
    /// Bytes of the queue have been handed to the system.
    virtual void reportSent() = 0;

    [[nodiscard]] bool isPlaying() const { return phase_ == Phase::playing; }
    void beginToLeave();
    /// Ends the connection with a reset.
    void breakOff();
    void wakeAt(Moment moment);
    /// Flushes; whether nothing waits to be sent.
    bool settled();

    [[nodiscard]] Event event(const char* name, Moment time) const;
    /// Reports that the check held at `at`; true.
    bool pass(const QString& what, Moment at);
    /// Reports the failure and begins to leave; false, as what was to be played is over.
    bool fail(const QString& what, const QString& why);
    [[nodiscard]] Seconds sinceLastSend(Moment moment) const { return moment - socket_->lastWrite(); }

    const int number_;
    const Setting setting_;
    const std::unique_ptr<PeerSocket> socket_;
    Inbox inbox_;
    /// The time of the present wake-up.
    Moment now_;
    /// The scenario's line that is being played.
    int line_ = 0;

private:
    enum class Phase { playing, leaving, over };

    void wake();
    void leave();
    void end(const QString& how);
    void receive();
    void watchForStall();
    void armTimer();
    [[nodiscard]] Event check(const char* result, const QString& what, Moment time) const;

    const QString side_;
    std::function<void()> over_;
    QTimer timer_;
    Phase phase_ = Phase::playing;
    std::optional<Moment> wakeUp_;
    std::optional<Moment> stalledSince_;
    std::optional<Moment> leavingSince_;
    QString leftBy_;
    int passed_ = 0;
    int failed_ = 0;
};

/// `span` in the clock's own units, rounded up so that nothing is early.
inline Moment::duration ticks(Seconds span)
{
    return std::chrono::ceil<Moment::duration>(span);
}

} // namespace spotwell::simulator
