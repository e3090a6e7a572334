// SPDX-FileCopyrightText: 2026 the spotwell developers
// SPDX-License-Identifier: MIT

#include "platform/linux/bus/BusNotificationCenter.h"

#include "tests/fakes/SharedLog.h"
#include "tests/platform/ThreadShortage.h"
#include "tests/support/bus/BusPeer.h"

#include <gtest/gtest.h>

#include <latch>
#include <limits>
#include <map>
#include <optional>
#include <thread>

namespace spotwell
{

namespace
{

using namespace Qt::Literals::StringLiterals;
using Clock = std::chrono::steady_clock;

const QString spotName = u"com.tarnbrooksoftware.spotwell_spot"_s;
const QString lineName = u"com.tarnbrooksoftware.spotwell_line"_s;
const QString object = u"string object"_s;

class BusNotificationCenterTest : public testing::Test
{
protected:
    void makeCenter(BusNotificationCenter::Limits limits = {}) { center.emplace(sessionBus, log, limits); }
    void listen()
    {
        peer.emplace(bus);
        peer->command({u"listen"_s, lineName});
        peer->command({u"listen"_s, spotName});
    }
    void postNumber(int number) { center->post(lineName, object, {{u"n"_s, static_cast<double>(number)}}); }
    QString nextNumber() { return peer->next().value(7); }
    static QString numbered(int number) { return u"n=double:%1"_s.arg(number); }

