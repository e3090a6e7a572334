// SPDX-FileCopyrightText: 2026 the spotwell developers
// SPDX-License-Identifier: MIT

#include "tests/integration/ScreenReader.h"

#include <cstdint>
#include <cstdlib>
#include <stdexcept>

namespace spotwell
{

namespace
{

constexpr const char* accessible = "org.a11y.atspi.Accessible";
constexpr const char* rootPath = "/org/a11y/atspi/accessible/root";
// AtspiStateType.
constexpr unsigned checkedState = 4;
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

} // namespace

int ScreenReader::giveAddress(sd_bus_message* call, void* self, sd_bus_error*)
{
    return sd_bus_reply_method_return(call, "s", static_cast<ScreenReader*>(self)->address_.c_str());
}

int ScreenReader::tellState(sd_bus*, const char*, const char*, const char*, sd_bus_message* reply, void*,
                            sd_bus_error*)
{
    return sd_bus_message_append(reply, "b", 1);
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

ScreenReader::ScreenReader(const PrivateBus& bus) : address_(bus.address())
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
    service_ = connectTo(address_);
    questions_ = connectTo(address_);
    sd_bus* const service = service_.get();
    if (sd_bus_add_object_vtable(service, nullptr, "/org/a11y/bus", "org.a11y.Bus", address, this) < 0 ||
        sd_bus_add_object_vtable(service, nullptr, "/org/a11y/bus", "org.a11y.Status", status, this) < 0 ||
        sd_bus_add_object_vtable(service, nullptr, rootPath, "org.a11y.atspi.Socket", socket, this) < 0 ||
        sd_bus_request_name(service, "org.a11y.atspi.Registry", 0) < 0 ||
        sd_bus_request_name(service, "org.a11y.Bus", 0) < 0)
        throw std::runtime_error("no screen reader");
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

void ScreenReader::collect(const std::string& path)
{
    char* name = nullptr;
    if (sd_bus_get_property_string(questions_.get(), known_.c_str(), path.c_str(), accessible, "Name",
                                   nullptr, &name) >= 0) {
        // A label has the name of what it stands for, and a colon.
        paths_.emplace(name, path);
        std::free(name);
    }
    const Message children = call(path, accessible, "GetChildren");
    if (!children || sd_bus_message_enter_container(children.get(), 'a', "(so)") <= 0)
        return;
    const char* program = nullptr;
    const char* child = nullptr;
    while (sd_bus_message_read(children.get(), "(so)", &program, &child) > 0)
        collect(child);
}

std::string ScreenReader::find(const QString& control)
{
    std::string program;
    {
        const std::lock_guard guard(mutex_);
        program = program_;
    }
    if (program.empty())
        return {};
    if (program != known_)
        paths_.clear();
    known_ = program;
    const std::string name = control.toStdString();
    if (!paths_.contains(name)) {
        paths_.clear();
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
    std::uint32_t states = 0;
    if (!reply || sd_bus_message_enter_container(reply.get(), 'a', "u") <= 0 ||
        sd_bus_message_read(reply.get(), "u", &states) <= 0)
        return std::nullopt;
    return (states >> checkedState & 1) != 0;
}

bool ScreenReader::press(const QString& control)
{
    const std::string path = find(control);
    return !path.empty() && call(path, "org.a11y.atspi.Action", "DoAction", "i", 0) != nullptr;
}

} // namespace spotwell
