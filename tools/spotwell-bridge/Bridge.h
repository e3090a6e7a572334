#pragma once

#include "tools/spotwell-bridge/JsonLine.h"
#include "tools/spotwell-bridge/Options.h"

#include <systemd/sd-bus.h>
#include <systemd/sd-event.h>

#include <memory>

namespace spotwell
{

/// Releases what libsystemd hands out.
struct Release {
    void operator()(sd_bus* bus) const { sd_bus_flush_close_unref(bus); }
    void operator()(sd_bus_message* message) const { sd_bus_message_unref(message); }
    void operator()(sd_event* event) const { sd_event_unref(event); }
};
template <typename T>
using Owned = std::unique_ptr<T, Release>;

/// A logging application as spotwell sees one: it shows itself on the session bus, takes the two
/// notifications and the command processSpot, and prints them.
class Bridge
{
public:
    explicit Bridge(BridgeOptions options);

    /// Runs until it is told to end (SIGINT, SIGTERM, the options' count or duration). The exit code.
    int run();

private:
    int connect();
    int exportApplication();
    int receiveNotifications();
    int arrangeEnd();
    void printReady();
    void write(const JsonLine& line);
    void print(JsonLine& line);
    void endIfDone();
    int answerLater(sd_bus_message* call);
    int answer(sd_bus_message* call);

    static int notificationArrived(sd_bus_message* signal, void* userdata, sd_bus_error*);
    static int processSpot(sd_bus_message* call, void* userdata, sd_bus_error*);
    static int answerDue(sd_event_source* timer, std::uint64_t, void* userdata);
    static int getProperty(sd_bus*, const char*, const char*, const char* property, sd_bus_message* reply,
                           void* userdata, sd_bus_error*);
    static int disconnected(sd_bus_message*, void* userdata, sd_bus_error*);
    static const sd_bus_vtable application[];
    static const sd_bus_vtable applicationWithoutVersion[];
    static const sd_bus_vtable scripting[];

    /// An answer that is held back.
    struct Pending {
        Bridge* bridge;
        Owned<sd_bus_message> call;
    };

    const BridgeOptions options_;
    Owned<sd_event> event_;
    Owned<sd_bus> bus_;
    unsigned received_ = 0;
    unsigned pending_ = 0;
};

} // namespace spotwell