    PrivateBus bus;
    SharedLog log;
    SessionBus sessionBus{log, bus.address()};
    std::optional<BusPeer> peer;
    std::optional<BusNotificationCenter> center;
};

TEST_F(BusNotificationCenterTest, SendsTheSignalOfTheContract)
{
    listen();
    makeCenter();
    const TimePoint time{std::chrono::microseconds{1801645507123456}};
    center->post(spotName, object,
                 {{u"combinedCallsign"_s, u"X1X"_s},
                  {u"timestamp"_s, time},
                  {u"megahertz"_s, 14.074},
                  {u"dxde_call"_s, u""_s},
                  {u"before"_s, TimePoint{std::chrono::microseconds{-1}}}});
    const QStringList expected{u"signal"_s,
                               u"/com/tarnbrooksoftware/DistributedNotifications"_s,
                               u"com.tarnbrooksoftware.DistributedNotifications"_s,
                               u"Posted"_s,
                               u"ssa{sv}"_s,
                               spotName,
                               object,
                               u"combinedCallsign=QString:X1X"_s,
                               u"timestamp=qlonglong:1801645507123456"_s,
                               u"megahertz=double:14.074"_s,
                               u"dxde_call=QString:"_s,
                               u"before=qlonglong:-1"_s};
    EXPECT_EQ(peer->next(), expected);
    EXPECT_EQ(log.lines(), QStringList{});
}

TEST_F(BusNotificationCenterTest, CarriesAnEmptyDictionaryAndOddNumbers)
{
    listen();
    makeCenter();
    center->post(lineName, QString(), {});
    EXPECT_EQ(peer->next().mid(4), (QStringList{u"ssa{sv}"_s, lineName, QString()}));
    center->post(lineName, object, {{u"n"_s, std::numeric_limits<double>::infinity()}});
    EXPECT_EQ(nextNumber(), u"n=double:inf"_s);
    center->post(lineName, object, {{u"n"_s, std::numeric_limits<double>::quiet_NaN()}});
    EXPECT_EQ(nextNumber(), u"n=double:nan"_s);
}

TEST_F(BusNotificationCenterTest, MakesTextSafeAndKeepsTheConnection)
{
    listen();
    makeCenter();
    const QString unsafe = u"a"_s + QChar(u'\0') + QChar(0xD83D) + QChar(0xFFFF) + u"b"_s;
    center->post(lineName, unsafe, {{unsafe, unsafe}});
    const QStringList seen = peer->next();
    EXPECT_EQ(seen.value(6), u"a\ufffd\ufffd\ufffdb"_s);
    EXPECT_EQ(seen.value(7), u"a\ufffd\ufffd\ufffdb=QString:a\ufffd\ufffd\ufffdb"_s);

    center->post(lineName, object, {{u"line"_s, QString(20 << 20, u'x')}});
    EXPECT_EQ(peer->next().value(7), u"line=QString:"_s + QString(1 << 20, u'x'));
    postNumber(1);
    EXPECT_EQ(nextNumber(), numbered(1));
    EXPECT_EQ(log.lines(), QStringList{});
}

TEST_F(BusNotificationCenterTest, KeepsTheOrder)
{
    listen();
    makeCenter();
    constexpr int count = 10000;
    for (int number = 0; number < count; ++number)
        postNumber(number);
    for (int number = 0; number < count; ++number)
        ASSERT_EQ(nextNumber(), numbered(number));
}

TEST_F(BusNotificationCenterTest, KeepsTheOrderOfEachOfTwoThreads)
{
    listen();
    makeCenter();
    postNumber(0);
    ASSERT_EQ(nextNumber(), numbered(0));
    constexpr int count = 5000;
    const auto postAll = [this](const QString& name) {
        for (int number = 1; number <= count; ++number)
            center->post(name, object, {{u"n"_s, static_cast<double>(number)}});
    };
    std::latch together(2);
    std::thread lines([&] {
        together.arrive_and_wait();
        postAll(lineName);
    });
    together.arrive_and_wait();
    postAll(spotName);
    lines.join();
    std::map<QString, int> last;
    for (int seen = 0; seen < 2 * count; ++seen) {
        const QStringList fields = peer->next();
        ASSERT_EQ(fields.value(7), numbered(++last[fields.value(5)])) << fields.value(5).toStdString();
    }
    EXPECT_EQ(last, (std::map<QString, int>{{lineName, count}, {spotName, count}}));
    EXPECT_EQ(log.lines(), QStringList{});
}

TEST_F(BusNotificationCenterTest, LosesWhatIsPostedWithoutABus)
{
    bus.kill();
    makeCenter();
    for (int number = 0; number < 1000; ++number)
        postNumber(number);
    EXPECT_TRUE(waitUntil([this] { return !log.lines().isEmpty(); }));
    center.reset();
    EXPECT_EQ(log.lines(), QStringList{u"SessionBus: no session bus: No such file or directory"_s});
}

TEST_F(BusNotificationCenterTest, UsesABusThatIsBack)
{
    listen();
    makeCenter();
    postNumber(1);
    EXPECT_EQ(nextNumber(), numbered(1));
    bus.kill();
    // Noticed by itself, without another post.
    EXPECT_TRUE(waitUntil([this] { return log.count(u"is gone"_s) == 1; }));
    postNumber(2);
    bus.start();
    listen();
    EXPECT_TRUE(waitUntil([this] {
        postNumber(3);
        return peer->count(u"signal"_s) > 0;
    }));
    EXPECT_EQ(nextNumber(), numbered(3));
    EXPECT_EQ(log.count(u"is back"_s), 1);
    EXPECT_EQ(log.lines().size(), 2);
}

TEST_F(BusNotificationCenterTest, OutlivesABusThatHangs)
{
    listen();
    makeCenter();
    postNumber(0);
    EXPECT_EQ(nextNumber(), numbered(0));
    bus.stop();
    // Far more than the socket's buffers hold, so the worker waits for the bus, and the poster for nobody.
    const QString line(8192, u'x');
    const auto start = Clock::now();
    for (int number = 1; number <= 1000; ++number)
        center->post(lineName, object, {{u"n"_s, static_cast<double>(number)}, {u"line"_s, line}});
    EXPECT_LT(Clock::now() - start, std::chrono::seconds{60});
    bus.resume();
    for (int number = 1; number <= 1000; ++number)
        ASSERT_EQ(nextNumber(), numbered(number));
    EXPECT_EQ(log.lines(), QStringList{});
}

TEST_F(BusNotificationCenterTest, LosesTheNewestWhenTooManyWait)
{
    listen();
    makeCenter({.count = 10});
    bus.stop();
    for (int number = 0; number < 30; ++number)
        postNumber(number);
    const QStringList lost{u"post: too many notifications wait for the session bus, new ones are lost"_s};
    EXPECT_EQ(log.lines(), lost);
    bus.resume();
    for (int number = 0; number < 10; ++number)
        EXPECT_EQ(nextNumber(), numbered(number));
    EXPECT_TRUE(waitUntil([this] { return log.lines().size() == 2; }));
    EXPECT_EQ(log.lines().last(), u"post: 20 notifications were lost"_s);
    postNumber(30);
    EXPECT_EQ(nextNumber(), numbered(30));
}

TEST_F(BusNotificationCenterTest, BoundsTheMemoryOfWhatWaits)
{
    listen();
    makeCenter({.bytes = 4000});
    bus.stop();
    // name, object, key and text: 35 + 13 + 1 + 951 UTF-16 units are 2000 bytes
    for (int number = 0; number < 3; ++number)
        center->post(lineName, object, {{u"n"_s, QString(951, QChar(u'a' + number))}});
    EXPECT_EQ(log.lines().size(), 1);
    bus.resume();
    EXPECT_EQ(nextNumber(), u"n=QString:"_s + QString(951, u'a'));
    EXPECT_EQ(nextNumber(), u"n=QString:"_s + QString(951, u'b'));
    EXPECT_TRUE(waitUntil([this] { return log.count(u"post: 1 notifications were lost"_s) == 1; }));
}

TEST_F(BusNotificationCenterTest, LetsWhatWasPostedLeaveAtTheEnd)
{
    listen();
    makeCenter({.ending = std::chrono::seconds{20}});
    for (int number = 0; number < 100; ++number)
        postNumber(number);
    center.reset();
    for (int number = 0; number < 100; ++number)
        EXPECT_EQ(nextNumber(), numbered(number));
}

TEST_F(BusNotificationCenterTest, EndsInTimeWhenTheBusHangs)
{
    makeCenter();
    bus.stop();
    postNumber(0);
    const auto start = Clock::now();
    center.reset();
    EXPECT_GE(Clock::now() - start, std::chrono::milliseconds{200});
    EXPECT_LT(Clock::now() - start, std::chrono::seconds{20});
}

TEST_F(BusNotificationCenterTest, KeepsWhatComesWhileThereIsNoThread)
{
    listen();
    makeCenter();
    {
        const ThreadShortage shortage;
        postNumber(1);
        postNumber(2);
    }
    postNumber(3);
    for (int number = 1; number <= 3; ++number)
        EXPECT_EQ(nextNumber(), numbered(number));
}

TEST_F(BusNotificationCenterTest, EndsWithoutAPost)
{
    const auto start = Clock::now();
    for (int i = 0; i < 50; ++i) {
        makeCenter({.ending = std::chrono::seconds{20}});
        center.reset();
    }
    EXPECT_LT(Clock::now() - start, std::chrono::seconds{60}); // each waiting: 1000 s
}

} // namespace

} // namespace spotwell
