// SPDX-FileCopyrightText: 2026 the spotwell developers
// SPDX-License-Identifier: MIT

#include <cstdio>
#include <netdb.h>
#include <unistd.h>

// A name server that stays silent, longer than any test.
extern "C" int getaddrinfo(const char* name, const char*, const addrinfo*, addrinfo**)
{
    std::fprintf(stderr, "looking for %s\n", name);
    while (true)
        ::pause();
}
