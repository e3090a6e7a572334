// SPDX-FileCopyrightText: 2026 the spotwell developers
// SPDX-License-Identifier: MIT

#include "tests/platform/bus/ApplicationsFixture.h"

#include <thread>

namespace spotwell
{

namespace
{

using namespace Qt::Literals::StringLiterals;
using namespace std::chrono_literals;

using HungApplicationsTest = ApplicationsFixture;

/// What a busy machine may add to a wait of 250 ms.
constexpr auto slack = 3s;

TEST_F(HungApplicationsTest, AreWaitedForOnceAndTakenWhenTheyAnswer)
{
    BusPeer hung(bus);
    show(hung, logwrightName, u"Hung"_s, u"1"_s);
    BusPeer healthy(bus);
    show(healthy, logwrightName + u"2"_s, u"Healthy"_s, u"2"_s);
    hung.stop();
    // The wait has to be long enough for the healthy one's answer on a busy machine.
    makeApplications(2000ms);
    EXPECT_EQ(names(), QStringList{u"Healthy"_s});
    const auto start = std::chrono::steady_clock::now();
    for (int call = 0; call < 20; ++call)
        EXPECT_EQ(names(), QStringList{u"Healthy"_s});
    EXPECT_LT(std::chrono::steady_clock::now() - start, 4s); // each waiting: 32 s
    EXPECT_EQ(log.lines(), QStringList{u"runningApplications: %1 cannot be read: it does not answer"_s.arg(
                               logwrightName)});

    hung.resume();
    EXPECT_TRUE(waitUntil([this] { return names().contains(u"Hung"_s); }));
    EXPECT_EQ(names().size(), 2);
    EXPECT_EQ(hung.count(u"GetAll"_s), 1);
    EXPECT_EQ(log.lines().size(), 1);
}

TEST_F(HungApplicationsTest, HoldTheCallerNoLongerThanAllowed)
{
    std::vector<std::unique_ptr<BusPeer>> hung;
    for (int number = 0; number < 4; ++number) {
        hung.push_back(std::make_unique<BusPeer>(bus));
        show(*hung.back(), logwrightName + QString::number(number), u"Hung"_s, u"1"_s);
        hung.back()->stop();
    }
    applications.emplace(sessionBus, log);
    const auto first = timeOfCall();
    EXPECT_GE(first, 200ms);
    EXPECT_LT(first, 250ms + slack); // one after the other: 800 ms at least
    for (const auto& peer : hung)
        peer->resume();
}

TEST_F(HungApplicationsTest, HoldTheWindowForAMomentOnly)
{
    applications.emplace(sessionBus, log, BusRunningApplications::Limits{.call = 2000ms, .windowCall = 20ms},
                         BusRunningApplications::Patience{.silence = 0ms, .afterSilence = 0ms});
    bus.stop();
    EXPECT_GE(timeOfCall(), 2000ms) << "the first call comes before there is a window";
    for (int call = 0; call < 3; ++call) {
        const auto span = timeOfCall();
        EXPECT_GE(span, 20ms);
        EXPECT_LT(span, 20ms + slack);
    }
    std::thread other([this] { EXPECT_GE(timeOfCall(), 2000ms) << "the lines can wait"; });
    EXPECT_TRUE(waitUntil([this] { return timeOfCall() < 20ms + slack; })) << "not behind the lines either";
    other.join();
    bus.resume();
}

TEST_F(HungApplicationsTest, LeaveASecondCallerTheTimeToHearTheBus)
{
    BusPeer hung(bus);
    show(hung, logwrightName, u"Hung"_s, u"1"_s);
    BusPeer healthy(bus);
    show(healthy, logwrightName + u"2"_s, u"Healthy"_s, u"2"_s);
    hung.stop();
    // A fifth of it has to be enough for the bus on a busy machine.
    makeApplications(5000ms);
    QStringList seenByOther;
    std::thread other([&] { seenByOther = names(); });
    EXPECT_EQ(names(), QStringList{u"Healthy"_s});
    other.join();
    EXPECT_EQ(seenByOther, QStringList{u"Healthy"_s});
    hung.resume();
}

TEST_F(HungApplicationsTest, AreAskedAnewWhenTheQuestionIsTooOld)
{
    BusPeer hung(bus);
    show(hung, logwrightName, u"Hung"_s, u"1"_s);
    hung.stop();
    makeApplications(50ms, {.answer = 100ms});
    // Long enough for several questions to grow too old.
    const auto start = std::chrono::steady_clock::now();
    EXPECT_TRUE(
        waitUntil([&] { return names().isEmpty() && std::chrono::steady_clock::now() - start >= 500ms; }));
    hung.resume();
    EXPECT_TRUE(becomes({u"Hung"_s}));
    const auto most = 1 + (std::chrono::steady_clock::now() - start) / 100ms;
    EXPECT_GE(hung.count(u"GetAll"_s), 2);
    EXPECT_LE(hung.count(u"GetAll"_s), most);
    EXPECT_EQ(log.lines().size(), 1);
}

TEST_F(HungApplicationsTest, AreForgottenWhenTheyEnd)
{
    BusPeer hung(bus);
    show(hung, logwrightName, u"Hung"_s, u"1"_s);
    hung.stop();
    makeApplications(250ms);
    EXPECT_EQ(names(), QStringList{});
    hung.kill();
    BusPeer next(bus);
    show(next, logwrightName, u"Next"_s, u"1"_s);
    EXPECT_TRUE(becomes({u"Next"_s}));
}

TEST_F(HungApplicationsTest, AnErrorIsToldOnceAndAskedAgainLater)
{
    BusPeer logger(bus);
    show(logger, logwrightName, u"Logwright"_s, u"1"_s);
    logger.command({u"fail"_s, u"com.example.Error"_s, QString(600, u'n')});
    makeApplications(generous, {.afterError = 2000ms});
    const auto start = std::chrono::steady_clock::now();
    EXPECT_EQ(names(), QStringList{});
    EXPECT_EQ(names(), QStringList{});
    logger.command({u"fail"_s, QString(), QString()});
    EXPECT_TRUE(becomes({u"Logwright"_s}));
    EXPECT_GE(std::chrono::steady_clock::now() - start, 2000ms);
    EXPECT_EQ(logger.count(u"GetAll"_s), 2);
    EXPECT_EQ(log.lines(), QStringList{u"runningApplications: %1 cannot be read: "_s.arg(logwrightName) +
                                       QString(300, u'n')});
}

TEST_F(HungApplicationsTest, ABusThatHangsIsWaitedForOnceInAWhile)
{
    BusPeer logger(bus);
    show(logger, logwrightName, u"Logwright"_s, u"1"_s);
    makeApplications(2000ms, {.silence = 0ms, .afterSilence = 50s});
    EXPECT_TRUE(becomes({u"Logwright"_s}));
    bus.stop();
    const auto first = timeOfCall();
    EXPECT_GE(first, 2000ms);
    EXPECT_LT(first, 2000ms + slack);
    const auto start = std::chrono::steady_clock::now();
    for (int call = 0; call < 20; ++call)
        EXPECT_EQ(names(), QStringList{});
    EXPECT_LT(std::chrono::steady_clock::now() - start, 4s); // each waiting: 40 s
    bus.resume();
    // Its late answer is enough: nobody sits out the fifty seconds.
    EXPECT_TRUE(becomes({u"Logwright"_s}));
    EXPECT_LT(std::chrono::steady_clock::now() - start, 50s);
    EXPECT_EQ(logger.count(u"GetAll"_s), 1);
    EXPECT_EQ(log.lines(), QStringList{u"runningApplications: the session bus does not answer"_s});
}

TEST_F(HungApplicationsTest, ABusThatHesitatesIsWaitedForSeveralTimes)
{
    BusPeer logger(bus);
    show(logger, logwrightName, u"Logwright"_s, u"1"_s);
    makeApplications(1000ms, {.silence = 2500ms, .afterSilence = 20s});
    EXPECT_TRUE(becomes({u"Logwright"_s}));
    bus.stop();
    const auto start = std::chrono::steady_clock::now();
    for (int call = 0; call < 2; ++call)
        EXPECT_GE(timeOfCall(), 1000ms);
    // Whoever waits when the 2.5 s are over is the last to.
    while (std::chrono::steady_clock::now() - start < 2500ms)
        timeOfCall();
    for (int call = 0; call < 20; ++call)
        EXPECT_EQ(names(), QStringList{});
    EXPECT_LT(std::chrono::steady_clock::now() - start, 4000ms + slack); // each waiting: 20 s more
    bus.resume();
    EXPECT_TRUE(becomes({u"Logwright"_s}));
    EXPECT_EQ(log.lines(), QStringList{u"runningApplications: the session bus does not answer"_s});
}

TEST_F(HungApplicationsTest, ABusThatHangsFromTheStartHoldsNobodyLong)
{
    bus.stop();
    makeApplications(250ms, {.silence = 0ms, .afterSilence = 50ms});
    std::vector<std::thread> callers;
    for (int caller = 0; caller < 3; ++caller)
        callers.emplace_back([this] { EXPECT_LT(timeOfCall(), 250ms + slack); });
    for (std::thread& caller : callers)
        caller.join();
    // After a while it is waited for again.
    EXPECT_TRUE(waitUntil([this] { return timeOfCall() >= 200ms; }));
    EXPECT_EQ(log.lines().size(), 1);
    bus.resume();
    BusPeer logger(bus);
    show(logger, logwrightName, u"Logwright"_s, u"1"_s);
    EXPECT_TRUE(becomes({u"Logwright"_s}));
}

} // namespace

} // namespace spotwell
