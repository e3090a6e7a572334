// SPDX-FileCopyrightText: 2026 the spotwell developers
// SPDX-License-Identifier: MIT

#include "platform/linux/Fonts.h"

#include <fontconfig/fontconfig.h>
#include <system_error>

namespace spotwell
{

std::thread readFontConfiguration()
{
    try {
        return std::thread([] { static_cast<void>(FcInit()); });
    } catch (const std::system_error&) {
        return {};
    }
}

} // namespace spotwell
