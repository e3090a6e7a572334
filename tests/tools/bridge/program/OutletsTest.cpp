// SPDX-FileCopyrightText: 2026 the spotwell developers
// SPDX-License-Identifier: MIT

#include "platform/linux/bus/BusScriptRunner.h"
#include "tests/tools/bridge/program/BridgeFixture.h"
#include "tests/tools/bridge/program/TelnetClient.h"

#include <algorithm>
#include <arpa/inet.h>
#include <array>
#include <csignal>
#include <fcntl.h>
#include <filesystem>
#include <netinet/in.h>
#include <poll.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <unistd.h>

namespace spotwell::bridge
{

namespace
{

using namespace Qt::Literals::StringLiterals;

/// What the spot of postSpot() is as a line.
std::string webSpot(const std::string& call)
{
    std::string line = "DX de N0CALL:    14074.0  " + call;
    line.resize(70, ' ');
    return line + "0905Z";
}

/// A socket that datagrams can be sent to.
class Receiver
{
public:
    Receiver() : socket_(::socket(AF_INET, SOCK_DGRAM | SOCK_CLOEXEC, 0))
    {
        sockaddr_in address{};
        address.sin_family = AF_INET;
        address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
        socklen_t length = sizeof address;
        (void)::bind(socket_, reinterpret_cast<const sockaddr*>(&address), length);
        (void)::getsockname(socket_, reinterpret_cast<sockaddr*>(&address), &length);
        port_ = ntohs(address.sin_port);
    }
    ~Receiver() { ::close(socket_); }
    Receiver(const Receiver&) = delete;
    Receiver& operator=(const Receiver&) = delete;

