// SPDX-FileCopyrightText: 2026 the spotwell developers
// SPDX-License-Identifier: MIT

#include "tests/platform/NameServer.h"

#include <arpa/inet.h>
#include <condition_variable>
#include <cstdlib>
#include <cstring>
#include <map>
#include <mutex>
#include <netdb.h>
#include <netinet/in.h>
#include <utility>

namespace spotwell
{

namespace
{

struct Names {
    std::mutex mutex;
    std::condition_variable changed;
    std::map<std::string, std::vector<std::string>> addresses;
    std::string held;
    int waiting = 0;
};

Names& names()
{
    // Never destroyed: a look-up's thread may outlive main().
    static Names& all = *new Names;
    return all;
}

/// An address of a list, in one piece of memory with its entry.
struct Entry {
    addrinfo info;
    sockaddr_storage storage;
};

addrinfo* makeEntry(const std::string& address, std::uint16_t port)
{
    auto* entry = static_cast<Entry*>(std::calloc(1, sizeof(Entry)));
    auto* v6 = reinterpret_cast<sockaddr_in6*>(&entry->storage);
    auto* v4 = reinterpret_cast<sockaddr_in*>(&entry->storage);
    if (::inet_pton(AF_INET6, address.c_str(), &v6->sin6_addr) == 1) {
        v6->sin6_family = AF_INET6;
        v6->sin6_port = htons(port);
        entry->info.ai_addrlen = sizeof *v6;
    } else {
        ::inet_pton(AF_INET, address.c_str(), &v4->sin_addr);
        v4->sin_family = AF_INET;
        v4->sin_port = htons(port);
        entry->info.ai_addrlen = sizeof *v4;
    }
    entry->info.ai_family = entry->storage.ss_family;
    entry->info.ai_socktype = SOCK_STREAM;
    entry->info.ai_addr = reinterpret_cast<sockaddr*>(&entry->storage);
    return &entry->info;
}

} // namespace

void NameServer::set(const std::string& name, std::vector<std::string> addresses)
{
    const std::lock_guard guard(names().mutex);
    names().addresses[name] = std::move(addresses);
}

void NameServer::hold(const std::string& name)
{
    const std::lock_guard guard(names().mutex);
    names().held = name;
}

void NameServer::release()
{
    const std::lock_guard guard(names().mutex);
    names().held.clear();
    names().changed.notify_all();
}

int NameServer::waiting()
{
    const std::lock_guard guard(names().mutex);
    return names().waiting;
}

} // namespace spotwell

// These take the place of the C library's own for the whole program.
extern "C" int getaddrinfo(const char* node, const char* service, const addrinfo*, addrinfo** result)
{
    using namespace spotwell;
    std::unique_lock guard(names().mutex);
    ++names().waiting;
    names().changed.wait(guard, [node] { return names().held != node; });
    --names().waiting;
    const auto found = names().addresses.find(node);
    if (found == names().addresses.end())
        return EAI_NONAME;
    addrinfo** end = result;
    for (const std::string& address : found->second) {
        *end = makeEntry(address, static_cast<std::uint16_t>(std::atoi(service)));
        end = &(*end)->ai_next;
    }
    return 0;
}

extern "C" void freeaddrinfo(addrinfo* list)
{
    while (list)
        std::free(std::exchange(list, list->ai_next));
}
