// SPDX-FileCopyrightText: 2026 the spotwell developers
// SPDX-License-Identifier: MIT

#include "platform/linux/bus/PortalContrast.h"

#include <array>
#include <optional>
#include <utility>

namespace spotwell
{

namespace
{

struct Setting {
    const char* space;
    const char* key;
};
constexpr std::array<Setting, 2> contrastSettings{
    {{"org.freedesktop.appearance", "contrast"}, {"org.gnome.desktop.a11y.interface", "high-contrast"}}};

/// How far the answers are.
struct Answers {
    std::size_t count = 0;
    /// Absent: nobody could tell.
    std::optional<bool> high;
};

/// What a setting says: a Boolean, or a number that is 1 for high contrast. The portal wraps it twice.
std::optional<bool> readSetting(sd_bus_message* answer)
{
    constexpr int mostWraps = 3;
    for (int wraps = 0; wraps <= mostWraps; ++wraps) {
        char type = 0;
        const char* contents = nullptr;
        if (sd_bus_message_peek_type(answer, &type, &contents) <= 0)
            return std::nullopt;
        if (type == SD_BUS_TYPE_VARIANT) {
            if (sd_bus_message_enter_container(answer, type, contents) <= 0)
                return std::nullopt;
            continue;
        }
        // A Boolean takes as much as the number.
        std::uint32_t value = 0;
        if ((type != SD_BUS_TYPE_BOOLEAN && type != SD_BUS_TYPE_UINT32) ||
            sd_bus_message_read_basic(answer, type, &value) <= 0)
            return std::nullopt;
        return value == 1;
    }
    return std::nullopt;
}

int takeAnswer(sd_bus_message* answer, void* userData, sd_bus_error*)
{
    auto& answers = *static_cast<Answers*>(userData);
    ++answers.count;
    if (sd_bus_message_is_method_error(answer, nullptr) > 0)
        return 0;
    if (const std::optional<bool> high = readSetting(answer))
        answers.high = answers.high.value_or(false) || *high;
    return 0;
}

BusMessage question(sd_bus* bus, const Setting& setting)
{
    sd_bus_message* created = nullptr;
    if (sd_bus_message_new_method_call(bus, &created, "org.freedesktop.portal.Desktop",
                                       "/org/freedesktop/portal/desktop", "org.freedesktop.portal.Settings",
                                       "Read") < 0)
        return {};
    BusMessage message(created);
    if (sd_bus_message_set_auto_start(created, 0) < 0 ||
        sd_bus_message_append(created, "ss", setting.space, setting.key) < 0)
        return {};
    return message;
}

} // namespace

PortalContrast::PortalContrast(SessionBus& bus, MainQueue& mainQueue, std::unique_ptr<SerialQueue> worker,
                               std::chrono::milliseconds limit)
    : bus_(bus), mainQueue_(mainQueue), limit_(limit), worker_(std::move(worker))
{
}

PortalContrast::~PortalContrast()
{
    stopping_.wake();
    worker_.reset();
}

void PortalContrast::ask(std::function<void(bool high)> answer)
{
    if (asking_.exchange(true))
        return;
    worker_->async([this, answer = std::move(answer)] {
        read(answer);
        asking_ = false;
    });
}

void PortalContrast::read(const std::function<void(bool high)>& answer)
{
    const auto deadline = BusConnection::Clock::now() + limit_;
    BusConnection connection(bus_, "settings portal");
    if (!connection.open())
        return;
    Answers answers;
    // Let go of before the connection and what they tell.
    std::array<BusSlot, contrastSettings.size()> slots;
    for (std::size_t i = 0; i < contrastSettings.size(); ++i) {
        const BusMessage message = question(connection.get(), contrastSettings.at(i));
        sd_bus_slot* slot = nullptr;
        if (!message ||
            sd_bus_call_async(connection.get(), &slot, message.get(), takeAnswer, &answers, 0) < 0)
            return;
        slots.at(i).reset(slot);
    }
    const bool told = connection.pump(
        deadline, [&answers] { return answers.count == contrastSettings.size(); }, &stopping_);
    if (told && answers.high)
        mainQueue_.async([answer, high = *answers.high] { answer(high); });
}

} // namespace spotwell
