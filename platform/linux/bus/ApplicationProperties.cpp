// SPDX-FileCopyrightText: 2026 the spotwell developers
// SPDX-License-Identifier: MIT

#include "platform/linux/bus/ApplicationProperties.h"

#include "platform/linux/bus/BusParts.h"

#include <algorithm>
#include <cstring>
#include <string_view>

namespace spotwell
{

namespace
{

constexpr qsizetype maxNameLength = 1000;
constexpr qsizetype maxVersionLength = 1000;

/// More bytes of UTF-8 than the longest of either text has.
constexpr std::size_t mostTextBytes = 4000;

/// One property, its value a text or of another type.
struct Property {
    std::string_view key;
    std::optional<QString> text;
};

/// Reads the entry at the read position. Absent when there is none, or none that is in order and within
/// `parts`.
std::optional<Property> readProperty(sd_bus_message* message, std::size_t& parts)
{
    const char* key = nullptr;
    char type = 0;
    const char* contents = nullptr;
    if (sd_bus_message_read_basic(message, SD_BUS_TYPE_STRING, static_cast<void*>(&key)) <= 0 ||
        sd_bus_message_peek_type(message, &type, &contents) <= 0)
        return std::nullopt;
    Property property{key, std::nullopt};
    if (contents == std::string_view("s")) {
        const char* text = nullptr;
        if (parts == 0 || sd_bus_message_read(message, "v", "s", &text) <= 0)
            return std::nullopt;
        --parts;
        const std::size_t length = std::min(std::strlen(text), mostTextBytes);
        property.text = QString::fromUtf8(text, static_cast<qsizetype>(length));
    } else if (!passOverBusValue(message, parts)) {
        return std::nullopt;
    }
    return property;
}

} // namespace

std::optional<RunningApplication> readApplicationProperties(sd_bus_message* answer)
{
    std::optional<QString> displayName;
    std::optional<QString> version;
    std::size_t parts = mostPropertyParts;
    if (sd_bus_message_enter_container(answer, SD_BUS_TYPE_ARRAY, "{sv}") < 0)
        return std::nullopt;
    while (sd_bus_message_enter_container(answer, SD_BUS_TYPE_DICT_ENTRY, "sv") > 0) {
        const std::optional<Property> property = readProperty(answer, parts);
        if (!property || sd_bus_message_exit_container(answer) < 0)
            return std::nullopt;
        if (property->key == "DisplayName")
            displayName = property->text;
        else if (property->key == "Version")
            version = property->text;
    }
    if (!displayName || displayName->size() > maxNameLength)
        return std::nullopt;
    if (version)
        version->truncate(maxVersionLength);
    return RunningApplication{*displayName, BundleInformation{version}, {}};
}

} // namespace spotwell
