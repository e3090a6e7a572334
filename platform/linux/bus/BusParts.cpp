// SPDX-FileCopyrightText: 2026 the spotwell developers
// SPDX-License-Identifier: MIT

#include "platform/linux/bus/BusParts.h"

namespace spotwell
{

bool passOverBusValue(sd_bus_message* message, std::size_t& parts)
{
    char type = 0;
    const char* contents = nullptr;
    if (parts == 0 || sd_bus_message_peek_type(message, &type, &contents) <= 0)
        return false;
    --parts;
    if (contents == nullptr)
        return sd_bus_message_skip(message, nullptr) >= 0;
    if (sd_bus_message_enter_container(message, type, contents) < 0)
        return false;
    while (sd_bus_message_at_end(message, 0) == 0) {
        if (!passOverBusValue(message, parts))
            return false;
    }
    return sd_bus_message_exit_container(message) >= 0;
}

} // namespace spotwell
