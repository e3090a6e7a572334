// SPDX-FileCopyrightText: 2026 the spotwell developers
// SPDX-License-Identifier: MIT

// The floor of handing spots from the session bus to telnet clients: one sd-bus connection, a socket for each
// client, and nothing between them. Keeps nothing, looks at nothing a client says but its callsign, and takes
// it that all clients have logged in before the first spot. Says where it listens, as spotwell-bridge does.

#include "platform/linux/bus/BusConnection.h"

#include <arpa/inet.h>
#include <array>
#include <cstdint>
#include <cstdio>
#include <memory>
#include <netinet/in.h>
#include <netinet/tcp.h>
#include <poll.h>
#include <string>
#include <string_view>
#include <sys/socket.h>
#include <unistd.h>
#include <vector>

namespace
{

constexpr const char* rule = "type='signal',path='/com/tarnbrooksoftware/DistributedNotifications',"
                             "interface='com.tarnbrooksoftware.DistributedNotifications',member='Posted'";

/// What of a spot is used.
struct Spot {
    const char* line = nullptr;
    const char* call = "";
    const char* comment = "";
    const char* spotter = "";
    const char* grid = "";
    double megahertz = 0;
    std::int64_t microseconds = 0;
};

void read(sd_bus_message* signal, Spot& spot)
{
    const char* key = nullptr;
    sd_bus_message_skip(signal, "ss");
    sd_bus_message_enter_container(signal, SD_BUS_TYPE_ARRAY, "{sv}");
    while (sd_bus_message_enter_container(signal, SD_BUS_TYPE_DICT_ENTRY, "sv") > 0) {
        sd_bus_message_read(signal, "s", &key);
        const std::string_view name = key;
        if (name == "line")
            sd_bus_message_read(signal, "v", "s", &spot.line);
        else if (name == "combinedCallsign")
            sd_bus_message_read(signal, "v", "s", &spot.call);
        else if (name == "comments")
            sd_bus_message_read(signal, "v", "s", &spot.comment);
        else if (name == "dxde_call")
            sd_bus_message_read(signal, "v", "s", &spot.spotter);
        else if (name == "grid")
            sd_bus_message_read(signal, "v", "s", &spot.grid);
        else if (name == "megahertz")
            sd_bus_message_read(signal, "v", "d", &spot.megahertz);
        else if (name == "timestamp")
            sd_bus_message_read(signal, "v", "x", &spot.microseconds);
        else
            sd_bus_message_skip(signal, "v");
        sd_bus_message_exit_container(signal);
    }
}

std::string lineOf(const Spot& spot)
{
    if (spot.line != nullptr)
        return std::string(spot.line) + "\r\n";
    constexpr std::int64_t microsecondsPerMinute = 60'000'000;
    const std::int64_t minute = spot.microseconds / microsecondsPerMinute % (24 * 60);
    std::array<char, 200> line{};
    (void)std::snprintf(line.data(), line.size(), "DX de %-10s%8.1f  %-12s %-30s %02d%02dZ %s\r\n",
                        (std::string(spot.spotter) + ':').c_str(), spot.megahertz * 1000, spot.call,
                        spot.comment, static_cast<int>(minute / 60), static_cast<int>(minute % 60),
                        spot.grid);
    return line.data();
}

int forward(sd_bus_message* signal, void* userdata, sd_bus_error*)
{
    Spot spot;
    read(signal, spot);
    const std::string line = lineOf(spot);
    for (const int client : *static_cast<const std::vector<int>*>(userdata))
        (void)::send(client, line.data(), line.size(), MSG_NOSIGNAL | MSG_DONTWAIT);
    return 0;
}

void say(int client, std::string_view text)
{
    (void)::send(client, text.data(), text.size(), MSG_NOSIGNAL);
}

/// Takes in a client, as far as its callsign.
int welcome(int listener)
{
    const int client = ::accept4(listener, nullptr, nullptr, SOCK_CLOEXEC);
    const int on = 1;
    (void)::setsockopt(client, IPPROTO_TCP, TCP_NODELAY, &on, sizeof on);
    say(client, "login: ");
    std::array<char, 100> callsign{};
    (void)::recv(client, callsign.data(), callsign.size(), 0);
    say(client, "bare >\r\n");
    return client;
}

} // namespace

int main()
{
    sd_bus* opened = nullptr;
    if (sd_bus_open_user(&opened) < 0)
        return 1;
    const std::unique_ptr<sd_bus, spotwell::BusRelease> bus(opened);
    std::vector<int> clients;
    if (sd_bus_add_match(opened, nullptr, rule, &forward, &clients) < 0)
        return 1;

    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    socklen_t length = sizeof address;
    const int listener = ::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
    if (::bind(listener, reinterpret_cast<const sockaddr*>(&address), length) != 0 ||
        ::listen(listener, 128) != 0 ||
        ::getsockname(listener, reinterpret_cast<sockaddr*>(&address), &length) != 0) {
        ::close(listener);
        return 1;
    }
    std::printf("listening on 127.0.0.1:%u\nreceiving spots\n",
                static_cast<unsigned>(ntohs(address.sin_port)));
    std::fflush(stdout);

    // Until a signal ends it.
    while (true) {
        while (sd_bus_process(opened, nullptr) > 0) {
        }
        std::array<pollfd, 2> entries{
            pollfd{sd_bus_get_fd(opened), static_cast<short>(sd_bus_get_events(opened)), 0},
            pollfd{listener, POLLIN, 0}};
        ::poll(entries.data(), entries.size(), -1);
        if (entries[1].revents != 0)
            clients.push_back(welcome(listener));
    }
}
