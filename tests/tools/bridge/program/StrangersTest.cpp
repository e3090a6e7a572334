// SPDX-FileCopyrightText: 2026 the spotwell developers
// SPDX-License-Identifier: MIT

#include "platform/linux/bus/BusConnection.h"
#include "tests/tools/bridge/program/BridgeFixture.h"

#include <chrono>

namespace spotwell::bridge
{

namespace
{

using namespace Qt::Literals::StringLiterals;
using namespace std::chrono_literals;

constexpr const char* busItself = "org.freedesktop.DBus";
constexpr const char* loggerName = "com.tarnbrooksoftware.Application.Logwright";

/// Whoever else is on the session bus, and need not mean well.
class StrangersTest : public BridgeFixture
{
protected:
    BusReply command(const std::string& text)
    {
        connect();
        sd_bus_message* call = nullptr;
        EXPECT_GE(sd_bus_message_new_method_call(stranger.get(), &call, loggerName,
                                                 "/com/tarnbrooksoftware/Application",
                                                 "com.tarnbrooksoftware.Scripting", "processSpot"),
                  0);
        const BusMessage message(call);
        EXPECT_GE(sd_bus_message_append(call, "s", text.c_str()), 0);
        return stranger.call(call, BusConnection::Clock::now() + 20s, nullptr);
    }

    void connect()
    {
        ASSERT_TRUE(waitUntil([this] { return stranger.open() && stranger.isDrained(); }));
    }
    /// Calls a method of the bus.
    void call(const char* member, const char* types, auto... arguments)
    {
        sd_bus_message* made = nullptr;
        ASSERT_GE(sd_bus_message_new_method_call(stranger.get(), &made, busItself, "/org/freedesktop/DBus",
                                                 busItself, member),
                  0);
        const BusMessage message(made);
        ASSERT_GE(sd_bus_message_append(made, types, arguments...), 0);
        ASSERT_EQ(stranger.call(made, BusConnection::Clock::now() + 20s, nullptr).end,
                  BusReply::End::answered);
    }
    /// Takes the logger's name and gives it back.
    void flap()
    {
        constexpr std::uint32_t replace = 2;
        call("RequestName", "su", loggerName, replace);
        call("ReleaseName", "s", loggerName);
    }

    BusConnection stranger{sessionBus, "stranger"};
};

TEST_F(StrangersTest, ACommandWithTooLongALineIsRefused)
{
    start({"--print", "--count", "1"});
    const std::size_t longest = std::size_t{1} << 20;
    const BusReply refused = command(std::string(longest + 1, 'x'));
    EXPECT_EQ(refused.error, u"The line is too long."_s);
    EXPECT_EQ(refused.errorName, u"com.tarnbrooksoftware.Scripting.Error.Failed"_s);
    EXPECT_EQ(nextLine(), "spotwell-bridge: a command with a line that is too long was refused");
    EXPECT_EQ(command(std::string(longest, 'x')).end, BusReply::End::answered);
    EXPECT_EQ(nextLine().rfind("{\"command\":\"processSpot\",\"text\":\"x", 0), 0U);
    EXPECT_EQ(bridge->wait(), 0);
}

TEST_F(StrangersTest, OnlyTheBusTellsWhoHasTheName)
{
    start({"--print"});
    connect();
    // Sent to whoever has the name, which is the bridge.
    for (const char* member : {"NameLost", "NameLost", "NameAcquired"}) {
        sd_bus_message* made = nullptr;
        ASSERT_GE(
            sd_bus_message_new_signal(stranger.get(), &made, "/org/freedesktop/DBus", busItself, member), 0);
        const BusMessage message(made);
        ASSERT_GE(sd_bus_message_append(made, "s", loggerName), 0);
        ASSERT_GE(sd_bus_send_to(stranger.get(), made, loggerName, nullptr), 0);
    }
    call("GetId", "");
    post(u"one"_s);
    EXPECT_NE(nextLine().find("\"line\":\"one\""), std::string::npos);
}

TEST_F(StrangersTest, ANameThatIsTakenAndGivenBackAllTheTimeDoesNotFillTheLog)
{
    start({"--print"});
    connect();
    constexpr std::chrono::milliseconds enough{2500};
    const auto begin = BusConnection::Clock::now();
    int flaps = 0;
    while (BusConnection::Clock::now() - begin < enough) {
        flap();
        ++flaps;
    }
    EXPECT_GT(flaps, 10);
    post(u"one"_s);
    int lines = 0;
    while (nextLine().find("\"line\":\"one\"") == std::string::npos)
        ++lines;
    EXPECT_GE(lines, 1);
    EXPECT_LE(lines, 1 + (BusConnection::Clock::now() - begin) / 1s);
}

} // namespace

} // namespace spotwell::bridge
