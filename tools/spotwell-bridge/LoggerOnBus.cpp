// SPDX-FileCopyrightText: 2026 the spotwell developers
// SPDX-License-Identifier: MIT

#include "tools/spotwell-bridge/LoggerOnBus.h"

#include "platform/linux/bus/BusText.h"
#include "tools/spotwell-bridge/NotificationReader.h"

#include <cstdint>
#include <cstring>
#include <string_view>
#include <utility>

namespace spotwell::bridge
{

namespace
{

constexpr const char* applicationPath = "/com/tarnbrooksoftware/Application";
constexpr const char* applicationInterface = "com.tarnbrooksoftware.Application";
constexpr const char* scriptingInterface = "com.tarnbrooksoftware.Scripting";
constexpr const char* busName = "org.freedesktop.DBus";
constexpr const char* busPath = "/org/freedesktop/DBus";
constexpr const char* spotRule = "type='signal',path='/com/tarnbrooksoftware/DistributedNotifications',"
                                 "interface='com.tarnbrooksoftware.DistributedNotifications',member='Posted',"
                                 "arg0='com.tarnbrooksoftware.spotwell_spot'";
constexpr const char* lineRule = "type='signal',path='/com/tarnbrooksoftware/DistributedNotifications',"
                                 "interface='com.tarnbrooksoftware.DistributedNotifications',member='Posted',"
                                 "arg0='com.tarnbrooksoftware.spotwell_line'";

/// The bus's answers to a request for a name (D-Bus specification, RequestName).
constexpr std::uint32_t primaryOwner = 1;
constexpr std::uint32_t inQueue = 2;

/// Whether a signal is the bus's own and about the logger's name. The bus also sends those about the
/// connection's own name, and whoever else sends one to this connection gets past the match.
bool isAboutName(sd_bus_message* signal)
{
    const char* const sender = sd_bus_message_get_sender(signal);
    const char* name = nullptr;
    return sender != nullptr && sender == std::string_view(busName) &&
           sd_bus_message_read(signal, "s", &name) > 0 && name == std::string_view(loggerBusName);
}

} // namespace

const sd_bus_vtable LoggerOnBus::application[] = {
    SD_BUS_VTABLE_START(0),
    SD_BUS_PROPERTY("DisplayName", "s", &LoggerOnBus::getProperty, 0, SD_BUS_VTABLE_PROPERTY_CONST),
    SD_BUS_PROPERTY("Version", "s", &LoggerOnBus::getProperty, 0, SD_BUS_VTABLE_PROPERTY_CONST),
    SD_BUS_VTABLE_END};

const sd_bus_vtable LoggerOnBus::applicationWithoutVersion[] = {
    SD_BUS_VTABLE_START(0),
    SD_BUS_PROPERTY("DisplayName", "s", &LoggerOnBus::getProperty, 0, SD_BUS_VTABLE_PROPERTY_CONST),
    SD_BUS_VTABLE_END};

const sd_bus_vtable LoggerOnBus::scripting[] = {
    SD_BUS_VTABLE_START(0),
    SD_BUS_METHOD("processSpot", "s", "", &LoggerOnBus::processSpot, SD_BUS_VTABLE_UNPRIVILEGED),
    SD_BUS_VTABLE_END};

LoggerOnBus::LoggerOnBus(SessionBus& bus, const LoggerIdentity& identity, AnswerRule rule,
                         LoggerListener& listener)
    : displayName_(busSafeText(identity.displayName)),
      version_(identity.version ? std::optional(busSafeText(*identity.version)) : std::nullopt),
      listener_(listener),
      answers_(std::move(rule),
               [this] {
                   driver_.update();
                   listener_.answersChanged();
               }),
      connection_(bus, "logger"),
      driver_(connection_, {[this] { begin(); },
                            [this] {
                                answers_.forget();
                                become(Standing::gone);
                            }})
{
}

bool LoggerOnBus::start()
{
    return driver_.start();
}

void LoggerOnBus::takeNoMore()
{
    taking_ = false;
    answers_.refuseFurther();
}

void LoggerOnBus::stop(std::chrono::milliseconds limit)
{
    takeNoMore();
    stopping_ = true;
    driver_.stop();
    if (connection_.get() == nullptr)
        return;
    answers_.refuseAll();
    sd_bus_message* release = nullptr;
    if (sd_bus_message_new_method_call(connection_.get(), &release, busName, busPath, busName,
                                       "ReleaseName") >= 0 &&
        sd_bus_message_append(release, "s", loggerBusName) >= 0)
        // What was sent before has arrived when this is answered.
        connection_.call(release, BusConnection::Clock::now() + limit, nullptr);
    sd_bus_message_unref(release);
    connection_.close();
}

/// Everything is asked for at once, and waits inside sd-bus until the bus has accepted the connection. The
/// name comes last: whoever sees it finds everything in place.
void LoggerOnBus::begin()
{
    sd_bus* const bus = connection_.get();
    // A bus that hangs may go on in the end.
    sd_bus_set_method_call_timeout(bus, UINT64_MAX);
    sd_bus_add_object_vtable(bus, nullptr, applicationPath, applicationInterface,
                             version_ ? application : applicationWithoutVersion, this);
    sd_bus_add_object_vtable(bus, nullptr, applicationPath, scriptingInterface, scripting, this);
    // sd-bus gives the connection up when the bus refuses one of these.
    for (const char* rule : {spotRule, lineRule})
        sd_bus_add_match_async(bus, nullptr, rule, &notificationArrived, nullptr, this);
    sd_bus_match_signal_async(bus, nullptr, busName, busPath, busName, "NameAcquired", &nameAcquired, nullptr,
                              this);
    sd_bus_match_signal_async(bus, nullptr, busName, busPath, busName, "NameLost", &nameLost, nullptr, this);
    sd_bus_request_name_async(bus, nullptr, loggerBusName, SD_BUS_NAME_QUEUE | SD_BUS_NAME_ALLOW_REPLACEMENT,
                              &nameAnswered, this);
}

void LoggerOnBus::become(Standing standing)
{
    if (!stopping_ && std::exchange(standing_, standing) != standing)
        listener_.standingChanged(standing);
}

int LoggerOnBus::nameAnswered(sd_bus_message* answer, void* userdata, sd_bus_error*)
{
    auto* const self = static_cast<LoggerOnBus*>(userdata);
    std::uint32_t result = 0;
    if (sd_bus_message_is_method_error(answer, nullptr) > 0 || sd_bus_message_read(answer, "u", &result) <= 0)
        self->become(Standing::refused);
    else if (result == inQueue)
        self->become(Standing::queued);
    else if (result == primaryOwner)
        self->become(Standing::owner);
    return 0;
}

int LoggerOnBus::nameAcquired(sd_bus_message* signal, void* userdata, sd_bus_error*)
{
    if (isAboutName(signal))
        static_cast<LoggerOnBus*>(userdata)->become(Standing::owner);
    return 0;
}

int LoggerOnBus::nameLost(sd_bus_message* signal, void* userdata, sd_bus_error*)
{
    if (isAboutName(signal))
        static_cast<LoggerOnBus*>(userdata)->become(Standing::queued);
    return 0;
}

int LoggerOnBus::notificationArrived(sd_bus_message* signal, void* userdata, sd_bus_error*)
{
    auto* const self = static_cast<LoggerOnBus*>(userdata);
    if (!self->taking_)
        return 0;
    if (const auto notification = readNotification(signal))
        self->listener_.notificationArrived(*notification);
    else
        self->listener_.notificationLeftOut();
    return 0;
}

int LoggerOnBus::processSpot(sd_bus_message* call, void* userdata, sd_bus_error* error)
{
    auto* const self = static_cast<LoggerOnBus*>(userdata);
    const char* text = nullptr;
    if (const int result = sd_bus_message_read(call, "s", &text); result < 0)
        return result;
    const std::size_t length = std::strlen(text);
    if (self->taking_ && length > maxBusTextBytes) {
        self->listener_.commandRefused();
        return sd_bus_error_set(error, commandErrorName, "The line is too long.");
    }
    if (self->taking_)
        self->listener_.commandArrived(QString::fromUtf8(text, static_cast<qsizetype>(length)));
    const int result = self->answers_.answer(call);
    if (!self->stopping_)
        self->listener_.answersChanged();
    return result < 0 ? result : 1;
}

int LoggerOnBus::getProperty(sd_bus*, const char*, const char*, const char* property, sd_bus_message* reply,
                             void* userdata, sd_bus_error*)
{
    const auto* const self = static_cast<LoggerOnBus*>(userdata);
    const std::string& text =
        property == std::string_view("Version") && self->version_ ? *self->version_ : self->displayName_;
    return sd_bus_message_append(reply, "s", text.c_str());
}

} // namespace spotwell::bridge
