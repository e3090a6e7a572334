// SPDX-FileCopyrightText: 2026 the spotwell developers
// SPDX-License-Identifier: MIT

#include "delivery/LoggerPresence.h"

#include "tests/fakes/FakeServices.h"
#include "tests/support/Printers.h"

#include <gtest/gtest.h>

namespace spotwell
{

namespace
{

struct LoggerPresenceTest : testing::Test {
    FakeRunningApplications applications;
    FakeLog log;
    LoggerPresence presence{applications, log};
    double version = 99.5;
};

} // namespace

TEST_F(LoggerPresenceTest, AnEmptyNameIsNotLookedUp)
{
    applications.add(QString(), QStringLiteral("1"));
    EXPECT_FALSE(presence.appIsRunning(QString(), true, &version));
    EXPECT_EQ(applications.reads, 0);
    EXPECT_EQ(version, 99.5);
    EXPECT_TRUE(log.lines.isEmpty());
}

TEST_F(LoggerPresenceTest, ComparesTheNameExactly)
{
    for (const char* other :
         {"logwright", "LOGWRIGHT", "Logwright ", " Logwright", "Logwrigh", "Logwright 2"})
        applications.add(QString::fromLatin1(other), QStringLiteral("1"));
    EXPECT_FALSE(presence.appIsRunning(loggerName(), true, &version));
    EXPECT_EQ(version, 99.5);
    EXPECT_TRUE(log.lines.isEmpty());
    applications.add(QStringLiteral("Logwright"), QStringLiteral("6.45"));
    EXPECT_TRUE(presence.appIsRunning(loggerName(), false, &version));
    EXPECT_EQ(version, 6.45);
    EXPECT_TRUE(log.lines.isEmpty());
}

TEST_F(LoggerPresenceTest, ReadsTheListAfreshAtEachCall)
{
    EXPECT_FALSE(presence.appIsRunning(loggerName(), false, &version));
    applications.add(loggerName(), QStringLiteral("7"));
    EXPECT_TRUE(presence.appIsRunning(loggerName(), false, &version));
    applications.applications.clear();
    EXPECT_FALSE(presence.appIsRunning(loggerName(), false, &version));
    EXPECT_EQ(applications.reads, 3);
}

TEST_F(LoggerPresenceTest, OnlyTheFirstOfANameCounts)
{
    applications.add(QStringLiteral("Other"), QStringLiteral("1"));
    applications.add(loggerName(), QStringLiteral("6.44"));
    applications.add(loggerName(), QStringLiteral("6.45"));
    EXPECT_TRUE(presence.appIsRunning(loggerName(), false, &version));
    EXPECT_EQ(version, 6.44);
}

TEST_F(LoggerPresenceTest, OneWhoseInformationCannotBeReadCountsAsNotRunning)
{
    applications.applications.push_back({loggerName(), std::nullopt, {}});
    applications.add(loggerName(), QStringLiteral("7"));
    EXPECT_FALSE(presence.appIsRunning(loggerName(), true, &version));
    EXPECT_EQ(version, 99.5);
    EXPECT_TRUE(log.lines.isEmpty());
}

TEST_F(LoggerPresenceTest, ReadsTheVersionAsALeadingDecimalNumber)
{
    struct Row {
        std::optional<QString> text;
        double version;
    };
    const Row rows[] = {{QStringLiteral("6.45"), 6.45},
                        {QStringLiteral("6.10"), 6.1},
                        {QStringLiteral("6.5"), 6.5},
                        {QStringLiteral("7"), 7.0},
                        {QStringLiteral("6.45.2"), 6.45},
                        {QStringLiteral("6.45 beta"), 6.45},
                        {QStringLiteral("beta 6.45"), 0.0},
                        {QStringLiteral("v6.45"), 0.0},
                        {QString(), 0.0},
                        {std::nullopt, 0.0}};
    for (const Row& row : rows) {
        applications.applications.clear();
        applications.add(loggerName(), row.text);
        version = 99.5;
        EXPECT_TRUE(presence.appIsRunning(loggerName(), false, &version));
        EXPECT_EQ(version, row.version) << row.text.value_or(QStringLiteral("(none)")).toStdString();
    }
}

TEST_F(LoggerPresenceTest, LogsWhatItFoundWhenAsked)
{
    applications.add(loggerName(), QStringLiteral("6.10 beta"));
    EXPECT_TRUE(presence.appIsRunning(loggerName(), true, &version));
    EXPECT_EQ(log.lines, QStringList{QStringLiteral("appIsRunning:Logwright Version 6.10 beta is running")});
}

TEST_F(LoggerPresenceTest, LogsAMissingVersionAsNull)
{
    applications.add(loggerName(), std::nullopt);
    EXPECT_TRUE(presence.appIsRunning(loggerName(), true, &version));
    EXPECT_EQ(log.lines, QStringList{QStringLiteral("appIsRunning:Logwright Version (null) is running")});
}

} // namespace spotwell
