// SPDX-FileCopyrightText: 2026 the spotwell developers
// SPDX-License-Identifier: MIT

// Runs a command on a network of its own, where nothing is but loopback:
//
//   private_network                        says why the machine does not permit that, or nothing
//   private_network DIRECTORY COMMAND...   becomes COMMAND
//
// The command sees DIRECTORY's hosts, nsswitch.conf and certs in the places of the system's. Before it
// starts, the listening sockets of 127.0.0.1's ports 80, 443 and 7300 are handed out over DIRECTORY's socket
// "listeners", in this order, so that servers outside can stand for any web service or node the command
// knows.

#include <arpa/inet.h>
#include <array>
#include <cerrno>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <exception>
#include <fstream>
#include <iostream>
#include <net/if.h>
#include <netinet/in.h>
#include <sched.h>
#include <string>
#include <sys/ioctl.h>
#include <sys/mount.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <system_error>
#include <unistd.h>

namespace
{

void require(bool holds, const char* what)
{
    if (!holds)
        throw std::system_error(errno, std::generic_category(), what);
}

void write(const char* path, const std::string& text)
{
    std::ofstream file(path);
    require(!!(file << text << std::flush), path);
}

/// False when the machine does not permit it.
bool leaveForNamespacesOfItsOwn()
{
    constexpr int wanted = CLONE_NEWNS | CLONE_NEWNET;
    if (::unshare(wanted) == 0)
        return true;
    const uid_t user = ::geteuid();
    const gid_t group = ::getegid();
    if (::unshare(wanted | CLONE_NEWUSER) != 0)
        return false;
    // The same user as before: the session bus asks who comes.
    write("/proc/self/setgroups", "deny");
    write("/proc/self/uid_map", std::to_string(user) + ' ' + std::to_string(user) + " 1");
    write("/proc/self/gid_map", std::to_string(group) + ' ' + std::to_string(group) + " 1");
    return true;
}

void mountOver(const std::string& source, const char* target)
{
    require(::mount(source.c_str(), target, nullptr, MS_BIND | MS_REC, nullptr) == 0, target);
}

void startLoopback()
{
    const int control = ::socket(AF_INET, SOCK_DGRAM | SOCK_CLOEXEC, 0);
    ifreq request{};
    std::strcpy(request.ifr_name, "lo");
    request.ifr_flags = IFF_UP | IFF_RUNNING;
    require(::ioctl(control, SIOCSIFFLAGS, &request) == 0, "lo");
    ::close(control);
}

int listenAt(std::uint16_t port)
{
    const int listener = ::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_port = htons(port);
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    // So that a test can end it and let it listen again.
    const int on = 1;
    ::setsockopt(listener, SOL_SOCKET, SO_REUSEADDR, &on, sizeof on);
    require(::bind(listener, reinterpret_cast<const sockaddr*>(&address), sizeof address) == 0, "bind");
    require(::listen(listener, 64) == 0, "listen");
    return listener;
}

void handOut(const std::array<int, 3>& listeners, const std::string& path)
{
    const int receiver = ::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0);
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    require(path.size() < sizeof address.sun_path, "the path of the listeners");
    path.copy(address.sun_path, path.size());
    require(::connect(receiver, reinterpret_cast<const sockaddr*>(&address), sizeof address) == 0, "connect");

    char content = 0;
    iovec bytes{&content, 1};
    alignas(cmsghdr) std::array<char, CMSG_SPACE(sizeof listeners)> control{};
    msghdr message{};
    message.msg_iov = &bytes;
    message.msg_iovlen = 1;
    message.msg_control = control.data();
    message.msg_controllen = control.size();
    cmsghdr* const rights = CMSG_FIRSTHDR(&message);
    rights->cmsg_level = SOL_SOCKET;
    rights->cmsg_type = SCM_RIGHTS;
    rights->cmsg_len = CMSG_LEN(sizeof listeners);
    std::memcpy(CMSG_DATA(rights), listeners.data(), sizeof listeners);
    require(::sendmsg(receiver, &message, 0) == 1, "sendmsg");
    // Until the receiver is ready, and closes.
    (void)::recv(receiver, &content, 1, 0);
    ::close(receiver);
}

} // namespace

int main(int argc, char** argv)
{
    try {
        if (!leaveForNamespacesOfItsOwn()) {
            std::cout << std::strerror(errno) << '\n';
            return 1;
        }
        if (argc < 3)
            return 0;
        const std::string directory = argv[1];
        // What is mounted here stays here.
        require(::mount(nullptr, "/", nullptr, MS_REC | MS_PRIVATE, nullptr) == 0, "/");
        mountOver(directory + "/hosts", "/etc/hosts");
        mountOver(directory + "/nsswitch.conf", "/etc/nsswitch.conf");
        mountOver(directory + "/certs", "/etc/ssl/certs");
        for (const char* proxy : {"http_proxy", "HTTP_PROXY", "https_proxy", "HTTPS_PROXY", "all_proxy",
                                  "ALL_PROXY", "no_proxy", "NO_PROXY"})
            ::unsetenv(proxy);
        startLoopback();
        handOut({listenAt(80), listenAt(443), listenAt(7300)}, directory + "/listeners");
        ::execv(argv[2], argv + 2);
        require(false, argv[2]);
    } catch (const std::exception& error) {
        std::cerr << "private_network: " << error.what() << '\n';
    }
    return 1;
}
