// SPDX-FileCopyrightText: 2026 the spotwell developers
// SPDX-License-Identifier: MIT

#include "platform/linux/bus/ApplicationDirectory.h"

#include "platform/linux/bus/ApplicationNames.h"
#include "platform/linux/bus/ApplicationProperties.h"

#include <algorithm>
#include <cstdint>
#include <set>
#include <string_view>
#include <utility>

namespace spotwell
{

namespace
{

using namespace std::chrono_literals;

constexpr const char* busName = "org.freedesktop.DBus";
constexpr const char* busPath = "/org/freedesktop/DBus";
constexpr const char* ownerChangedRule =
    "type='signal',sender='org.freedesktop.DBus',path='/org/freedesktop/"
    "DBus',interface='org.freedesktop.DBus',"
    "member='NameOwnerChanged',arg0namespace='com.tarnbrooksoftware.Application'";
constexpr const char* applicationInterface = "com.tarnbrooksoftware.Application";

/// A shorter wait than this says nothing about the bus: the caller had used up its time otherwise.
constexpr auto silence = 100ms;
constexpr auto forever = std::chrono::microseconds::max();
/// After a quiet second a question is worth being answered without a second wake-up.
constexpr auto quietSecond = 990ms;
constexpr auto lookForAnswer = 300us;

} // namespace

ApplicationDirectory::ApplicationDirectory(SessionBus& bus, Log& log, Patience patience)
    : log_(log), patience_(patience), connection_(bus, "running applications")
{
}

std::vector<RunningApplication> ApplicationDirectory::list(Deadline namesBy, Deadline answersBy)
{
    if (!connection_.open())
        return {};
    if (connection_.generation() != generation_)
        beginAnew();
    if (!listNames(namesBy))
        return {};
    forgetDeparted();
    for (const std::string& name : listed_)
        learnOwner(name);
    connection_.pump(answersBy, [this] { return !isAnyAwaited(); });
    if (connection_.get() == nullptr)
        return {};
    stopAwaiting();
    return readable();
}

void ApplicationDirectory::beginAnew()
{
    generation_ = connection_.generation();
    listing_.reset();
    names_.clear();
    applications_.clear();
    silentSince_.reset();
    quietUntil_ = {};
    sd_bus_slot* slot = nullptr;
    // Installed before the first question leaves, so no change after an answer is missed. If the bus refuses,
    // sd-bus closes the connection.
    sd_bus_add_match_async(connection_.get(), &slot, ownerChangedRule, &ownerChanged, nullptr, this);
    ownerChanges_.reset(slot);
}

bool ApplicationDirectory::listNames(Deadline namesBy)
{
    const auto answered = [this] { return !listing_; };
    const Deadline since = Clock::now();
    // A bus that did not answer is asked nothing more before it has.
    if (listing_ && since < quietUntil_)
        return false;
    if (listing_ && !connection_.pump(namesBy, answered)) {
        noteSilence(since);
        return false;
    }
    sd_bus_message* question = nullptr;
    sd_bus_message_new_method_call(connection_.get(), &question, busName, busPath, busName, "ListNames");
    if (!ask(listing_, question, &namesArrived, this, forever))
        return false;
    const bool isAlone = since - std::exchange(askedAt_, since) >= quietSecond;
    if (!connection_.pump(namesBy, answered, nullptr, isAlone ? lookForAnswer : 0us)) {
        noteSilence(since);
        return false;
    }
    silentSince_.reset();
    return true;
}

void ApplicationDirectory::noteSilence(Deadline since)
{
    const Deadline now = Clock::now();
    if (connection_.get() == nullptr || now - since < silence)
        return;
    if (!silentSince_) {
        silentSince_ = since;
        log_.line(QStringLiteral("runningApplications: the session bus does not answer"));
    }
    if (now - *silentSince_ >= patience_.silence)
        quietUntil_ = now + patience_.afterSilence;
}

void ApplicationDirectory::forgetDeparted()
{
    const std::set<std::string_view> listed(listed_.begin(), listed_.end());
    std::erase_if(names_, [&listed](const auto& entry) { return !listed.contains(entry.first); });
    std::set<std::string_view> owners;
    for (const auto& [name, entry] : names_)
        owners.insert(entry.owner);
    std::erase_if(applications_, [&owners](const auto& entry) { return !owners.contains(entry.first); });
}

void ApplicationDirectory::learnOwner(const std::string& name)
{
    Name& known = names_[name];
    if (!known.owner.empty()) {
        learnApplication(known.owner, name);
        return;
    }
    if (known.question)
        return;
    known.directory = this;
    known.name = name;
    sd_bus_message* question = nullptr;
    sd_bus_message_new_method_call(connection_.get(), &question, busName, busPath, busName, "GetNameOwner");
    if (question != nullptr)
        sd_bus_message_append(question, "s", name.c_str());
    known.awaited = ask(known.question, question, &ownerArrived, &known, forever);
}

void ApplicationDirectory::learnApplication(const std::string& address, const std::string& name)
{
    Application& application = applications_[address];
    const Deadline now = Clock::now();
    if (application.read || application.question || now < application.askAgainAt)
        return;
    application.directory = this;
    application.name = name;
    application.askedAt = now;
    sd_bus_message* question = nullptr;
    sd_bus_message_new_method_call(connection_.get(), &question, address.c_str(), applicationPath,
                                   "org.freedesktop.DBus.Properties", "GetAll");
    if (question != nullptr)
        sd_bus_message_append(question, "s", applicationInterface);
    application.awaited =
        ask(application.question, question, &propertiesArrived, &application, patience_.answer);
}

bool ApplicationDirectory::isAnyAwaited() const
{
    const auto awaited = [](const auto& entry) { return entry.second.awaited; };
    return std::any_of(names_.begin(), names_.end(), awaited) ||
           std::any_of(applications_.begin(), applications_.end(), awaited);
}

void ApplicationDirectory::stopAwaiting()
{
    for (auto& [name, known] : names_)
        known.awaited = false;
    for (auto& [address, application] : applications_) {
        if (std::exchange(application.awaited, false))
            complain(application, QStringLiteral("it does not answer"));
    }
}

std::vector<RunningApplication> ApplicationDirectory::readable() const
{
    std::vector<RunningApplication> applications;
    std::set<std::string_view> taken; // an application with two names runs once
    for (const std::string& name : listed_) {
        const auto known = names_.find(name);
        if (known == names_.end())
            continue;
        const auto application = applications_.find(known->second.owner);
        if (application != applications_.end() && application->second.read &&
            taken.insert(application->first).second)
            applications.push_back(*application->second.read);
    }
    return applications;
}

void ApplicationDirectory::fail(Application& application, const QString& why)
{
    const Deadline now = Clock::now();
    const bool expired = now - application.askedAt >= patience_.answer;
    application.askAgainAt = expired ? now : now + patience_.afterError;
    complain(application, why);
}

void ApplicationDirectory::complain(Application& application, const QString& why)
{
    if (!std::exchange(application.complained, true))
        log_.line(QStringLiteral("runningApplications: %1 cannot be read: %2")
                      .arg(QString::fromStdString(application.name).left(300), why.left(300)));
}

bool ApplicationDirectory::ask(BusSlot& slot, sd_bus_message* question, sd_bus_message_handler_t handler,
                               void* userdata, std::chrono::microseconds timeout)
{
    const BusMessage owned(question);
    const auto span = timeout == forever ? UINT64_MAX : static_cast<std::uint64_t>(timeout.count());
    sd_bus_slot* asked = nullptr;
    if (question == nullptr ||
        sd_bus_call_async(connection_.get(), &asked, question, handler, userdata, span) < 0)
        return false;
    slot.reset(asked);
    return true;
}

int ApplicationDirectory::namesArrived(sd_bus_message* answer, void* userdata, sd_bus_error*)
{
    auto* const self = static_cast<ApplicationDirectory*>(userdata);
    self->listing_.reset();
    self->listed_ = readApplicationNames(answer);
    return 0;
}

int ApplicationDirectory::ownerArrived(sd_bus_message* answer, void* userdata, sd_bus_error*)
{
    auto& known = *static_cast<Name*>(userdata);
    known.question.reset();
    known.awaited = false;
    const char* owner = nullptr;
    if (sd_bus_message_is_method_error(answer, nullptr) > 0 || sd_bus_message_read(answer, "s", &owner) <= 0)
        return 0; // gone in the meantime
    known.owner = owner;
    known.directory->learnApplication(known.owner, known.name);
    return 0;
}

int ApplicationDirectory::ownerChanged(sd_bus_message* signal, void* userdata, sd_bus_error*)
{
    auto* const self = static_cast<ApplicationDirectory*>(userdata);
    const char* name = nullptr;
    const char* before = nullptr;
    const char* now = nullptr;
    // A signal that somebody else sends to this connection alone gets past the match.
    const char* const sender = sd_bus_message_get_sender(signal);
    if (sender == nullptr || sender != std::string_view(busName) ||
        sd_bus_message_read(signal, "sss", &name, &before, &now) <= 0)
        return 0;
    // The owner of a name that is not known is asked for when the name is listed.
    const auto known = self->names_.find(name);
    if (known == self->names_.end())
        return 0;
    known->second.owner = now;
    known->second.question.reset();
    known->second.awaited = false;
    return 0;
}

int ApplicationDirectory::propertiesArrived(sd_bus_message* answer, void* userdata, sd_bus_error*)
{
    auto& application = *static_cast<Application*>(userdata);
    application.question.reset();
    application.awaited = false;
    if (sd_bus_message_is_method_error(answer, nullptr) > 0) {
        application.directory->fail(application, busErrorText(answer));
        return 0;
    }
    application.read = readApplicationProperties(answer);
    if (application.read)
        application.read->address = QString::fromUtf8(sd_bus_message_get_sender(answer));
    else
        application.directory->fail(application, QStringLiteral("it gives no DisplayName"));
    return 0;
}

} // namespace spotwell
