#include "platform/linux/ApplicationProperties.h"

#include <cstring>
#include <string_view>

namespace spotwell
{

namespace
{

constexpr qsizetype maxNameLength = 1000;
constexpr qsizetype maxVersionLength = 1000;

/// Reads the variant at the read position if it is a text, and skips it otherwise.
std::optional<QString> readTextVariant(sd_bus_message* message)
{
    char type = 0;
    const char* contents = nullptr;
    const char* text = nullptr;
    if (sd_bus_message_peek_type(message, &type, &contents) > 0 && type == SD_BUS_TYPE_VARIANT &&
        std::strcmp(contents, "s") == 0) {
        if (sd_bus_message_read(message, "v", "s", &text) < 0)
            return std::nullopt;
        return QString::fromUtf8(text);
    }
    sd_bus_message_skip(message, "v");
    return std::nullopt;
}

} // namespace

std::optional<RunningApplication> readApplicationProperties(sd_bus_message* answer)
{
    std::optional<QString> displayName;
    std::optional<QString> version;
    if (sd_bus_message_enter_container(answer, SD_BUS_TYPE_ARRAY, "{sv}") < 0)
        return std::nullopt;
    while (sd_bus_message_enter_container(answer, SD_BUS_TYPE_DICT_ENTRY, "sv") > 0) {
        const char* key = nullptr;
        if (sd_bus_message_read(answer, "s", &key) < 0)
            return std::nullopt;
        const std::optional<QString> text = readTextVariant(answer);
        if (key == std::string_view("DisplayName"))
            displayName = text;
        else if (key == std::string_view("Version"))
            version = text;
        if (sd_bus_message_exit_container(answer) < 0)
            return std::nullopt;
    }
    if (!displayName || displayName->size() > maxNameLength)
        return std::nullopt;
    if (version)
        version->truncate(maxVersionLength);
    return RunningApplication{*displayName, BundleInformation{version}, {}};
}

} // namespace spotwell
