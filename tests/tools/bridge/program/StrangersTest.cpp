#include "platform/linux/BusConnection.h"
#include "tests/tools/bridge/program/BridgeProcess.h"

namespace spotwell::bridge
{

namespace
{

using namespace Qt::Literals::StringLiterals;
using namespace std::chrono_literals;

constexpr const char* loggerName = "com.tarnbrooksoftware.Application.Logwright";

/// Whoever else is on the session bus, and need not mean well.
class StrangersTest : public BridgeProcess
{
protected:
    BusReply command(const std::string& text)
    {
        EXPECT_TRUE(waitUntil([this] { return stranger.open() && stranger.isDrained(); }));
        sd_bus_message* call = nullptr;
        EXPECT_GE(sd_bus_message_new_method_call(stranger.get(), &call, loggerName,
                                                 "/com/tarnbrooksoftware/Application",
                                                 "com.tarnbrooksoftware.Scripting", "processSpot"),
                  0);
        const BusMessage message(call);
        EXPECT_GE(sd_bus_message_append(call, "s", text.c_str()), 0);
        return stranger.call(call, BusConnection::Clock::now() + 20s, nullptr);
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

} // namespace

} // namespace spotwell::bridge
