// SPDX-FileCopyrightText: 2026 the spotwell developers
// SPDX-License-Identifier: MIT

#include "platform/linux/bus/BusScriptRunner.h"

#include "tests/platform/bus/ApplicationsFixture.h"

#include <condition_variable>
#include <mutex>
#include <thread>

namespace spotwell
{

namespace
{

using namespace Qt::Literals::StringLiterals;
using namespace std::chrono_literals;

QString script(const QString& text)
{
    return u"Tell application \"Logwright\"\nprocessSpot \""_s + text + u"\"\nend tell\n"_s;
}

class BusScriptRunnerTest : public ApplicationsFixture
{
protected:
    void SetUp() override
    {
        makeApplications(generous);
        logger.emplace(bus);
        show(*logger, logwrightName, u"Logwright"_s, u"6.44"_s);
        makeRunner(120s);
    }
    void makeRunner(std::chrono::milliseconds limit)
    {
        runner.emplace(sessionBus, *applications, log, limit);
    }
    /// The next call the logger sees, behind the reading of its properties.
    QStringList nextCall()
    {
        QStringList seen = logger->next();
        while (seen.value(0) == u"GetAll"_s)
            seen = logger->next();
        return seen;
    }
    static QStringList call(const QString& text)
    {
        return {u"call"_s, u"com.tarnbrooksoftware.Scripting"_s, u"processSpot"_s, u"s"_s, text};
    }

    std::optional<BusPeer> logger;
    std::optional<BusScriptRunner> runner;
};

TEST_F(BusScriptRunnerTest, CallsTheCommand)
{
    EXPECT_EQ(runner->run(script(u"DX de N0CALL: 7074.5 X1X"_s)), std::nullopt);
    EXPECT_EQ(nextCall(), call(u"DX de N0CALL: 7074.5 X1X"_s));
    EXPECT_EQ(runner->run(script(u""_s)), std::nullopt);
    EXPECT_EQ(nextCall(), call(u""_s));
    EXPECT_EQ(runner->run(script(u"é"_s + QChar(u'\0') + QChar(0xD800))), std::nullopt);
    EXPECT_EQ(nextCall(), call(u"é\ufffd\ufffd"_s));
    EXPECT_EQ(log.lines(), QStringList{});
}

TEST_F(BusScriptRunnerTest, AsksTheFirstOfTheName)
{
    BusPeer other(bus);
    show(other, logwrightName + u"2"_s, u"Logwright"_s, u"7"_s);
    const auto list = applications->runningApplications();
    ASSERT_EQ(list.size(), 2U);
    const bool otherIsFirst = list[0].information->shortVersion == u"7"_s;
    EXPECT_EQ(runner->run(script(u"x"_s)), std::nullopt);
    EXPECT_EQ(other.count(u"call"_s), otherIsFirst ? 1 : 0);
    EXPECT_EQ(logger->count(u"call"_s), otherIsFirst ? 0 : 1);
}

TEST_F(BusScriptRunnerTest, SaysWhatIsWrongWithTheText)
{
    EXPECT_EQ(runner->run(u"beep"_s), u"Expected “tell application \"NAME\"”."_s);
    EXPECT_EQ(logger->count(u"call"_s), 0);
}

TEST_F(BusScriptRunnerTest, SaysThatTheApplicationIsNotThere)
{
    EXPECT_EQ(runner->run(u"tell application \"logwright\"\nprocessSpot \"x\"\nend tell"_s),
              u"logwright isn’t running."_s);
    bus.kill();
    EXPECT_EQ(runner->run(script(u"x"_s)), u"Logwright isn’t running."_s);
}

TEST_F(BusScriptRunnerTest, PassesOnTheErrorOfTheApplication)
{
    logger->command({u"own"_s, logwrightName});
    EXPECT_EQ(runner->run(script(u"x"_s)), std::nullopt);
    logger->command({u"fail"_s, u"com.example.Error"_s, u"The log is closed: 100%"_s});
    EXPECT_EQ(runner->run(script(u"x"_s)), u"The log is closed: 100%"_s);
    EXPECT_EQ(log.count(u"run: processSpot of :1."_s), 1);
    EXPECT_EQ(log.count(u" failed: com.example.Error"_s), 1);
    logger->command({u"fail"_s, u"com.example.Error"_s, QString()});
    EXPECT_EQ(runner->run(script(u"x"_s)), u"com.example.Error"_s);
    logger->command({u"fail"_s, u"com.example.Error"_s, QString(501, u'e')});
    EXPECT_EQ(runner->run(script(u"x"_s)), QString(500, u'e'));
    logger->command({u"fail"_s, QString(), QString()});
    EXPECT_EQ(runner->run(script(u"x"_s)), std::nullopt);
}

TEST_F(BusScriptRunnerTest, GivesUpAfterTheLimit)
{
    makeRunner(200ms);
    logger->command({u"hold"_s});
    const auto start = std::chrono::steady_clock::now();
    EXPECT_EQ(runner->run(script(u"x"_s)), u"Logwright did not answer within 0.2 s."_s);
    EXPECT_GE(std::chrono::steady_clock::now() - start, 200ms);
}

TEST_F(BusScriptRunnerTest, IsCancelledFromAnotherThread)
{
    logger->command({u"hold"_s});
    std::thread canceller([this] {
        EXPECT_EQ(nextCall(), call(u"x"_s));
        runner->cancel();
    });
    EXPECT_EQ(runner->run(script(u"x"_s)), u"The script was cancelled."_s);
    canceller.join();
    EXPECT_EQ(runner->run(script(u"y"_s)), u"The script was cancelled."_s);
    EXPECT_EQ(logger->count(u"call"_s), 0);
}

TEST_F(BusScriptRunnerTest, NoticesThatTheApplicationOrTheBusIsGone)
{
    logger->command({u"hold"_s});
    std::thread killer([this] {
        EXPECT_EQ(nextCall(), call(u"x"_s));
        logger->kill();
    });
    const auto error = runner->run(script(u"x"_s));
    killer.join();
    ASSERT_TRUE(error);
    EXPECT_FALSE(error->isEmpty());

    logger.emplace(bus);
    show(*logger, logwrightName, u"Logwright"_s, u"6.44"_s);
    logger->command({u"hold"_s});
    std::thread busKiller([this] {
        EXPECT_EQ(nextCall(), call(u"y"_s));
        bus.kill();
    });
    EXPECT_EQ(runner->run(script(u"y"_s)), u"The connection to the session bus was lost."_s);
    busKiller.join();
}

} // namespace

} // namespace spotwell
