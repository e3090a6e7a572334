// SPDX-FileCopyrightText: 2026 the spotwell developers
// SPDX-License-Identifier: MIT

#include "tests/integration/support/ScreenReader.h"

#include <cstdint>
#include <cstdlib>
#include <stdexcept>

namespace spotwell
{

namespace
{

constexpr const char* accessible = "org.a11y.atspi.Accessible";
constexpr const char* rootPath = "/org/a11y/atspi/accessible/root";
constexpr const char* objectEvents = "org.a11y.atspi.Event.Object";
// Longer than the program is busy under any sanitizer.
constexpr std::uint64_t patienceMicroseconds = 60'000'000;

std::shared_ptr<sd_bus> connectTo(const std::string& address)
{
    sd_bus* bus = nullptr;
    if (sd_bus_new(&bus) < 0)
        throw std::runtime_error("no bus");
    std::shared_ptr<sd_bus> owned(bus, sd_bus_flush_close_unref);
    if (sd_bus_set_address(bus, address.c_str()) < 0 || sd_bus_set_bus_client(bus, 1) < 0 ||
        sd_bus_start(bus) < 0)
        throw std::runtime_error("the bus does not answer");
    return owned;
}

/// The states in a reply: two words of 32 bits, the lower first.
std::optional<std::uint64_t> statesIn(sd_bus_message* reply)
{
    std::uint32_t low = 0;
    std::uint32_t high = 0;
    if (sd_bus_message_enter_container(reply, 'a', "u") <= 0 ||
        sd_bus_message_read(reply, "uu", &low, &high) <= 0)
        return std::nullopt;
    return (std::uint64_t{high} << 32U) | low;
}

} // namespace

bool has(std::uint64_t states, AccessibleState state)
{
    return (states >> static_cast<unsigned>(state) & 1U) != 0;
}

int ScreenReader::giveAddress(sd_bus_message* call, void* self, sd_bus_error*)
{
    return sd_bus_reply_method_return(call, "s", static_cast<ScreenReader*>(self)->address_.c_str());
}

int ScreenReader::tellState(sd_bus*, const char*, const char*, const char*, sd_bus_message* reply, void*,
                            sd_bus_error*)
{
    return sd_bus_message_append(reply, "b", 1);
}

int ScreenReader::giveEvents(sd_bus_message* call, void* self, sd_bus_error*)
{
    sd_bus_message* reply = nullptr;
    if (const int error = sd_bus_message_new_method_return(call, &reply); error < 0)
        return error;
    const Message owned(reply, sd_bus_message_unref);
    if (const int error = sd_bus_message_append(reply, "a(ss)", 2, ":1.0", "Object:StateChanged:", ":1.0",
                                                "Object:PropertyChange:");
        error < 0)
        return error;
    static_cast<ScreenReader*>(self)->toldEvents_ = true;
    return sd_bus_send(nullptr, reply, nullptr);
}

int ScreenReader::leaveKey(sd_bus_message* call, void*, sd_bus_error*)
{
    return sd_bus_reply_method_return(call, "b", 0);
}

int ScreenReader::hear(sd_bus_message* signal, void* self, sd_bus_error*)
{
    const char* detail = nullptr;
    int first = 0;
    int second = 0;
    if (sd_bus_message_read(signal, "sii", &detail, &first, &second) <= 0)
        return 0;
    auto* const reader = static_cast<ScreenReader*>(self);
    const std::lock_guard guard(reader->mutex_);
    const QString words = QStringLiteral("%1 %2 %3")
                              .arg(QLatin1String(sd_bus_message_get_member(signal)), QLatin1String(detail),
                                   QString::number(first));
    reader->events_.push_back({words, sd_bus_message_get_path(signal)});
    return 0;
}

int ScreenReader::embed(sd_bus_message* call, void* self, sd_bus_error*)
{
    auto* const reader = static_cast<ScreenReader*>(self);
    {
        const std::lock_guard guard(reader->mutex_);
        reader->program_ = sd_bus_message_get_sender(call);
    }
    return sd_bus_reply_method_return(call, "(so)", "org.a11y.atspi.Registry", rootPath);
}

ScreenReader::ScreenReader(const PrivateBus& bus, Hears hears) : address_(bus.address())
{
    static const sd_bus_vtable address[] = {
        SD_BUS_VTABLE_START(0), SD_BUS_METHOD("GetAddress", "", "s", giveAddress, SD_BUS_VTABLE_UNPRIVILEGED),
        SD_BUS_VTABLE_END};
    static const sd_bus_vtable status[] = {
        SD_BUS_VTABLE_START(0), SD_BUS_PROPERTY("IsEnabled", "b", tellState, 0, 0),
        SD_BUS_PROPERTY("ScreenReaderEnabled", "b", tellState, 0, 0), SD_BUS_VTABLE_END};
    static const sd_bus_vtable socket[] = {
        SD_BUS_VTABLE_START(0), SD_BUS_METHOD("Embed", "(so)", "(so)", embed, SD_BUS_VTABLE_UNPRIVILEGED),
        SD_BUS_VTABLE_END};
    static const sd_bus_vtable registry[] = {
        SD_BUS_VTABLE_START(0),
        SD_BUS_METHOD("GetRegisteredEvents", "", "a(ss)", giveEvents, SD_BUS_VTABLE_UNPRIVILEGED),
        SD_BUS_VTABLE_END};
    service_ = connectTo(address_);
    questions_ = connectTo(address_);
    sd_bus* const service = service_.get();
    if (sd_bus_add_object_vtable(service, nullptr, "/org/a11y/bus", "org.a11y.Bus", address, this) < 0 ||
        sd_bus_add_object_vtable(service, nullptr, "/org/a11y/bus", "org.a11y.Status", status, this) < 0 ||
        sd_bus_add_object_vtable(service, nullptr, rootPath, "org.a11y.atspi.Socket", socket, this) < 0 ||
        sd_bus_request_name(service, "org.a11y.atspi.Registry", 0) < 0 ||
        sd_bus_request_name(service, "org.a11y.Bus", 0) < 0)
        throw std::runtime_error("no screen reader");
    if (hears == Hears::events &&
        (sd_bus_add_object(service, nullptr, "/org/a11y/atspi/registry/deviceeventcontroller", leaveKey,
                           this) < 0 ||
         sd_bus_match_signal(service, nullptr, nullptr, nullptr, objectEvents, nullptr, hear, this) < 0 ||
         sd_bus_add_object_vtable(service, nullptr, "/org/a11y/atspi/registry", "org.a11y.atspi.Registry",
                                  registry, this) < 0))
        throw std::runtime_error("no ears");
    thread_ = std::thread([this] { serve(); });
}

ScreenReader::~ScreenReader()
{
    ended_ = true;
    thread_.join();
}

void ScreenReader::serve()
{
    constexpr std::uint64_t lookUpMicroseconds = 20'000;
    while (!ended_) {
        const int handled = sd_bus_process(service_.get(), nullptr);
        if (handled < 0 || (handled == 0 && sd_bus_wait(service_.get(), lookUpMicroseconds) < 0))
            return;
    }
}

ScreenReader::Message ScreenReader::call(const std::string& path, const char* interface, const char* method,
                                         const char* types, int first, int second)
{
    sd_bus_message* request = nullptr;
    if (sd_bus_message_new_method_call(questions_.get(), &request, known_.c_str(), path.c_str(), interface,
                                       method) < 0)
        return {};
    const Message owned(request, sd_bus_message_unref);
    if (types != nullptr)
        sd_bus_message_append(request, types, first, second);
    sd_bus_message* reply = nullptr;
    if (sd_bus_call(questions_.get(), request, patienceMicroseconds, nullptr, &reply) < 0)
        return {};
    return {reply, sd_bus_message_unref};
}

QString ScreenReader::property(const std::string& path, const char* name)
{
    char* value = nullptr;
    if (sd_bus_get_property_string(questions_.get(), known_.c_str(), path.c_str(), accessible, name, nullptr,
                                   &value) < 0)
        return {};
    const std::unique_ptr<char, decltype(&std::free)> owned(value, &std::free);
    return QString::fromUtf8(value);
}

void ScreenReader::collect(const std::string& path)
{
    order_.push_back(path);
    // A label has the name of what it stands for, and a colon.
    paths_.emplace(property(path, "Name").toStdString(), path);
    const Message children = call(path, accessible, "GetChildren");
    if (!children || sd_bus_message_enter_container(children.get(), 'a', "(so)") <= 0)
        return;
    const char* program = nullptr;
    const char* child = nullptr;
    while (sd_bus_message_read(children.get(), "(so)", &program, &child) > 0)
        collect(child);
}

bool ScreenReader::findProgram()
{
    std::string program;
    {
        const std::lock_guard guard(mutex_);
        program = program_;
    }
    if (program != known_)
        forget();
    known_ = program;
    return !program.empty();
}

void ScreenReader::forget()
{
    paths_.clear();
    order_.clear();
}

std::string ScreenReader::find(const QString& control)
{
    if (!findProgram())
        return {};
    const std::string name = control.toStdString();
    if (!paths_.contains(name)) {
        forget();
        collect(rootPath);
    }
    const auto found = paths_.find(name);
    return found == paths_.end() ? std::string() : found->second;
}

QString ScreenReader::text(const QString& control)
{
    const std::string path = find(control);
    const Message reply = path.empty() ? nullptr : call(path, "org.a11y.atspi.Text", "GetText", "ii", 0, -1);
    const char* text = nullptr;
    if (!reply || sd_bus_message_read(reply.get(), "s", &text) <= 0)
        return {};
    return QString::fromUtf8(text);
}

QStringList ScreenReader::console()
{
    return text(QStringLiteral("Console")).split(QLatin1Char('\n'), Qt::SkipEmptyParts);
}

std::optional<bool> ScreenReader::isOn(const QString& control)
{
    const std::string path = find(control);
    const Message reply = path.empty() ? nullptr : call(path, accessible, "GetState");
    const auto states = reply ? statesIn(reply.get()) : std::nullopt;
    if (!states)
        return std::nullopt;
    return has(*states, AccessibleState::checked);
}

bool ScreenReader::press(const QString& control)
{
    const std::string path = find(control);
    return !path.empty() && call(path, "org.a11y.atspi.Action", "DoAction", "i", 0) != nullptr;
}

AccessibleControl ScreenReader::describe(const std::string& path)
{
    AccessibleControl control;
    control.name = property(path, "Name");
    control.description = property(path, "Description");
    const char* text = nullptr;
    if (const Message role = call(path, accessible, "GetRoleName");
        role && sd_bus_message_read(role.get(), "s", &text) > 0)
        control.role = QString::fromUtf8(text);
    if (const Message states = call(path, accessible, "GetState"))
        control.states = statesIn(states.get()).value_or(0);
    const Message actions = call(path, "org.a11y.atspi.Action", "GetActions");
    if (!actions || sd_bus_message_enter_container(actions.get(), 'a', "(sss)") <= 0)
        return control;
    const char* description = nullptr;
    const char* keys = nullptr;
    while (sd_bus_message_read(actions.get(), "(sss)", &text, &description, &keys) > 0) {
        if (control.actions.isEmpty())
            control.keys = QString::fromUtf8(keys);
        control.actions.append(QString::fromUtf8(text));
    }
    return control;
}

QList<AccessibleControl> ScreenReader::controls()
{
    QList<AccessibleControl> result;
    if (!findProgram())
        return result;
    forget();
    collect(rootPath);
    for (const std::string& path : order_)
        result.append(describe(path));
    return result;
}

QStringList ScreenReader::events()
{
    {
        const std::lock_guard guard(mutex_);
        heard_.insert(heard_.end(), events_.begin(), events_.end());
        events_.clear();
    }
    QStringList result;
    (void)findProgram();
    for (Event& event : heard_) {
        if (!event.name)
            event.name = property(event.path, "Name");
        result.append(event.words + QLatin1Char(' ') + *event.name);
    }
    return result;
}

} // namespace spotwell
