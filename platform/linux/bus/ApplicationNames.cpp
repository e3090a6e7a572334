// SPDX-FileCopyrightText: 2026 the spotwell developers
// SPDX-License-Identifier: MIT

#include "platform/linux/bus/ApplicationNames.h"

#include <string_view>

namespace spotwell
{

namespace
{

constexpr std::string_view namePrefix = "com.tarnbrooksoftware.Application.";

} // namespace

std::vector<std::string> readApplicationNames(sd_bus_message* answer)
{
    std::vector<std::string> names;
    if (sd_bus_message_is_method_error(answer, nullptr) > 0 ||
        sd_bus_message_enter_container(answer, SD_BUS_TYPE_ARRAY, "s") < 0)
        return names;
    const char* name = nullptr;
    while (names.size() < mostApplicationNames && sd_bus_message_read(answer, "s", &name) > 0) {
        if (std::string_view(name).starts_with(namePrefix))
            names.emplace_back(name);
    }
    return names;
}

} // namespace spotwell
