#include "tools/spotwell-bridge/NotificationReader.h"

#include "platform/linux/BusText.h"

#include <cstdint>
#include <cstring>
#include <string_view>

namespace spotwell::bridge
{

namespace
{

/// A text of the message; absent when it is too long.
std::optional<QString> readText(const char* text)
{
    const std::size_t length = std::strlen(text);
    if (length > maxBusTextBytes)
        return std::nullopt;
    return QString::fromUtf8(text, static_cast<qsizetype>(length));
}

/// Reads one value of the dictionary; absent when it is too long.
std::optional<Value> readValue(sd_bus_message* message)
{
    char type = 0;
    const char* contents = nullptr;
    if (sd_bus_message_peek_type(message, &type, &contents) <= 0)
        return std::nullopt;
    const std::string_view signature = contents;
    const char* text = nullptr;
    double number = 0;
    std::int64_t microseconds = 0;
    if (signature == "s" && sd_bus_message_read(message, "v", "s", &text) > 0)
        return readText(text);
    if (signature == "d" && sd_bus_message_read(message, "v", "d", &number) > 0)
        return number;
    if (signature == "x" && sd_bus_message_read(message, "v", "x", &microseconds) > 0)
        return TimePoint{std::chrono::microseconds{microseconds}};
    if (sd_bus_message_skip(message, "v") < 0)
        return std::nullopt;
    return std::monostate{};
}

bool readEntry(sd_bus_message* message, Notification& notification)
{
    const char* key = nullptr;
    if (notification.userInfo.size() == mostEntries || sd_bus_message_read(message, "s", &key) <= 0)
        return false;
    const auto keyText = readText(key);
    const auto value = readValue(message);
    if (!keyText || !value)
        return false;
    notification.userInfo.emplace_back(*keyText, *value);
    return true;
}

} // namespace

std::optional<Notification> readNotification(sd_bus_message* signal)
{
    const char* name = nullptr;
    const char* object = nullptr;
    if (sd_bus_message_has_signature(signal, "ssa{sv}") <= 0 ||
        sd_bus_message_read(signal, "ss", &name, &object) <= 0)
        return std::nullopt;
    const auto nameText = readText(name);
    const auto objectText = readText(object);
    if (!nameText || !objectText || sd_bus_message_enter_container(signal, SD_BUS_TYPE_ARRAY, "{sv}") < 0)
        return std::nullopt;
    Notification notification{*nameText, *objectText, {}};
    while (sd_bus_message_enter_container(signal, SD_BUS_TYPE_DICT_ENTRY, "sv") > 0) {
        if (!readEntry(signal, notification) || sd_bus_message_exit_container(signal) < 0)
            return std::nullopt;
    }
    return notification;
}

} // namespace spotwell::bridge
