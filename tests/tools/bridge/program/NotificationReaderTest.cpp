// SPDX-FileCopyrightText: 2026 the spotwell developers
// SPDX-License-Identifier: MIT

#include "tools/spotwell-bridge/NotificationReader.h"

#include "tests/fakes/BusMessages.h"

#include <gtest/gtest.h>

#include <functional>
#include <string>
#include <vector>

namespace spotwell::bridge
{

namespace
{

using namespace Qt::Literals::StringLiterals;

constexpr std::size_t mebibyte = std::size_t{1} << 20;

/// Signals as they arrive, from a bus that never answers.
class NotificationReaderTest : public testing::Test
{
protected:
    using Fill = std::function<void(sd_bus_message*)>;

    std::optional<Notification> read(const Fill& fill)
    {
        const BusMessage message = messages_.made();
        EXPECT_TRUE(message);
        fill(message.get());
        EXPECT_TRUE(BusMessages::seal(message.get()));
        return readNotification(message.get());
    }
    /// Reads one of this name and object, whose dictionary `fill` fills.
    std::optional<Notification> readInfo(const Fill& fill, const std::string& name = "name",
                                         const std::string& object = "object")
    {
        return read([&](sd_bus_message* message) {
            sd_bus_message_append(message, "ss", name.c_str(), object.c_str());
            sd_bus_message_open_container(message, 'a', "{sv}");
            fill(message);
            sd_bus_message_close_container(message);
        });
    }
    /// Reads one whose dictionary has a text entry of each of these, key and value.
    std::optional<Notification> readTexts(const std::vector<std::pair<std::string, std::string>>& entries,
                                          const std::string& name = "", const std::string& object = "")
    {
        return readInfo(
            [&](sd_bus_message* message) {
                for (const auto& [key, value] : entries)
                    sd_bus_message_append(message, "{sv}", key.c_str(), "s", value.c_str());
            },
            name, object);
    }
    /// Reads one with an array of so many bytes, which has one part more.
    std::optional<Notification> readArray(int bytes)
    {
        const std::vector<char> array(static_cast<std::size_t>(bytes));
        return readInfo([&](sd_bus_message* message) {
            sd_bus_message_open_container(message, 'e', "sv");
            sd_bus_message_append(message, "s", "odd");
            sd_bus_message_open_container(message, 'v', "ay");
            sd_bus_message_append_array(message, 'y', array.data(), array.size());
            sd_bus_message_close_container(message);
            sd_bus_message_close_container(message);
        });
    }

private:
    BusMessages messages_;
};

TEST_F(NotificationReaderTest, ReadsEveryType)
{
    const auto notification = readInfo([](sd_bus_message* message) {
        sd_bus_message_append(message, "{sv}", "text", "s", "Grüße");
        sd_bus_message_append(message, "{sv}", "number", "d", 14.074);
        sd_bus_message_append(message, "{sv}", "time", "x", std::int64_t{1801645507123456});
    });
    ASSERT_TRUE(notification);
    EXPECT_EQ(notification->name, u"name"_s);
    EXPECT_EQ(notification->object, u"object"_s);
    ASSERT_EQ(notification->userInfo.size(), 3U);
    EXPECT_EQ(notification->userInfo[0], std::pair(u"text"_s, Value(u"Grüße"_s)));
    EXPECT_EQ(notification->userInfo[1], std::pair(u"number"_s, Value(14.074)));
    EXPECT_EQ(notification->userInfo[2],
              std::pair(u"time"_s, Value(TimePoint{std::chrono::microseconds{1801645507123456}})));
}

TEST_F(NotificationReaderTest, PassesOverOtherTypes)
{
    const auto notification = readInfo([](sd_bus_message* message) {
        sd_bus_message_append(message, "{sv}", "a", "i", 5);
        sd_bus_message_append(message, "{sv}", "b", "b", 1);
        sd_bus_message_append(message, "{sv}", "c", "o", "/path");
        sd_bus_message_append(message, "{sv}", "d", "as", 2, "x", "y");
        sd_bus_message_append(message, "{sv}", "e", "a{sv}", 1, "k", "v", "(id)", 5, 1.0);
        sd_bus_message_append(message, "{sv}", "f", "as", 0);
        sd_bus_message_append(message, "{sv}", "last", "s", "x");
    });
    ASSERT_TRUE(notification);
    ASSERT_EQ(notification->userInfo.size(), 7U);
    for (std::size_t i = 0; i < 6; ++i)
        EXPECT_EQ(notification->userInfo[i].second, Value(std::monostate{})) << i;
    EXPECT_EQ(notification->userInfo[6], std::pair(u"last"_s, Value(u"x"_s)));
}

TEST_F(NotificationReaderTest, LeavesOutWhatHasAnotherShape)
{
    const struct {
        const char* what;
        Fill fill;
    } table[] = {
        {"nothing", [](sd_bus_message*) {}},
        {"no dictionary", [](sd_bus_message* m) { sd_bus_message_append(m, "ss", "a", "b"); }},
        {"texts only", [](sd_bus_message* m) { sd_bus_message_append(m, "ssa{ss}", "a", "b", 1, "k", "v"); }},
        {"more", [](sd_bus_message* m) { sd_bus_message_append(m, "ssa{sv}s", "a", "b", 0, "c"); }},
    };
    for (const auto& row : table)
        EXPECT_FALSE(read(row.fill)) << row.what;
    EXPECT_TRUE(read([](sd_bus_message* m) { sd_bus_message_append(m, "ssa{sv}", "", "", 0); }));
}

TEST_F(NotificationReaderTest, BoundsItsEntries)
{
    std::vector<std::pair<std::string, std::string>> entries(1000, {"key", "value"});
    const auto notification = readTexts(entries);
    ASSERT_TRUE(notification);
    EXPECT_EQ(notification->userInfo.size(), 1000U);
    entries.emplace_back("key", "value");
    EXPECT_FALSE(readTexts(entries));
}

TEST_F(NotificationReaderTest, BoundsEachText)
{
    const std::string longest(mebibyte, 'x');
    const std::string tooLong(mebibyte + 1, 'x');
    EXPECT_TRUE(readTexts({{"line", longest}}));
    EXPECT_FALSE(readTexts({{"line", tooLong}}));
    EXPECT_TRUE(readTexts({{longest, "x"}}));
    EXPECT_FALSE(readTexts({{tooLong, "x"}}));
    EXPECT_TRUE(readTexts({}, longest));
    EXPECT_FALSE(readTexts({}, tooLong));
    EXPECT_TRUE(readTexts({}, "", longest));
    EXPECT_FALSE(readTexts({}, "", tooLong));
}

TEST_F(NotificationReaderTest, BoundsItsTextsTogether)
{
    const std::string half(mebibyte - 2, 'x');
    EXPECT_TRUE(readTexts({{"k", half}}, half, "two"));
    EXPECT_FALSE(readTexts({{"k", half}}, half, "four"));
    EXPECT_FALSE(readTexts({{"key", half}, {"", "x"}}, half, "o"));
}

TEST_F(NotificationReaderTest, BoundsTheValuesItPassesOver)
{
    EXPECT_TRUE(readArray(999));
    EXPECT_FALSE(readArray(1000));
    // All of them together.
    const auto readMany = [this](int count) {
        return readInfo([count](sd_bus_message* message) {
            for (int i = 0; i < count; ++i)
                sd_bus_message_append(message, "{sv}", "odd", "as", 1, "x");
        });
    };
    EXPECT_TRUE(readMany(500));
    EXPECT_FALSE(readMany(501));
}

} // namespace

} // namespace spotwell::bridge
