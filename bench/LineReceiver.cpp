// SPDX-FileCopyrightText: 2026 the spotwell developers
// SPDX-License-Identifier: MIT

#include "bench/LineReceiver.h"

#include <array>
#include <cstdlib>
#include <ctime>
#include <poll.h>
#include <pthread.h>
#include <system_error>
#include <utility>

namespace spotwell::bench
{

namespace
{

constexpr const char* ruleFront =
    "type='signal',path='/com/tarnbrooksoftware/DistributedNotifications',"
    "interface='com.tarnbrooksoftware.DistributedNotifications',member='Posted',"
    "arg0=";

int getProperty(sd_bus*, const char*, const char*, const char* property, sd_bus_message* reply, void*,
                sd_bus_error*)
{
    return sd_bus_message_append(reply, "s", std::string_view(property) == "Version" ? "6.45" : "Logwright");
}

const sd_bus_vtable application[] = {
    SD_BUS_VTABLE_START(0),
    SD_BUS_PROPERTY("DisplayName", "s", &getProperty, 0, SD_BUS_VTABLE_PROPERTY_CONST),
    SD_BUS_PROPERTY("Version", "s", &getProperty, 0, SD_BUS_VTABLE_PROPERTY_CONST),
    SD_BUS_VTABLE_END,
};

void check(int result, const char* what)
{
    if (result < 0)
        throw std::system_error(-result, std::generic_category(), what);
}

/// The text under `wanted` in the user information that comes next; empty when there is none.
std::string_view readText(sd_bus_message* signal, std::string_view wanted)
{
    const char* text = "";
    sd_bus_message_enter_container(signal, SD_BUS_TYPE_ARRAY, "{sv}");
    while (sd_bus_message_enter_container(signal, SD_BUS_TYPE_DICT_ENTRY, "sv") > 0) {
        const char* key = nullptr;
        sd_bus_message_read(signal, "s", &key);
        if (wanted == key)
            sd_bus_message_read(signal, "v", "s", &text);
        else
            sd_bus_message_skip(signal, "v");
        sd_bus_message_exit_container(signal);
    }
    return text;
}

} // namespace

LineReceiver::LineReceiver(std::string busAddress, Received received, Received spotReceived)
    : busAddress_(std::move(busAddress)),
      received_(std::move(received)),
      spotReceived_(std::move(spotReceived))
{
}

LineReceiver::~LineReceiver()
{
    ended_.wake();
    if (thread_.joinable())
        thread_.join();
}

void LineReceiver::start()
{
    connect();
    check(sd_bus_add_object_vtable(bus_.get(), nullptr, "/com/tarnbrooksoftware/Application",
                                   "com.tarnbrooksoftware.Application", application, nullptr),
          "export");
    listen("com.tarnbrooksoftware.spotwell_line", &lineArrived);
    if (spotReceived_)
        listen("com.tarnbrooksoftware.spotwell_spot", &spotArrived);
    check(sd_bus_request_name(bus_.get(), "com.tarnbrooksoftware.Application.Logwright", 0), "name");
    thread_ = std::thread([this] { work(); });
}

void LineReceiver::connect()
{
    sd_bus* bus = nullptr;
    check(sd_bus_new(&bus), "bus");
    bus_.reset(bus);
    check(sd_bus_set_address(bus, busAddress_.c_str()), "address");
    check(sd_bus_set_bus_client(bus, 1), "client");
    check(sd_bus_start(bus), "start");
}

void LineReceiver::listen(const char* notification, sd_bus_message_handler_t arrived)
{
    const std::string rule = ruleFront + ("'" + std::string(notification)) + "'";
    check(sd_bus_add_match(bus_.get(), nullptr, rule.c_str(), arrived, this), "match");
}

void LineReceiver::work()
{
    while (!ended_.isAwake()) {
        int result = 0;
        while ((result = sd_bus_process(bus_.get(), nullptr)) > 0) {
        }
        if (result < 0)
            return;
        const int events = sd_bus_get_events(bus_.get());
        std::array<pollfd, 2> entries{pollfd{sd_bus_get_fd(bus_.get()), static_cast<short>(events), 0},
                                      pollfd{ended_.descriptor(), POLLIN, 0}};
        ::poll(entries.data(), entries.size(), -1);
    }
}

int LineReceiver::lineArrived(sd_bus_message* signal, void* userdata, sd_bus_error*)
{
    auto& self = *static_cast<LineReceiver*>(userdata);
    sd_bus_message_skip(signal, "ss");
    const std::string_view line = readText(signal, "line");
    if (self.received_)
        self.received_(line);
    const std::lock_guard lock(self.mutex_);
    if (++self.count_ == self.awaited_)
        self.arrived_.notify_all();
    return 0;
}

int LineReceiver::spotArrived(sd_bus_message* signal, void* userdata, sd_bus_error*)
{
    sd_bus_message_skip(signal, "ss");
    static_cast<LineReceiver*>(userdata)->spotReceived_(readText(signal, "combinedCallsign"));
    return 0;
}

bool LineReceiver::waitFor(std::uint64_t count)
{
    std::unique_lock lock(mutex_);
    awaited_ = count;
    return arrived_.wait_for(lock, std::chrono::seconds{10}, [this, count] { return count_ >= count; });
}

std::uint64_t LineReceiver::received() const
{
    const std::lock_guard lock(mutex_);
    return count_;
}

double LineReceiver::cpuSeconds() const
{
    clockid_t clock{};
    timespec time{};
    if (::pthread_getcpuclockid(const_cast<std::thread&>(thread_).native_handle(), &clock) == 0)
        ::clock_gettime(clock, &time);
    return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_nsec) * 1e-9;
}

} // namespace spotwell::bench
