// SPDX-FileCopyrightText: 2026 the spotwell developers
// SPDX-License-Identifier: MIT

#include "platform/linux/bus/ApplicationProperties.h"

#include "platform/linux/bus/BusConnection.h"
#include "tests/fakes/BusMessages.h"
#include "tests/platform/bus/ApplicationsFixture.h"
#include "tests/support/Printers.h"

#include <gtest/gtest.h>

#include <functional>
#include <string>

namespace spotwell
{

namespace
{

using namespace Qt::Literals::StringLiterals;

/// Answers as they arrive, from a bus that never answers.
class ApplicationPropertiesTest : public testing::Test
{
protected:
    using Fill = std::function<void(sd_bus_message*)>;

    std::optional<RunningApplication> read(const Fill& fill)
    {
        const BusMessage message = messages_.made();
        EXPECT_TRUE(message);
        fill(message.get());
        EXPECT_TRUE(BusMessages::seal(message.get()));
        return readApplicationProperties(message.get());
    }
    /// Reads one with the displayed name "A" behind what `fill` writes.
    std::optional<RunningApplication> readBehind(const Fill& fill)
    {
        return read([&](sd_bus_message* message) {
            sd_bus_message_open_container(message, 'a', "{sv}");
            fill(message);
            sd_bus_message_append(message, "{sv}", "DisplayName", "s", "A");
            sd_bus_message_close_container(message);
        });
    }
    /// The same behind an odd property with an array of so many bytes.
    std::optional<RunningApplication> readBehindArray(std::size_t bytes)
    {
        const std::string array(bytes, 'x');
        return readBehind([&](sd_bus_message* message) {
            sd_bus_message_open_container(message, 'e', "sv");
            sd_bus_message_append(message, "s", "Odd");
            sd_bus_message_open_container(message, 'v', "ay");
            sd_bus_message_append_array(message, 'y', array.data(), array.size());
            sd_bus_message_close_container(message);
            sd_bus_message_close_container(message);
        });
    }
    std::optional<RunningApplication> readTexts(const std::string& name, const std::string& version)
    {
        return read([&](sd_bus_message* message) {
            sd_bus_message_append(message, "a{sv}", 2, "DisplayName", "s", name.c_str(), "Version", "s",
                                  version.c_str());
        });
    }

private:
    BusMessages messages_;
};

TEST_F(ApplicationPropertiesTest, PassesOverPropertiesOfOtherTypes)
{
    const auto application = readBehind([](sd_bus_message* message) {
        sd_bus_message_append(message, "{sv}", "Number", "d", 6.45);
        sd_bus_message_append(message, "{sv}", "Nested", "a{sv}", 1, "k", "v", "(ias)", 5, 2, "x", "y");
        sd_bus_message_append(message, "{sv}", "Version", "as", 1, "6.45");
        sd_bus_message_append(message, "{sv}", "DisplayName", "i", 5);
    });
    ASSERT_TRUE(application);
    EXPECT_EQ(application->displayName, u"A"_s);
    ASSERT_TRUE(application->information);
    EXPECT_EQ(application->information->shortVersion, std::nullopt);
}

TEST_F(ApplicationPropertiesTest, LeavesOutAnAnswerOfAnotherShape)
{
    EXPECT_FALSE(read([](sd_bus_message*) {}));
    EXPECT_FALSE(read([](sd_bus_message* m) { sd_bus_message_append(m, "s", "DisplayName"); }));
    EXPECT_FALSE(read([](sd_bus_message* m) { sd_bus_message_append(m, "a{ss}", 1, "DisplayName", "A"); }));
    EXPECT_FALSE(read([](sd_bus_message* m) { sd_bus_message_append(m, "a{sv}", 0); }));
    EXPECT_FALSE(
        read([](sd_bus_message* m) { sd_bus_message_append(m, "a{sv}", 1, "DisplayName", "i", 5); }));
}

TEST_F(ApplicationPropertiesTest, BoundsTheTexts)
{
    // An umlaut is two bytes and one unit, a pair four and two.
    std::string umlauts;
    std::string pairs;
    for (int i = 0; i < 1000; ++i)
        umlauts += "\xC3\xA4";
    for (int i = 0; i < 500; ++i)
        pairs += "\xF0\x9F\x93\xA1";
    for (const std::string& longest : {std::string(1000, 'x'), umlauts, pairs}) {
        const auto application = readTexts(longest, longest + longest);
        ASSERT_TRUE(application);
        EXPECT_EQ(application->displayName, QString::fromStdString(longest));
        EXPECT_EQ(application->information->shortVersion, QString::fromStdString(longest));
        EXPECT_FALSE(readTexts(longest + 'x', "1"));
        EXPECT_FALSE(readTexts(longest + std::string(std::size_t{1} << 20, 'x'), "1"));
    }
}

TEST_F(ApplicationPropertiesTest, BoundsTheParts)
{
    // The variant, the array in it and the displayed name are parts, too.
    EXPECT_TRUE(readBehindArray(mostPropertyParts - 3));
    EXPECT_FALSE(readBehindArray(mostPropertyParts - 2));
    EXPECT_FALSE(readBehindArray(std::size_t{1} << 24));
    const auto texts = [](std::size_t count) {
        return [count](sd_bus_message* message) {
            for (std::size_t i = 0; i < count; ++i)
                sd_bus_message_append(message, "{sv}", "Odd", "s", "x");
        };
    };
    EXPECT_TRUE(readBehind(texts(mostPropertyParts - 1)));
    EXPECT_FALSE(readBehind(texts(mostPropertyParts)));
}

/// Sends every connection of the bus, and none in particular, the bus's own signal that `name` has an owner
/// that does not exist. Known to the bus when this returns.
void claimOwner(const PrivateBus& bus, const QString& name)
{
    sd_bus* opened = nullptr;
    ASSERT_GE(sd_bus_new(&opened), 0);
    const std::unique_ptr<sd_bus, BusRelease> stranger(opened);
    ASSERT_GE(sd_bus_set_address(opened, bus.address().c_str()), 0);
    ASSERT_GE(sd_bus_set_bus_client(opened, 1), 0);
    ASSERT_GE(sd_bus_start(opened), 0);
    for (int connection = 0; connection < 20; ++connection) {
        sd_bus_message* made = nullptr;
        ASSERT_GE(sd_bus_message_new_signal(opened, &made, "/org/freedesktop/DBus", "org.freedesktop.DBus",
                                            "NameOwnerChanged"),
                  0);
        const BusMessage message(made);
        const std::string receiver = ":1." + std::to_string(connection);
        ASSERT_GE(sd_bus_message_set_destination(made, receiver.c_str()), 0);
        ASSERT_GE(sd_bus_message_append(made, "sss", name.toUtf8().constData(), "", ":1.999"), 0);
        ASSERT_GE(sd_bus_send(opened, made, nullptr), 0);
    }
    ASSERT_GE(sd_bus_call_method(opened, "org.freedesktop.DBus", "/org/freedesktop/DBus",
                                 "org.freedesktop.DBus", "GetId", nullptr, nullptr, ""),
              0);
}

using StrangersTest = ApplicationsFixture;

TEST_F(StrangersTest, AreNotBelievedAboutTheOwnersOfNames)
{
    makeApplications(generous);
    BusPeer logger(bus);
    show(logger, logwrightName, u"Logwright"_s, u"7"_s);
    EXPECT_EQ(names(), QStringList{u"Logwright"_s});
    claimOwner(bus, logwrightName);
    EXPECT_EQ(names(), QStringList{u"Logwright"_s});
}

} // namespace

} // namespace spotwell
