#pragma once

#include "tools/spotwell-simulator/Cursor.h"
#include "tools/spotwell-simulator/Inbox.h"
#include "tools/spotwell-simulator/NodeSocket.h"
#include "tools/spotwell-simulator/Pace.h"
#include "tools/spotwell-simulator/Report.h"
#include "tools/spotwell-simulator/Scenario.h"
#include "tools/spotwell-simulator/SpotLines.h"

#include <QTimer>

#include <deque>
#include <functional>
#include <optional>

namespace spotwell::simulator
{

/// What no client can exceed.
struct NodeLimits {
    /// How long a client may take no bytes while some wait for it.
    Seconds stall{30.0};
    /// How long the node waits for the client's end after its own.
    Seconds farewell{2.0};
    /// Bytes kept of what the client sent and no statement expects.
    qsizetype unread = 1 << 16;
};

/// Plays one session of a scenario to one client and reports what happens.
///
/// Every wake-up looks at the current statement anew until one has to wait. When the client has left,
/// statements that send or wait are passed over and checks go on being checked. A failed check ends the
/// session.
class NodeSession
{
public:
    /// What a session needs; all of it outlives the session.
    struct Setting {
        const Scenario& scenario;
        const Clock& clock;
        const Report& report;
        NodeLimits limits;
    };

    /// Takes over the connected, non-blocking socket `descriptor` of connection `number`, counted from 1.
    /// `over` is called once, when the connection has ended; it must not destroy the session.
    NodeSession(int descriptor, int number, const Setting& setting, std::function<void()> over);

    void start();
    /// Ends the connection at once.
    void abandon();

    [[nodiscard]] bool isOver() const { return phase_ == Phase::over; }
    [[nodiscard]] int passedChecks() const { return passed_; }
    [[nodiscard]] int failedChecks() const { return failed_; }
    /// Bytes that wait to be sent.
    [[nodiscard]] qsizetype queued() const { return socket_.queued(); }

private:
    enum class Phase { playing, leaving, over };

    /// A statement whose bytes are in the queue.
    struct Unsent {
        int line;
        /// Its last byte, counted from the beginning of the connection.
        qint64 end;
        qint64 bytes;
        qint64 lines;
    };

    void wake();
    void play();
    void leave();
    void beginToLeave();
    void end(const QString& how);
    void receive();
    void watchForStall();
    void wakeAt(Moment moment);
    void armTimer();

    /// Flushes; whether nothing waits to be sent.
    bool settled();
    /// As settled(), and notes the statement's beginning.
    bool begun();
    void queue(const QByteArray& bytes);
    /// Notes that the current statement has queued its last byte; its "sent" follows when that one has left.
    void noteSent(qint64 bytes, qint64 lines);
    void reportSent();
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

    [[nodiscard]] Event event(const char* name, Moment time) const;
    [[nodiscard]] Event check(const char* result, const QString& what, Moment time) const;
    bool pass(const QString& what, Moment at);
    /// Reports the failure and begins to leave; false, as the session's statements are over.
    bool fail(const QString& what, const QString& why);
    bool judge(const QString& what, const Inbox::Comparison& found, const ExpectText& expect);
    [[nodiscard]] QString unread() const;
    [[nodiscard]] Seconds sinceLastSend(Moment moment) const { return moment - socket_.lastWrite(); }

    const int number_;
    const Setting setting_;
    std::function<void()> over_;
    NodeSocket socket_;
    QTimer timer_;
    Cursor cursor_;
    Inbox inbox_;
    SpotLines spotLines_;
    std::deque<Unsent> unsent_;
    Phase phase_ = Phase::playing;
    Moment now_;
    std::optional<Moment> wakeUp_;
    std::optional<Moment> stalledSince_;
    std::optional<Moment> leavingSince_;
    QString leftBy_;
    qint64 queuedInAll_ = 0;
    int passed_ = 0;
    int failed_ = 0;

    // Of the current statement.
    int line_ = 0;
    std::optional<Moment> startedAt_;
    std::optional<Moment> arrivedAt_;
    qint64 produced_ = 0;
    qint64 producedBytes_ = 0;
    Moment reportedAt_;
};

} // namespace spotwell::simulator
