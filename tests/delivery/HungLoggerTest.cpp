// SPDX-FileCopyrightText: 2026 the spotwell developers
// SPDX-License-Identifier: MIT

#include "delivery/LineBacklog.h"
#include "delivery/LineDelivery.h"
#include "tests/fakes/FakeServices.h"
#include "tests/fakes/FakeTime.h"
#include "tests/support/Printers.h"

#include <gtest/gtest.h>

namespace spotwell
{

namespace
{

/// An old logger that hangs, between a node that goes on and the delivery's own queue.
struct HungLoggerTest : testing::Test {
    static QString line(int number)
    {
        return QStringLiteral("DX de W3XYZ:     14025.0  JA1XYZ       #%1 CQ up 2                 1428Z")
            .arg(number, 7, 10, QLatin1Char('0'));
    }
    void add(int number) { backlog.add(queue, line(number), QStringLiteral("node")); }

    FakeSerialQueue queue;
    FakeRunningApplications applications;
    FakeNotificationCenter center;
    FakeScriptRunner scripts;
    FakeLog log;
    LoggerPresence presence{applications, log};
    LineDelivery delivery{presence, center, scripts, log, {[](bool) {}, [](const QString&) {}}};
    LineBacklog backlog{log, [this](const QString& text, const QString& source) {
                            delivery.sendSpotLineToLogwright(text, source);
                        }};
};

} // namespace

TEST_F(HungLoggerTest, AnHourOfAHundredLinesASecondKeepsTheNewestInOrder)
{
    constexpr int seconds = 3600;
    constexpr int perSecond = 100;
    constexpr int scriptSeconds = 120;
    applications.add(loggerName(), QStringLiteral("6.44"));
    scripts.error = QStringLiteral("Logwright did not answer within 120 s.");
    const auto mostWaiting = static_cast<int>(LineBacklog::maximumLength / line(0).size());

    int number = 0;
    for (int second = 0; second < seconds; ++second) {
        for (int i = 0; i < perSecond; ++i)
            add(++number);
        ASSERT_LE(queue.pendingCount(), static_cast<std::size_t>(mostWaiting));
        if (second % scriptSeconds == scriptSeconds - 1)
            queue.runOne();
    }
    EXPECT_EQ(scripts.scripts.size(), seconds / scriptSeconds);
    EXPECT_EQ(scripts.scripts.first(), processSpotScript(line(1)));
    const QString warning =
        QStringLiteral("takeSpotLine: too many lines are waiting for Logwright, dropping the oldest");
    EXPECT_EQ(log.lines.count(warning), 1) << "once for the whole hour";
    EXPECT_EQ(log.lines.count(QStringLiteral("AppleScript Error:Logwright did not answer within 120 s.")),
              seconds / scriptSeconds);

    scripts.error.reset();
    scripts.scripts.clear();
    queue.runPending();
    ASSERT_GE(scripts.scripts.size(), mostWaiting - 1);
    int expected = number - static_cast<int>(scripts.scripts.size());
    for (const QString& script : scripts.scripts)
        ASSERT_EQ(script, processSpotScript(line(++expected)));
    EXPECT_EQ(expected, number);
    EXPECT_EQ(queue.pendingCount(), 0U);

    scripts.scripts.clear();
    add(++number);
    queue.runPending();
    EXPECT_EQ(scripts.scripts, QStringList{processSpotScript(line(number))});
}

} // namespace spotwell
