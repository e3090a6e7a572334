// SPDX-FileCopyrightText: 2026 the spotwell developers
// SPDX-License-Identifier: MIT

#include "tools/spotwell-bridge/telnet/OpenFiles.h"

#include <algorithm>
#include <sys/resource.h>
#include <utility>

namespace spotwell::bridge
{

std::size_t raiseOpenFileLimit()
{
    rlimit limit{};
    (void)getrlimit(RLIMIT_NOFILE, &limit);
    const rlim_t before = std::exchange(limit.rlim_cur, limit.rlim_max);
    if (setrlimit(RLIMIT_NOFILE, &limit) != 0)
        return before;
    return limit.rlim_cur;
}

std::size_t clientsWithin(std::size_t wanted, std::size_t descriptors)
{
    const std::size_t free = descriptors > reservedDescriptors ? descriptors - reservedDescriptors : 0;
    return std::clamp<std::size_t>(free, 1, std::max<std::size_t>(wanted, 1));
}

} // namespace spotwell::bridge
