// SPDX-FileCopyrightText: 2026 the spotwell developers
// SPDX-License-Identifier: MIT

#include "platform/linux/bus/SandboxBus.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <chrono>
#include <cstddef>
#include <cstdlib>
#include <fcntl.h>
#include <optional>
#include <poll.h>
#include <string_view>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>
#include <utility>

namespace spotwell
{

namespace
{

using namespace std::chrono_literals;
using namespace std::string_view_literals;
using GreetingClock = std::chrono::steady_clock;

constexpr auto longestGreetingInside = 250ms;
constexpr std::size_t longestAnswer = 256;
constexpr std::string_view lastLine = "BEGIN\r\n";

class Socket
{
public:
    explicit Socket(int descriptor) : descriptor_(descriptor) {}
    Socket(Socket&& other) noexcept : descriptor_(std::exchange(other.descriptor_, -1)) {}
    Socket(const Socket&) = delete;
    Socket& operator=(const Socket&) = delete;
    Socket& operator=(Socket&&) = delete;
    ~Socket()
    {
        if (descriptor_ >= 0)
            ::close(descriptor_);
    }
    [[nodiscard]] int get() const { return descriptor_; }
    /// Somebody else closes it.
    int release() { return std::exchange(descriptor_, -1); }
    [[nodiscard]] bool send(std::string_view text) const
    {
        return ::send(descriptor_, text.data(), text.size(), MSG_NOSIGNAL) ==
               static_cast<ssize_t>(text.size());
    }

private:
    int descriptor_;
};

/// A connection to the socket of an address such as "unix:path=/run/flatpak/bus"; none for any other kind.
Socket connectTo(std::string_view address)
{
    constexpr std::string_view kind = "unix:path=";
    sockaddr_un place{};
    place.sun_family = AF_UNIX;
    if (address.substr(0, kind.size()) != kind)
        return Socket(-1);
    const std::string_view path = address.substr(kind.size(), address.find_first_of(",;") - kind.size());
    if (path.size() >= sizeof place.sun_path || path.find('%') != std::string_view::npos)
        return Socket(-1);
    (void)path.copy(place.sun_path, path.size());
    Socket socket(::socket(AF_UNIX, SOCK_STREAM | SOCK_NONBLOCK | SOCK_CLOEXEC, 0));
    if (::connect(socket.get(), reinterpret_cast<const sockaddr*>(&place), sizeof place) < 0)
        return Socket(-1);
    return socket;
}

/// The next line without its end; absent when none comes.
std::optional<std::string> readLine(const Socket& socket, GreetingClock::time_point deadline)
{
    std::string line;
    while (line.size() < longestAnswer) {
        const auto left = std::chrono::ceil<std::chrono::milliseconds>(deadline - GreetingClock::now());
        pollfd entry{socket.get(), POLLIN, 0};
        if (::poll(&entry, 1, static_cast<int>(std::max(left, 0ms).count())) <= 0)
            return std::nullopt;
        // Byte by byte, for what follows the last line is not for here.
        char byte = '\0';
        if (::recv(socket.get(), &byte, 1, 0) != 1)
            return std::nullopt;
        if (byte == '\n' && !line.empty() && line.back() == '\r') {
            line.pop_back();
            return line;
        }
        line += byte;
    }
    return std::nullopt;
}

/// Is let in by the bus (D-Bus specification, "Authentication Protocol"). What it said, which holds its id;
/// absent when it does not let anybody in.
std::optional<std::string> greet(const Socket& socket, GreetingClock::time_point deadline)
{
    if (!socket.send("\0AUTH EXTERNAL\r\n"sv) || readLine(socket, deadline) != "DATA" ||
        !socket.send("DATA\r\n"))
        return std::nullopt;
    auto welcome = readLine(socket, deadline);
    if (!welcome || welcome->substr(0, 3) != "OK " || !socket.send(lastLine))
        return std::nullopt;
    return welcome;
}

/// Has sd-bus greet somebody who answers at once, then puts the bus in his place.
int handOver(sd_bus* bus, const Socket& real, const std::string& welcome)
{
    std::array<int, 2> ends{};
    if (::socketpair(AF_UNIX, SOCK_STREAM | SOCK_NONBLOCK | SOCK_CLOEXEC, 0, ends.data()) < 0)
        return -errno;
    Socket own(ends[0]);
    const Socket other(ends[1]);
    int result = sd_bus_set_fd(bus, own.get(), own.get());
    if (result < 0)
        return result;
    // From here on it is sd-bus's, which keeps its number.
    const int kept = own.release();
    result = sd_bus_start(bus);
    if (result >= 0 && !other.send("DATA\r\n" + welcome + "\r\n"))
        result = -EIO;
    if (result >= 0)
        result = sd_bus_process(bus, nullptr);
    if (result < 0)
        return result;
    std::array<char, 4096> buffer{};
    const ssize_t got = ::recv(other.get(), buffer.data(), buffer.size(), 0);
    const std::string_view said(buffer.data(), static_cast<std::size_t>(std::max<ssize_t>(got, 0)));
    const std::size_t end = said.find(lastLine);
    // It may have said more already than its greeting.
    if (end == std::string_view::npos || !real.send(said.substr(end + lastLine.size())))
        return -EIO;
    return ::dup3(real.get(), kept, O_CLOEXEC) < 0 ? -errno : 1;
}

int noteAnswer(sd_bus_message*, void* userdata, sd_bus_error*)
{
    *static_cast<bool*>(userdata) = true;
    return 0;
}

/// Takes in what comes until `done()`; false at the deadline and when the connection is lost.
template <typename Done>
bool processUntil(sd_bus* bus, GreetingClock::time_point deadline, Done done)
{
    while (!done()) {
        const int result = sd_bus_process(bus, nullptr);
        const auto left = std::chrono::ceil<std::chrono::milliseconds>(deadline - GreetingClock::now());
        if (result < 0 || left <= 0ms)
            return false; // a loss is found by the next use of the connection
        if (result == 0) {
            pollfd entry{sd_bus_get_fd(bus), static_cast<short>(std::max(sd_bus_get_events(bus), 0)), 0};
            (void)::poll(&entry, 1, static_cast<int>(left.count()));
        }
    }
    return true;
}

/// Until the proxy has learnt who owns the names that may be spoken to, it knows nobody by a unique name, and
/// counts the answers to what was asked meanwhile wrong: these are lost. So nothing is asked until a question
/// of no matter was answered.
void waitForProxy(sd_bus* bus, GreetingClock::time_point deadline)
{
    constexpr auto betweenQuestions = 10ms;
    if (!processUntil(bus, deadline, [bus] { return sd_bus_is_ready(bus) > 0; }))
        return;
    bool answered = false;
    while (!answered && GreetingClock::now() < deadline) {
        // The proxy begins with the bus's answer to the greeting, which it has passed on.
        (void)processUntil(bus, GreetingClock::now() + betweenQuestions, [] { return false; });
        sd_bus_slot* question = nullptr;
        if (sd_bus_call_method_async(bus, &question, "org.freedesktop.DBus", "/org/freedesktop/DBus",
                                     "org.freedesktop.DBus.Peer", "Ping", &noteAnswer, &answered, "") < 0)
            return;
        (void)processUntil(bus, std::min(deadline, GreetingClock::now() + betweenQuestions),
                           [&answered] { return answered; });
        sd_bus_slot_unref(question);
    }
}

} // namespace

bool isSandboxed()
{
    return std::getenv("FLATPAK_ID") != nullptr;
}

int startLineByLine(sd_bus* bus, const std::string& address)
{
    const auto deadline = GreetingClock::now() + longestGreetingInside;
    const Socket real = connectTo(address);
    if (real.get() < 0)
        return 0;
    const auto welcome = greet(real, deadline);
    if (!welcome)
        return 0;
    const int result = handOver(bus, real, *welcome);
    if (result > 0)
        waitForProxy(bus, deadline);
    return result;
}

} // namespace spotwell
