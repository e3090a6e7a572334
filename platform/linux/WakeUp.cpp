// SPDX-FileCopyrightText: 2026 the spotwell developers
// SPDX-License-Identifier: MIT

#include "platform/linux/WakeUp.h"

#include <cerrno>
#include <cstdint>
#include <poll.h>
#include <sys/eventfd.h>
#include <system_error>
#include <unistd.h>

namespace spotwell
{

WakeUp::WakeUp() : descriptor_(::eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK))
{
    if (descriptor_ < 0)
        throw std::system_error(errno, std::generic_category(), "eventfd");
}

WakeUp::~WakeUp()
{
    ::close(descriptor_);
}

void WakeUp::wake()
{
    const std::uint64_t one = 1;
    // Fails only when it is readable already.
    [[maybe_unused]] const auto written = ::write(descriptor_, &one, sizeof one);
}

void WakeUp::clear()
{
    std::uint64_t count = 0;
    // Fails only when there is nothing to clear.
    [[maybe_unused]] const auto got = ::read(descriptor_, &count, sizeof count);
}

bool WakeUp::isAwake() const
{
    pollfd entry{descriptor_, POLLIN, 0};
    return ::poll(&entry, 1, 0) > 0;
}

} // namespace spotwell
