// SPDX-FileCopyrightText: 2026 the spotwell developers
// SPDX-License-Identifier: MIT

#pragma once

#include "platform/Log.h"
#include "platform/RunningApplications.h"
#include "platform/linux/bus/BusConnection.h"

#include <chrono>
#include <map>
#include <optional>
#include <string>
#include <vector>

namespace spotwell
{

/// What the session bus and the applications on it say about themselves, on one connection; one thread at a
/// time.
///
/// The names are asked for at each list. Who owns a name and what an application says of itself are
/// remembered: the first is kept right by the bus's own signals, the second cannot change while the
/// application is connected.
class ApplicationDirectory
{
public:
    using Clock = BusConnection::Clock;
    using Deadline = BusConnection::Deadline;

    struct Patience {
        /// How long nothing is asked of an application that answered with an error.
        std::chrono::milliseconds afterError{2000};
        /// How long an application may take to answer at all before it is asked anew.
        std::chrono::milliseconds answer{25000};
        /// How long a bus is waited for again and again, each time as long as the caller may: one that only
        /// hesitates, on a machine that is too busy, costs those who waited and not all who come meanwhile.
        std::chrono::milliseconds silence{1000};
        /// How long a bus that did not answer is not waited for then.
        std::chrono::milliseconds afterSilence{2000};
    };

    ApplicationDirectory(SessionBus& bus, Log& log, Patience patience);
    ~ApplicationDirectory() = default;
    ApplicationDirectory(const ApplicationDirectory&) = delete;
    ApplicationDirectory& operator=(const ApplicationDirectory&) = delete;

    /// The applications in the bus's order. Waits for the bus until `namesBy`, and until `answersBy` for
    /// applications that are asked for the first time; those that did not answer are left out.
    std::vector<RunningApplication> list(Deadline namesBy, Deadline answersBy);

private:
    /// A well-known name of an application.
    struct Name {
        ApplicationDirectory* directory = nullptr;
        std::string name;
        std::string owner; // empty while unknown
        BusSlot question;
        bool awaited = false;
    };
    /// An application, by its connection.
    struct Application {
        ApplicationDirectory* directory = nullptr;
        std::string name;
        std::optional<RunningApplication> read;
        BusSlot question;
        bool awaited = false;
        bool complained = false;
        Deadline askedAt;
        Deadline askAgainAt;
    };

    void beginAnew();
    bool listNames(Deadline namesBy);
    void learnOwner(const std::string& name);
    void learnApplication(const std::string& address, const std::string& name);
    void forgetDeparted();
    [[nodiscard]] bool isAnyAwaited() const;
    void stopAwaiting();
    [[nodiscard]] std::vector<RunningApplication> readable() const;
    void fail(Application& application, const QString& why);
    void complain(Application& application, const QString& why);
    void noteSilence(Deadline since);

    bool ask(BusSlot& slot, sd_bus_message* question, sd_bus_message_handler_t handler, void* userdata,
             std::chrono::microseconds timeout);
    static int namesArrived(sd_bus_message* answer, void* userdata, sd_bus_error*);
    static int ownerArrived(sd_bus_message* answer, void* userdata, sd_bus_error*);
    static int ownerChanged(sd_bus_message* signal, void* userdata, sd_bus_error*);
    static int propertiesArrived(sd_bus_message* answer, void* userdata, sd_bus_error*);

    Log& log_;
    const Patience patience_;
    BusConnection connection_;
    unsigned generation_ = 0;
    BusSlot ownerChanges_;
    BusSlot listing_;
    std::vector<std::string> listed_;
    std::map<std::string, Name> names_;
    std::map<std::string, Application> applications_; // by unique bus name
    /// When the bus was first waited for in vain; absent while it answers.
    std::optional<Deadline> silentSince_;
    Deadline quietUntil_;
    Deadline askedAt_; // the names
};

} // namespace spotwell
