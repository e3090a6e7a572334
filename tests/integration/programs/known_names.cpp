// SPDX-FileCopyrightText: 2026 the spotwell developers
// SPDX-License-Identifier: MIT

// The names that a program started with this finds are those in the file named by KNOWN_NAMES, whatever it
// says at the time: lines of an address and a name, as /etc/hosts has them, in the order in which they are to
// be tried. The look-up of a name with "silent" for an address waits until that line has gone.

#include <arpa/inet.h>
#include <cstdlib>
#include <cstring>
#include <dlfcn.h>
#include <fstream>
#include <netdb.h>
#include <string>
#include <unistd.h>

namespace
{

using Resolver = int (*)(const char*, const char*, const addrinfo*, addrinfo**);

bool isAddress(const char* name)
{
    in6_addr address{};
    return ::inet_pton(AF_INET, name, &address) == 1 || ::inet_pton(AF_INET6, name, &address) == 1;
}

/// The file's addresses of a name, as one list; false when it says that nobody answers.
bool collect(Resolver resolve, const char* name, const char* service, const addrinfo* hints, addrinfo** list)
{
    std::ifstream file(std::getenv("KNOWN_NAMES"));
    std::string address;
    for (std::string known; file >> address >> known;) {
        if (known != name)
            continue;
        if (address == "silent")
            return false;
        if (resolve(address.c_str(), service, hints, list) != 0)
            continue;
        while (*list != nullptr)
            list = &(*list)->ai_next;
    }
    return true;
}

} // namespace

extern "C" int getaddrinfo(const char* name, const char* service, const addrinfo* hints, addrinfo** list)
{
    constexpr useconds_t lookAgainMicroseconds = 10'000;
    const auto resolve = reinterpret_cast<Resolver>(::dlsym(RTLD_NEXT, "getaddrinfo"));
    if (name == nullptr || isAddress(name))
        return resolve(name, service, hints, list);
    *list = nullptr;
    while (!collect(resolve, name, service, hints, list))
        ::usleep(lookAgainMicroseconds);
    return *list == nullptr ? EAI_NONAME : 0;
}
