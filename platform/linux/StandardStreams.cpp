// SPDX-FileCopyrightText: 2026 the spotwell developers
// SPDX-License-Identifier: MIT

#include "platform/linux/StandardStreams.h"

#include <fcntl.h>
#include <unistd.h>

namespace spotwell
{

void occupyStandardStreams()
{
    int descriptor = -1;
    do {
        // Not for writing: that fails as it would have.
        descriptor = ::open("/dev/null", O_RDONLY);
    } while (descriptor >= 0 && descriptor <= STDERR_FILENO);
    if (descriptor >= 0)
        ::close(descriptor);
}

} // namespace spotwell
