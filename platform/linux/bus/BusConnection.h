// SPDX-FileCopyrightText: 2026 the spotwell developers
// SPDX-License-Identifier: MIT

#pragma once

#include "platform/linux/WakeUp.h"
#include "platform/linux/bus/SessionBus.h"

#include <QString>

#include <chrono>
#include <functional>
#include <memory>
#include <optional>
#include <string>

namespace spotwell
{

/// Releases what sd-bus hands out.
struct BusRelease {
    void operator()(sd_bus* bus) const { sd_bus_close_unref(bus); }
    void operator()(sd_bus_slot* slot) const { sd_bus_slot_unref(slot); }
    void operator()(sd_bus_message* message) const { sd_bus_message_unref(message); }
};
/// A question whose answer is still wanted; letting go of it forgets the question.
using BusSlot = std::unique_ptr<sd_bus_slot, BusRelease>;
using BusMessage = std::unique_ptr<sd_bus_message, BusRelease>;

/// How a method call ended.
struct BusReply {
    enum class End { answered, failed, late, lost, woken };
    End end = End::late;
    /// With `failed`: what went wrong, at most 500 characters.
    QString error;
    /// The D-Bus error's name; empty when there was no answer.
    QString errorName;
};

/// The text of an error answer, or the error's name when it has none; at most 500 characters.
[[nodiscard]] QString busErrorText(sd_bus_message* message);

/// One private connection to the session bus that never blocks longer than its user allows, even when the bus
/// hangs: sd-bus's own blocking calls (sd_bus_call() and whatever waits for the connection to be accepted)
/// are not used.
///
/// To be used by one thread at a time. Messages that others send without being asked are taken in and
/// dropped.
class BusConnection
{
public:
    using Clock = std::chrono::steady_clock;
    using Deadline = Clock::time_point;

    /// How many messages are taken in at a stretch: a peer that floods the connection cannot hold its user.
    static constexpr int maxMessagesAtOnce = 1000;

    /// A descriptor (-1 for none) with the events of poll(), and a point in time: whichever comes first.
    struct Interest {
        int descriptor = -1;
        short events = 0;
        Deadline due = Deadline::max();
    };

    /// `description` names the connection in the bus's own tools.
    BusConnection(SessionBus& bus, std::string description);

    /// Takes in what has arrived, then makes sure that there is a connection: begins one when there is none,
    /// at most once a second. False when there is none now. Does not wait, but in a sandbox: there a quarter
    /// of a second at most (SandboxBus.h).
    bool open();
    void close() { bus_.reset(); }
    /// The connection, for sending; null when there is none.
    [[nodiscard]] sd_bus* get() const { return bus_.get(); }
    /// Counts the connections begun so far: what was learnt on an earlier one may no longer hold.
    [[nodiscard]] unsigned generation() const { return generation_; }
    /// Whether the bus has accepted the connection and everything sent so far has left.
    [[nodiscard]] bool isDrained() const;
    /// Takes in what has arrived, at most `most` messages of it, and none but the first after `until`,
    /// without waiting. False when there is no connection (any more).
    bool process(int most = maxMessagesAtOnce, Deadline until = Deadline::max());
    /// What to wait for before the next process(), for an event loop that drives the connection. Nothing
    /// when there is no connection. Changes with everything that is sent and taken in.
    [[nodiscard]] Interest interest() const;
    /// Waits until there is something to process, `wakeUp` (which may be null) is awake, or `deadline`.
    void wait(Deadline deadline, const WakeUp* wakeUp) const { wait(interest(), deadline, wakeUp); }
    /// Likewise for an interest taken before; other threads may use the connection meanwhile, but not close
    /// it.
    static void wait(const Interest& interest, Deadline deadline, const WakeUp* wakeUp);
    /// Waits and processes until `done()`, and returns true then; false at the deadline, when the connection
    /// is lost and when `wakeUp` is awake. Before the first wait it looks for as long as `look` without
    /// sleeping: more work than a sleep, but no wake-up, where an answer is near.
    bool pump(Deadline deadline, const std::function<bool()>& done, const WakeUp* wakeUp = nullptr,
              Clock::duration look = {});
    /// Sends the method call `message` and waits for its answer. A null message counts as one that cannot be
    /// sent. There must be a connection.
    BusReply call(sd_bus_message* message, Deadline deadline, const WakeUp* wakeUp);

private:
    enum class Step { nothing, progress, lost };

    Step step();
    void noteAccepted();

    SessionBus& sessionBus_;
    const std::string description_;
    std::unique_ptr<sd_bus, BusRelease> bus_;
    std::optional<sd_id128_t> busId_;
    std::optional<Deadline> lastAttempt_;
    unsigned generation_ = 0;
};

} // namespace spotwell
