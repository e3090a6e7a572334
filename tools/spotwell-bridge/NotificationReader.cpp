// SPDX-FileCopyrightText: 2026 the spotwell developers
// SPDX-License-Identifier: MIT

#include "tools/spotwell-bridge/NotificationReader.h"

#include "platform/linux/bus/BusParts.h"

#include <cstdint>
#include <cstring>
#include <string_view>

namespace spotwell::bridge
{

namespace
{

/// Reads one notification, within the bounds of what a notification may cost. Nothing of it is read again
/// after something was absent.
class Reader
{
public:
    explicit Reader(sd_bus_message* message) : message_(message) {}

    std::optional<Notification> read();

private:
    bool readEntry(Notification& notification);
    std::optional<QString> readText();
    std::optional<Value> readValue();
    template <typename Number>
    std::optional<Number> readNumber(char type);

    sd_bus_message* message_;
    std::size_t textBytes_ = mostTextBytes;
    /// Of values of a type that the interface does not know.
    std::size_t parts_ = mostEntries;
};

std::optional<Notification> Reader::read()
{
    if (sd_bus_message_has_signature(message_, "ssa{sv}") <= 0)
        return std::nullopt;
    const auto name = readText();
    const auto object = name ? readText() : std::nullopt;
    if (!object || sd_bus_message_enter_container(message_, SD_BUS_TYPE_ARRAY, "{sv}") < 0)
        return std::nullopt;
    Notification notification{*name, *object, {}};
    while (sd_bus_message_enter_container(message_, SD_BUS_TYPE_DICT_ENTRY, "sv") > 0) {
        if (!readEntry(notification) || sd_bus_message_exit_container(message_) < 0)
            return std::nullopt;
    }
    return notification;
}

bool Reader::readEntry(Notification& notification)
{
    if (notification.userInfo.size() == mostEntries)
        return false;
    const auto key = readText();
    char type = 0;
    const char* contents = nullptr;
    if (!key || sd_bus_message_peek_type(message_, &type, &contents) <= 0 ||
        sd_bus_message_enter_container(message_, SD_BUS_TYPE_VARIANT, contents) <= 0)
        return false;
    const auto value = readValue();
    if (!value || sd_bus_message_exit_container(message_) < 0)
        return false;
    notification.userInfo.emplace_back(*key, *value);
    return true;
}

/// Absent when it is too long.
std::optional<QString> Reader::readText()
{
    const char* text = nullptr;
    if (sd_bus_message_read_basic(message_, SD_BUS_TYPE_STRING, static_cast<void*>(&text)) <= 0)
        return std::nullopt;
    const std::size_t length = std::strlen(text);
    if (length > maxBusTextBytes || length > textBytes_)
        return std::nullopt;
    textBytes_ -= length;
    return QString::fromUtf8(text, static_cast<qsizetype>(length));
}

template <typename Number>
std::optional<Number> Reader::readNumber(char type)
{
    Number number{};
    if (sd_bus_message_read_basic(message_, type, &number) <= 0)
        return std::nullopt;
    return number;
}

/// The value inside of a variant.
std::optional<Value> Reader::readValue()
{
    char type = 0;
    if (sd_bus_message_peek_type(message_, &type, nullptr) <= 0)
        return std::nullopt;
    switch (type) {
    case SD_BUS_TYPE_STRING:
        return readText();
    case SD_BUS_TYPE_DOUBLE:
        return readNumber<double>(type);
    case SD_BUS_TYPE_INT64:
        if (const auto microseconds = readNumber<std::int64_t>(type))
            return TimePoint{std::chrono::microseconds{*microseconds}};
        return std::nullopt;
    default:
        return passOverBusValue(message_, parts_) ? std::optional<Value>(std::monostate{}) : std::nullopt;
    }
}

} // namespace

std::optional<Notification> readNotification(sd_bus_message* signal)
{
    return Reader(signal).read();
}

} // namespace spotwell::bridge
