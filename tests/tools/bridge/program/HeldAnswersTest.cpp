// SPDX-FileCopyrightText: 2026 the spotwell developers
// SPDX-License-Identifier: MIT

#include "platform/linux/bus/BusConnection.h"
#include "tests/tools/bridge/program/BridgeFixture.h"

namespace spotwell::bridge
{

namespace
{

/// Calls the command many times without waiting for answers.
class Caller
{
public:
    explicit Caller(SessionBus& bus) : connection_(bus, "caller") {}

    void call(int times)
    {
        EXPECT_TRUE(waitUntil([this] { return connection_.open() && connection_.isDrained(); }));
        for (int i = 0; i < times; ++i) {
            EXPECT_GE(sd_bus_call_method_async(
                          connection_.get(), nullptr, "com.tarnbrooksoftware.Application.Logwright",
                          "/com/tarnbrooksoftware/Application", "com.tarnbrooksoftware.Scripting",
                          "processSpot", &answered, this, "s", "DX de"),
                      0);
            if (i % 100 == 0)
                connection_.process();
        }
    }
    bool process() { return connection_.process(); }

    QStringList errors;
    int successes = 0;
    /// The errors that came behind a success.
    int lateErrors = 0;

private:
    static int answered(sd_bus_message* answer, void* userdata, sd_bus_error*)
    {
        auto* const self = static_cast<Caller*>(userdata);
        if (sd_bus_message_is_method_error(answer, nullptr) <= 0) {
            ++self->successes;
            return 0;
        }
        self->errors.append(busErrorText(answer));
        self->lateErrors += self->successes > 0 ? 1 : 0;
        return 0;
    }

    BusConnection connection_;
};

using HeldAnswersTest = BridgeFixture;

TEST_F(HeldAnswersTest, HoldsNoMoreThanSoManyAnswersBack)
{
    start({"--script-delay", "1000"});
    Caller caller(sessionBus);
    constexpr int most = 10'000;
    caller.call(most + 2);
    const QStringList refused(2, QStringLiteral("Too many commands wait for their answer."));
    EXPECT_TRUE(waitUntil([&] { return caller.process() && caller.errors.size() >= 2; }));
    EXPECT_EQ(caller.errors, refused);
    EXPECT_EQ(caller.successes, 0);
}

TEST_F(HeldAnswersTest, AnswersEachInItsTimeAndOrder)
{
    start({"--script-delay", "0.05", "--count", "500"});
    Caller caller(sessionBus);
    caller.call(500);
    EXPECT_TRUE(waitUntil([&] { return caller.process() && caller.successes == 500; }));
    EXPECT_TRUE(caller.errors.isEmpty());
    EXPECT_EQ(bridge->wait(), 0);
}

TEST_F(HeldAnswersTest, TakesNoMoreThanItsCount)
{
    start({"--print", "--script-delay", "0.3", "--count", "2"});
    Caller caller(sessionBus);
    caller.call(4);
    EXPECT_TRUE(waitUntil([&] { return caller.process() && caller.errors.size() == 2; }));
    EXPECT_EQ(caller.errors, QStringList(2, QStringLiteral("The logger is ending.")));
    EXPECT_EQ(caller.lateErrors, 0) << "refused at once, while the first are held back";
    post(QStringLiteral("one too many"));
    EXPECT_TRUE(waitUntil([&] {
        caller.process();
        return caller.successes == 2;
    }));
    EXPECT_EQ(bridge->wait(), 0);
    for (int i = 0; i < 2; ++i)
        EXPECT_EQ(nextLine().rfind("{\"command\":\"processSpot\",\"text\":\"DX de\"", 0), 0U);
    EXPECT_EQ(nextLine(), "");
}

TEST_F(HeldAnswersTest, CountsNotificationsAndCommands)
{
    start({"--print", "--script-delay", "0.3", "--count", "2"});
    Caller caller(sessionBus);
    caller.call(1);
    EXPECT_EQ(nextLine().rfind("{\"command\"", 0), 0U);
    for (int i = 0; i < 10; ++i)
        post(QStringLiteral("DX de"));
    EXPECT_TRUE(waitUntil([&] {
        caller.process();
        return caller.successes == 1;
    }));
    EXPECT_EQ(bridge->wait(), 0);
    EXPECT_EQ(nextLine().rfind("{\"notification\"", 0), 0U);
    EXPECT_EQ(nextLine(), "");
}

} // namespace

} // namespace spotwell::bridge
