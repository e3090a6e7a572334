// SPDX-FileCopyrightText: 2026 the spotwell developers
// SPDX-License-Identifier: MIT

#include "tests/platform/bus/ApplicationsFixture.h"

namespace spotwell
{

namespace
{

using namespace Qt::Literals::StringLiterals;

class BusRunningApplicationsTest : public ApplicationsFixture
{
protected:
    void SetUp() override { makeApplications(generous); }
};

TEST_F(BusRunningApplicationsTest, GivesNameVersionAndAddress)
{
    EXPECT_TRUE(applications->runningApplications().empty());
    BusPeer logger(bus);
    show(logger, logwrightName, u" Lögwright\n"_s, u"6.45 beta"_s);
    const auto list = applications->runningApplications();
    ASSERT_EQ(list.size(), 1U);
    EXPECT_EQ(list[0].displayName, u" Lögwright\n"_s);
    ASSERT_TRUE(list[0].information);
    EXPECT_EQ(list[0].information->shortVersion, u"6.45 beta"_s);
    EXPECT_TRUE(list[0].address.startsWith(u":1."_s));
    EXPECT_EQ(logger.next(), (QStringList{u"GetAll"_s, u"com.tarnbrooksoftware.Application"_s}));
    EXPECT_EQ(log.lines(), QStringList{});
}

TEST_F(BusRunningApplicationsTest, TakesAMissingOrForeignVersionAsNone)
{
    BusPeer without(bus);
    without.command({u"text"_s, u"DisplayName"_s, u"A"_s});
    without.command({u"own"_s, logwrightName});
    auto list = applications->runningApplications();
    ASSERT_EQ(list.size(), 1U);
    ASSERT_TRUE(list[0].information);
    EXPECT_FALSE(list[0].information->shortVersion);

    BusPeer foreign(bus);
    foreign.command({u"text"_s, u"DisplayName"_s, u"B"_s});
    foreign.command({u"number"_s, u"Version"_s, u"6.45"_s});
    foreign.command({u"own"_s, logwrightName});
    list = applications->runningApplications();
    ASSERT_EQ(list.size(), 1U);
    EXPECT_EQ(list[0].displayName, u"B"_s);
    ASSERT_TRUE(list[0].information);
    EXPECT_FALSE(list[0].information->shortVersion);
}

TEST_F(BusRunningApplicationsTest, LeavesOutWhatHasNoUsableDisplayName)
{
    BusPeer nothing(bus);
    nothing.command({u"own"_s, logwrightName});
    BusPeer number(bus);
    number.command({u"number"_s, u"DisplayName"_s, u"1"_s});
    number.command({u"own"_s, logwrightName + u"2"_s});
    BusPeer tooLong(bus);
    show(tooLong, logwrightName + u"3"_s, QString(1001, u'x'), u"1"_s);
    BusPeer longest(bus);
    show(longest, logwrightName + u"4"_s, QString(1000, u'x'), u"1"_s);
    EXPECT_EQ(names(), QStringList{QString(1000, u'x')});
    EXPECT_EQ(names(), QStringList{QString(1000, u'x')});
    QStringList lines = log.lines();
    lines.sort();
    const QString format = u"runningApplications: %1 cannot be read: it gives no DisplayName"_s;
    EXPECT_EQ(lines, (QStringList{format.arg(logwrightName), format.arg(logwrightName + u"2"_s),
                                  format.arg(logwrightName + u"3"_s)}));
}

TEST_F(BusRunningApplicationsTest, LooksAtNamesOfApplicationsOnly)
{
    BusPeer other(bus);
    show(other, u"com.tarnbrooksoftware.Applications.Logwright"_s, u"Logwright"_s, u"7"_s);
    other.command({u"own"_s, u"com.tarnbrooksoftware.Application"_s});
    other.command({u"own"_s, u"org.com.tarnbrooksoftware.Application.Logwright"_s});
    EXPECT_EQ(names(), QStringList{});
    EXPECT_EQ(other.count(u"GetAll"_s), 0);
}

TEST_F(BusRunningApplicationsTest, FindsOneAmongAThousandNames)
{
    BusPeer many(bus);
    for (int number = 0; number < 1000; ++number)
        show(many, logwrightName + QString::number(number), u"Other"_s, u"1"_s);
    BusPeer logger(bus);
    show(logger, logwrightName, u"Logwright"_s, u"2"_s);
    makeApplications(generous);
    QStringList found = names();
    found.sort();
    EXPECT_EQ(found, (QStringList{u"Logwright"_s, u"Other"_s}));
    EXPECT_EQ(many.count(u"GetAll"_s), 1);
}

TEST_F(BusRunningApplicationsTest, SeesWhatComesAndGoesAtTheNextCall)
{
    std::optional<BusPeer> logger;
    for (int round = 0; round < 3; ++round) {
        logger.emplace(bus);
        show(*logger, logwrightName, u"Logwright"_s, u"7"_s);
        EXPECT_EQ(names(), QStringList{u"Logwright"_s});
        logger->command({u"release"_s, logwrightName});
        EXPECT_EQ(names(), QStringList{});
        logger->command({u"own"_s, logwrightName});
        EXPECT_EQ(names(), QStringList{u"Logwright"_s});
        logger->kill();
        EXPECT_TRUE(becomes({}));
    }
}

TEST_F(BusRunningApplicationsTest, SeesAnApplicationThatTakesTheNameOfAnother)
{
    BusPeer first(bus);
    show(first, logwrightName, u"First"_s, u"1"_s);
    EXPECT_EQ(names(), QStringList{u"First"_s});
    BusPeer second(bus);
    show(second, logwrightName, u"Second"_s, u"2"_s);
    EXPECT_EQ(names(), QStringList{u"Second"_s});
    first.command({u"own"_s, logwrightName});
    EXPECT_EQ(names(), QStringList{u"First"_s});
}

TEST_F(BusRunningApplicationsTest, ReadsEachConnectionOnce)
{
    BusPeer logger(bus);
    show(logger, logwrightName, u"Logwright"_s, u"7"_s);
    for (int call = 0; call < 20; ++call)
        EXPECT_EQ(names(), QStringList{u"Logwright"_s});
    EXPECT_EQ(logger.count(u"GetAll"_s), 1);

    // A second name of the same connection is the same application.
    logger.command({u"own"_s, logwrightName + u"Two"_s});
    EXPECT_EQ(names(), QStringList{u"Logwright"_s});
    logger.command({u"release"_s, logwrightName});
    EXPECT_EQ(names(), QStringList{u"Logwright"_s});
    EXPECT_EQ(logger.count(u"GetAll"_s), 1);
    logger.command({u"release"_s, logwrightName + u"Two"_s});
    EXPECT_EQ(names(), QStringList{});
}

TEST_F(BusRunningApplicationsTest, KeepsTheOrderOfTheBus)
{
    std::vector<std::unique_ptr<BusPeer>> peers;
    for (const char16_t letter : u"edcba"_s.toStdU16String()) {
        peers.push_back(std::make_unique<BusPeer>(bus));
        show(*peers.back(), logwrightName + QChar(letter), u"Logwright"_s, QString(QChar(letter)));
    }
    EXPECT_EQ(names().size(), 5);
    // What the bus itself lists, by a connection of the test's own. (A new name may change the bus's order.)
    BusConnection connection(sessionBus, "test");
    ASSERT_TRUE(connection.open());
    QStringList expected;
    const auto list = [](sd_bus_message* answer, void* userdata, sd_bus_error*) {
        const char* name = nullptr;
        sd_bus_message_enter_container(answer, 'a', "s");
        while (sd_bus_message_read(answer, "s", &name) > 0) {
            const QString text = QString::fromUtf8(name);
            if (text.startsWith(logwrightName))
                static_cast<QStringList*>(userdata)->append(text.last(1));
        }
        return 0;
    };
    sd_bus_call_method_async(connection.get(), nullptr, "org.freedesktop.DBus", "/org/freedesktop/DBus",
                             "org.freedesktop.DBus", "ListNames", list, &expected, nullptr);
    ASSERT_TRUE(connection.pump(BusConnection::Deadline::max(), [&expected] { return !expected.isEmpty(); }));

    QStringList versions;
    for (const RunningApplication& application : applications->runningApplications()) {
        EXPECT_EQ(application.displayName, u"Logwright"_s);
        versions.append(application.information->shortVersion.value_or(QString()));
    }
    EXPECT_EQ(versions, expected);
}

TEST_F(BusRunningApplicationsTest, HasNoApplicationsWithoutABus)
{
    BusPeer logger(bus);
    show(logger, logwrightName, u"Logwright"_s, u"7"_s);
    EXPECT_EQ(names(), QStringList{u"Logwright"_s});
    bus.kill();
    EXPECT_TRUE(becomes({}));
    EXPECT_EQ(names(), QStringList{});
    bus.start();
    BusPeer next(bus);
    show(next, logwrightName, u"Logwright"_s, u"7"_s);
    EXPECT_TRUE(becomes({u"Logwright"_s}));
    EXPECT_EQ(next.count(u"GetAll"_s), 1);
    EXPECT_EQ(log.count(u"SessionBus: the session bus is gone"_s), 1);
    EXPECT_EQ(log.count(u"SessionBus: the session bus is back"_s), 1);
    EXPECT_EQ(log.lines().size(), 2);
}

} // namespace

} // namespace spotwell
