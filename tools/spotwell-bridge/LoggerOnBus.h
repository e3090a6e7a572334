// SPDX-FileCopyrightText: 2026 the spotwell developers
// SPDX-License-Identifier: MIT

#pragma once

#include "platform/linux/bus/BusConnection.h"
#include "tools/spotwell-bridge/BusDriver.h"
#include "tools/spotwell-bridge/HeldAnswers.h"
#include "tools/spotwell-bridge/Notification.h"

#include <QString>

#include <chrono>
#include <optional>
#include <string>

namespace spotwell::bridge
{

/// The bus name of a logger.
inline constexpr const char* loggerBusName = "com.tarnbrooksoftware.Application.Logwright";

/// How a logger shows itself.
struct LoggerIdentity {
    QString displayName;
    /// Absent for one that gives no version.
    std::optional<QString> version;
};

/// How a logger stands with the session bus.
enum class Standing {
    /// It shows itself, and receives everything.
    owner,
    /// Another one has the name and gets the commands. It receives notifications, and gets the name next.
    queued,
    /// There is no session bus (any more).
    gone,
    /// The bus refuses the name.
    refused
};

/// Whoever a logger works for. Called on the event loop's thread.
class LoggerListener
{
public:
    virtual ~LoggerListener() = default;
    /// Told on each change.
    virtual void standingChanged(Standing standing) = 0;
    virtual void notificationArrived(const Notification& notification) = 0;
    /// A notification had another shape than the interface says.
    virtual void notificationLeftOut() = 0;
    /// The command processSpot; it is answered, or its answer held back, after this.
    virtual void commandArrived(const QString& text) = 0;
    /// The command's text was longer than spotwell puts on the bus; the caller is told.
    virtual void commandRefused() = 0;
    /// An answer was sent or is held back now.
    virtual void answersChanged() = 0;
};

/// A logging application as spotwell sees one: shows itself on the session bus, takes the two notifications
/// and the command processSpot (docs/logger-interface.md). A bus that was lost is used again when it is back.
/// Belongs to the thread of its event loop; nothing but stop() waits for the bus.
class LoggerOnBus
{
public:
    /// Both references outlive this object.
    LoggerOnBus(SessionBus& bus, const LoggerIdentity& identity, AnswerRule rule, LoggerListener& listener);

    /// Begins; false, and nothing more happens, when there is no session bus.
    bool start();
    /// The listener is told of no further notification or command; commands are refused. What is held back is
    /// still answered.
    void takeNoMore();
    /// Answers what is held back with an error, gives the name back and leaves the bus. Waits at most `limit`
    /// until the bus has taken all that in. The listener hears nothing more.
    void stop(std::chrono::milliseconds limit);
    /// Whether answers are held back.
    [[nodiscard]] bool owesAnswers() const { return !answers_.isEmpty(); }

private:
    void begin();
    void become(Standing standing);

    static int nameAnswered(sd_bus_message* answer, void* userdata, sd_bus_error*);
    static int nameAcquired(sd_bus_message*, void* userdata, sd_bus_error*);
    static int nameLost(sd_bus_message*, void* userdata, sd_bus_error*);
    static int notificationArrived(sd_bus_message* signal, void* userdata, sd_bus_error*);
    static int processSpot(sd_bus_message* call, void* userdata, sd_bus_error* error);
    static int getProperty(sd_bus*, const char*, const char*, const char* property, sd_bus_message* reply,
                           void* userdata, sd_bus_error*);
    static const sd_bus_vtable application[];
    static const sd_bus_vtable applicationWithoutVersion[];
    static const sd_bus_vtable scripting[];

    const std::string displayName_;
    const std::optional<std::string> version_;
    LoggerListener& listener_;
    HeldAnswers answers_;
    BusConnection connection_;
    BusDriver driver_;
    std::optional<Standing> standing_;
    bool taking_ = true;
    bool stopping_ = false;
};

} // namespace spotwell::bridge
