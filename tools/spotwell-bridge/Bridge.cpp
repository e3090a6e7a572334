#include "tools/spotwell-bridge/Bridge.h"

#include <chrono>
#include <csignal>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <string_view>
#include <utility>

namespace spotwell
{

namespace
{

constexpr const char* wellKnownName = "com.tarnbrooksoftware.Application.Logwright";
constexpr const char* applicationPath = "/com/tarnbrooksoftware/Application";
constexpr const char* applicationInterface = "com.tarnbrooksoftware.Application";
constexpr const char* scriptingInterface = "com.tarnbrooksoftware.Scripting";
constexpr const char* scriptErrorName = "com.tarnbrooksoftware.Scripting.Error.Failed";
constexpr const char* spotRule = "type='signal',path='/com/tarnbrooksoftware/DistributedNotifications',"
                                 "interface='com.tarnbrooksoftware.DistributedNotifications',member='Posted',"
                                 "arg0='com.tarnbrooksoftware.spotwell_spot'";
constexpr const char* lineRule = "type='signal',path='/com/tarnbrooksoftware/DistributedNotifications',"
                                 "interface='com.tarnbrooksoftware.DistributedNotifications',member='Posted',"
                                 "arg0='com.tarnbrooksoftware.spotwell_line'";

QString now()
{
    using namespace std::chrono;
    return isoTime(floor<microseconds>(system_clock::now()).time_since_epoch().count());
}

/// Reads one value of the user information: a text, a number or a point in time; null for anything else.
QJsonValue readValue(sd_bus_message* message)
{
    char type = 0;
    const char* contents = nullptr;
    if (sd_bus_message_peek_type(message, &type, &contents) <= 0)
        return {};
    const std::string_view signature = contents;
    const char* text = nullptr;
    double number = 0;
    std::int64_t microseconds = 0;
    if (signature == "s" && sd_bus_message_read(message, "v", "s", &text) > 0)
        return QString::fromUtf8(text);
    if (signature == "d" && sd_bus_message_read(message, "v", "d", &number) > 0)
        return number;
    if (signature == "x" && sd_bus_message_read(message, "v", "x", &microseconds) > 0)
        return isoTime(microseconds);
    sd_bus_message_skip(message, "v");
    return {};
}

JsonLine readUserInfo(sd_bus_message* message)
{
    JsonLine userInfo;
    const char* key = nullptr;
    sd_bus_message_enter_container(message, SD_BUS_TYPE_ARRAY, "{sv}");
    while (sd_bus_message_enter_container(message, SD_BUS_TYPE_DICT_ENTRY, "sv") > 0) {
        sd_bus_message_read(message, "s", &key);
        userInfo.add(QString::fromUtf8(key), readValue(message));
        sd_bus_message_exit_container(message);
    }
    sd_bus_message_exit_container(message);
    return userInfo;
}

int complain(const char* what, int error)
{
    (void)std::fprintf(stderr, "spotwell-bridge: %s: %s\n", what, std::strerror(-error));
    return error;
}

} // namespace

const sd_bus_vtable Bridge::application[] = {
    SD_BUS_VTABLE_START(0),
    SD_BUS_PROPERTY("DisplayName", "s", &Bridge::getProperty, 0, SD_BUS_VTABLE_PROPERTY_CONST),
    SD_BUS_PROPERTY("Version", "s", &Bridge::getProperty, 0, SD_BUS_VTABLE_PROPERTY_CONST),
    SD_BUS_VTABLE_END};

const sd_bus_vtable Bridge::applicationWithoutVersion[] = {
    SD_BUS_VTABLE_START(0),
    SD_BUS_PROPERTY("DisplayName", "s", &Bridge::getProperty, 0, SD_BUS_VTABLE_PROPERTY_CONST),
    SD_BUS_VTABLE_END};

const sd_bus_vtable Bridge::scripting[] = {
    SD_BUS_VTABLE_START(0),
    SD_BUS_METHOD("processSpot", "s", "", &Bridge::processSpot, SD_BUS_VTABLE_UNPRIVILEGED),
    SD_BUS_VTABLE_END};

Bridge::Bridge(BridgeOptions options) : options_(std::move(options)) {}

int Bridge::run()
{
    if (connect() < 0 || exportApplication() < 0 || receiveNotifications() < 0)
        return 1;
    // The name comes last: whoever sees it finds everything in place.
    if (const int result = sd_bus_request_name(bus_.get(), wellKnownName, 0); result < 0) {
        complain(result == -EEXIST ? "another logger runs already (the bus name is taken)" : "no bus name",
                 result);
        return 1;
    }
    if (arrangeEnd() < 0)
        return 1;
    printReady();
    return sd_event_loop(event_.get()) == 0 ? 0 : 1;
}

int Bridge::connect()
{
    sd_event* event = nullptr;
    if (const int result = sd_event_new(&event); result < 0)
        return complain("no event loop", result);
    event_.reset(event);
    sd_bus* bus = nullptr;
    if (const int result = sd_bus_open_user(&bus); result < 0)
        return complain("no session bus", result);
    bus_.reset(bus);
    return 0;
}

int Bridge::exportApplication()
{
    int result = sd_bus_add_object_vtable(bus_.get(), nullptr, applicationPath, applicationInterface,
                                          options_.version ? application : applicationWithoutVersion, this);
    if (result >= 0)
        result = sd_bus_add_object_vtable(bus_.get(), nullptr, applicationPath, scriptingInterface, scripting,
                                          this);
    return result >= 0 ? 0 : complain("cannot export the application", result);
}

int Bridge::receiveNotifications()
{
    for (const char* rule : {spotRule, lineRule}) {
        const int result = sd_bus_add_match(bus_.get(), nullptr, rule, &notificationArrived, this);
        if (result < 0)
            return complain("cannot receive notifications", result);
    }
    const int result =
        sd_bus_match_signal_async(bus_.get(), nullptr, "org.freedesktop.DBus.Local", nullptr,
                                  "org.freedesktop.DBus.Local", "Disconnected", &disconnected, nullptr, this);
    return result >= 0 ? 0 : complain("cannot watch the session bus", result);
}

int Bridge::arrangeEnd()
{
    sigset_t signals;
    sigemptyset(&signals);
    sigaddset(&signals, SIGINT);
    sigaddset(&signals, SIGTERM);
    sigprocmask(SIG_BLOCK, &signals, nullptr); // as sd-event wants it; without a handler it ends the loop
    int result = sd_event_add_signal(event_.get(), nullptr, SIGINT, nullptr, nullptr);
    if (result >= 0)
        result = sd_event_add_signal(event_.get(), nullptr, SIGTERM, nullptr, nullptr);
    if (result >= 0 && options_.duration)
        result = sd_event_add_time_relative(event_.get(), nullptr, CLOCK_MONOTONIC,
                                            static_cast<std::uint64_t>(options_.duration->count()), 1,
                                            nullptr, nullptr);
    if (result >= 0)
        result = sd_bus_attach_event(bus_.get(), event_.get(), SD_EVENT_PRIORITY_NORMAL);
    return result >= 0 ? 0 : complain("cannot wait for anything", result);
}

void Bridge::printReady()
{
    JsonLine line;
    line.add(QStringLiteral("ready"), true);
    line.add(QStringLiteral("name"), QString::fromLatin1(wellKnownName));
    line.add(QStringLiteral("displayName"), options_.displayName);
    if (options_.version)
        line.add(QStringLiteral("version"), *options_.version);
    write(line);
}

/// Whoever reads sees each line at once; when nobody can, there is nothing left to do.
void Bridge::write(const JsonLine& line)
{
    if (std::puts(line.text().constData()) < 0 || std::fflush(stdout) != 0)
        sd_event_exit(event_.get(), 1);
}

void Bridge::print(JsonLine& line)
{
    line.add(QStringLiteral("received"), now());
    if (options_.print)
        write(line);
    ++received_;
}

void Bridge::endIfDone()
{
    if (options_.count && received_ >= *options_.count && pending_ == 0)
        sd_event_exit(event_.get(), 0);
}

int Bridge::notificationArrived(sd_bus_message* signal, void* userdata, sd_bus_error*)
{
    auto* const self = static_cast<Bridge*>(userdata);
    const char* name = nullptr;
    const char* object = nullptr;
    if (sd_bus_message_has_signature(signal, "ssa{sv}") <= 0 ||
        sd_bus_message_read(signal, "ss", &name, &object) <= 0) {
        (void)std::fputs("spotwell-bridge: a notification of another shape was left out\n", stderr);
        return 0;
    }
    JsonLine line;
    line.add(QStringLiteral("notification"), QString::fromUtf8(name));
    line.add(QStringLiteral("object"), QString::fromUtf8(object));
    line.add(QStringLiteral("userInfo"), readUserInfo(signal));
    self->print(line);
    self->endIfDone();
    return 0;
}

int Bridge::processSpot(sd_bus_message* call, void* userdata, sd_bus_error*)
{
    auto* const self = static_cast<Bridge*>(userdata);
    const char* text = nullptr;
    if (const int result = sd_bus_message_read(call, "s", &text); result < 0)
        return result;
    JsonLine line;
    line.add(QStringLiteral("command"), QStringLiteral("processSpot"));
    line.add(QStringLiteral("text"), QString::fromUtf8(text));
    self->print(line);
    const int result = self->options_.scriptDelay.count() > 0 ? self->answerLater(call) : self->answer(call);
    self->endIfDone();
    return result < 0 ? result : 1;
}

int Bridge::answerLater(sd_bus_message* call)
{
    auto pending = std::make_unique<Pending>(Pending{this, Owned<sd_bus_message>(sd_bus_message_ref(call))});
    sd_event_source* timer = nullptr;
    const int result = sd_event_add_time_relative(event_.get(), &timer, CLOCK_MONOTONIC,
                                                  static_cast<std::uint64_t>(options_.scriptDelay.count()), 1,
                                                  &answerDue, pending.get());
    if (result < 0)
        return result;
    // The timer owns what it needs and goes with the event loop.
    sd_event_source_set_destroy_callback(timer,
                                         [](void* userdata) { delete static_cast<Pending*>(userdata); });
    (void)pending.release();
    sd_event_source_set_floating(timer, 1);
    sd_event_source_unref(timer);
    ++pending_;
    return 0;
}

int Bridge::answerDue(sd_event_source* timer, std::uint64_t, void* userdata)
{
    const auto* const pending = static_cast<Pending*>(userdata);
    Bridge* const self = pending->bridge;
    self->answer(pending->call.get());
    --self->pending_;
    self->endIfDone();
    sd_event_source_set_floating(timer, 0); // lets go of it
    return 0;
}

int Bridge::answer(sd_bus_message* call)
{
    if (!options_.scriptError)
        return sd_bus_reply_method_return(call, nullptr);
    const QByteArray text = options_.scriptError->toUtf8();
    const sd_bus_error error = SD_BUS_ERROR_MAKE_CONST(scriptErrorName, text.constData());
    return sd_bus_reply_method_error(call, &error);
}

int Bridge::getProperty(sd_bus*, const char*, const char*, const char* property, sd_bus_message* reply,
                        void* userdata, sd_bus_error*)
{
    const auto* const self = static_cast<Bridge*>(userdata);
    const QString text = property == std::string_view("Version") ? self->options_.version.value_or(QString())
                                                                 : self->options_.displayName;
    return sd_bus_message_append(reply, "s", text.toUtf8().constData());
}

int Bridge::disconnected(sd_bus_message*, void* userdata, sd_bus_error*)
{
    (void)std::fputs("spotwell-bridge: the session bus is gone\n", stderr);
    sd_event_exit(static_cast<Bridge*>(userdata)->event_.get(), 1);
    return 0;
}

} // namespace spotwell