    [[nodiscard]] std::string port() const { return std::to_string(port_); }
    std::string next(int patience)
    {
        pollfd entry{socket_, POLLIN, 0};
        std::array<char, 2000> bytes{};
        if (::poll(&entry, 1, patience) <= 0)
            return {};
        const ssize_t count = ::recv(socket_, bytes.data(), bytes.size(), 0);
        return {bytes.data(), static_cast<std::size_t>(std::max<ssize_t>(count, 0))};
    }

private:
    int socket_;
    std::uint16_t port_ = 0;
};

class OutletsTest : public BridgeFixture
{
protected:
    /// Starts the bridge by a shell command that ends in `redirection`.
    std::string startRedirected(const std::string& options, const std::string& redirection)
    {
        bridge.emplace(std::vector<std::string>{"/bin/sh", "-c", "exec \"$0\" " + options + " " + redirection,
                                                SPOTWELL_BRIDGE},
                       std::vector{bus.environment()}, true);
        return nextLine();
    }
    std::uint16_t portOf(const std::string& listening)
    {
        return static_cast<std::uint16_t>(std::stoi(listening.substr(listening.rfind(':') + 1)));
    }
};

TEST_F(OutletsTest, TelnetClientsGetEverySpot)
{
    startNode({"--logger-version", "6.44"});
    EXPECT_EQ(nextLine(), "spotwell-bridge: receiving spots");
    TelnetClient first(port);
    TelnetClient second(port);
    ASSERT_TRUE(first.logIn() && second.logIn());
    postSpot(u"A1A"_s);
    post(clusterSpot(u"B1B"_s));
    BusScriptRunner runner(sessionBus, applications, log);
    EXPECT_EQ(runner.run(u"Tell application \"Logwright\"\nprocessSpot \"%1\"\nend tell\n"_s.arg(
                  clusterSpot(u"C1C"_s))),
              std::nullopt);
    for (TelnetClient* client : {&first, &second}) {
        for (const std::string& line :
             {webSpot("A1A"), clusterSpot(u"B1B"_s).toStdString(), clusterSpot(u"C1C"_s).toStdString()})
            EXPECT_TRUE(client->hears("\r\n" + line + "\r\n")) << line;
    }
    bridge->signal(SIGTERM);
    EXPECT_TRUE(first.hears("\r\n73 de SPOTWELL\r\n"));
    EXPECT_TRUE(first.hearsEnd() && second.hearsEnd());
    EXPECT_EQ(bridge->wait(), 0);
}

TEST_F(OutletsTest, APortInUseEndsIt)
{
    startNode();
    const std::string place = "127.0.0.1:" + std::to_string(port);
    ChildProcess second(command({"--telnet", place}), {bus.environment()}, true);
    EXPECT_EQ(second.readLine(),
              "spotwell-bridge: cannot listen on " + place + ": The bound address is already in use");
    EXPECT_EQ(second.readLine(), std::nullopt);
    EXPECT_EQ(second.wait(), 1);
}

TEST_F(OutletsTest, ListensWhereItIsTold)
{
    EXPECT_EQ(start({"--telnet", "[::1]:0", "--print"}).rfind("spotwell-bridge: listening on [::1]:", 0), 0U);
    EXPECT_EQ(nextLine().rfind(ready + asLogwright + ",\"telnet\":\"[::1]:", 0), 0U);
}

TEST_F(OutletsTest, SendsDatagrams)
{
    for (const std::string host : {"127.0.0.1:", "localhost:"}) {
        Receiver receiver;
        start({"--n1mm", host + receiver.port()});
        // Spots that come before a name is known are lost.
        std::string datagram;
        EXPECT_TRUE(waitUntil([&] {
            postSpot(u"A1A"_s);
            return !(datagram = receiver.next(100)).empty();
        }));
        EXPECT_NE(datagram.find("<dxcall>A1A</dxcall>"), std::string::npos) << datagram;
        bridge->signal(SIGTERM);
        EXPECT_EQ(bridge->wait(), 0);
    }
}

TEST_F(OutletsTest, LooksNamesUpAtTheStart)
{
    // A name that is too long for any name server to be asked for it (RFC 1035).
    const std::string name(64, 'x');
    std::vector<std::string> lines{start({"--n1mm", name + ":12060"}), nextLine()};
    std::sort(lines.begin(), lines.end());
    EXPECT_EQ(lines[0], "spotwell-bridge: receiving spots");
    EXPECT_EQ(lines[1].rfind("spotwell-bridge: spots do not reach " + name + ":12060: ", 0), 0U) << lines[1];
}

TEST_F(OutletsTest, PrintsLines)
{
    bridge.emplace(command({"--print", "text", "--count", "3"}), std::vector{bus.environment()}, true);
    EXPECT_EQ(nextLine(), "spotwell-bridge: receiving spots");
    postSpot(u"A1A"_s);
    postSpot(QString());
    post(clusterSpot(u"B1B"_s));
    EXPECT_EQ(nextLine(), webSpot("A1A"));
    EXPECT_EQ(nextLine(), "spotwell-bridge: a spot without a call or a frequency was left out");
    EXPECT_EQ(nextLine(), clusterSpot(u"B1B"_s).toStdString());
    EXPECT_EQ(bridge->readLine(), std::nullopt);
    EXPECT_EQ(bridge->wait(), 0);
}

TEST_F(OutletsTest, AReaderWhoStopsStopsNobodyElse)
{
    std::string folder = (std::filesystem::temp_directory_path() / "spotwell-fifo-XXXXXX").string();
    ASSERT_NE(::mkdtemp(folder.data()), nullptr);
    const std::string fifo = folder + "/out";
    ASSERT_EQ(::mkfifo(fifo.c_str(), 0600), 0);
    const int reader = ::open(fifo.c_str(), O_RDWR | O_CLOEXEC);
    const std::uint16_t open = portOf(startRedirected("--telnet 127.0.0.1:0 --print text", "> " + fifo));
    TelnetClient client(open);
    ASSERT_TRUE(client.logIn());
    EXPECT_EQ(nextWord(), "spotwell-bridge: receiving spots");
    // Far more than a pipe and the bridge hold.
    constexpr int count = 18'000;
    for (int number = 1; number <= count; ++number) {
        post(clusterSpot(QString::number(number)));
        if (number % 1000 != 0)
            continue;
        ASSERT_TRUE(client.hears(clusterSpot(QString::number(number)).toStdString() + "\r\n")) << number;
    }
    EXPECT_EQ(nextWord(), "spotwell-bridge: the standard output is not taken in, its oldest lines are lost");
    // Nothing has been read before the bridge has ended: it waits in vain for a moment, and not for a reader.
    bridge->signal(SIGTERM);
    EXPECT_EQ(nextWord().rfind("spotwell-bridge: lines of the standard output that were lost: 1", 0), 0U);
    EXPECT_EQ(bridge->wait(), 0);
    ASSERT_EQ(::fcntl(reader, F_SETFL, O_NONBLOCK), 0);
    char first = 0;
    EXPECT_EQ(::read(reader, &first, 1), 1) << "the pipe was full to the end";
    ::close(reader);
    std::filesystem::remove_all(folder);
}

TEST_F(OutletsTest, NobodyToPrintForIsTheEndUnlessOthersAreServed)
{
    EXPECT_EQ(startRedirected("--print", "> /dev/full"),
              "spotwell-bridge: the standard output cannot be written: No space left on device");
    EXPECT_EQ(bridge->wait(), 1);
    EXPECT_EQ(startRedirected("", ">&-"),
              "spotwell-bridge: the standard output cannot be written: Bad file descriptor");
    EXPECT_EQ(nextLine(), "");
    EXPECT_EQ(bridge->wait(), 1);

    const std::string listening = startRedirected("--telnet 127.0.0.1:0 --print", "> /dev/full");
    EXPECT_EQ(nextLine(), "spotwell-bridge: the standard output cannot be written: No space left on device; "
                          "nothing more is printed");
    TelnetClient client(portOf(listening));
    ASSERT_TRUE(client.logIn());
    post(clusterSpot(u"A1A"_s));
    EXPECT_TRUE(client.hears(clusterSpot(u"A1A"_s).toStdString() + "\r\n"));
    bridge->signal(SIGTERM);
    EXPECT_EQ(bridge->wait(), 0);
}

} // namespace

} // namespace spotwell::bridge
