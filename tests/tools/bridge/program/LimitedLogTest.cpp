// SPDX-FileCopyrightText: 2026 the spotwell developers
// SPDX-License-Identifier: MIT

#include "tools/spotwell-bridge/LimitedLog.h"

#include "tests/fakes/SharedLog.h"
#include "tests/support/WaitUntil.h"

#include <gtest/gtest.h>

namespace spotwell::bridge
{

namespace
{

using namespace Qt::Literals::StringLiterals;
using namespace std::chrono_literals;

TEST(LimitedLog, PassesOnSoManyLinesAtATime)
{
    SharedLog log;
    LimitedLog limited(log, u"telnet"_s, {3, 50ms});
    qsizetype told = 0;
    // Intervals end on the event loop, so none ends between two of these lines.
    for (const int count : {5, 4}) {
        const auto begin = Alarm::Clock::now();
        for (int i = 1; i <= count; ++i)
            limited.line(QString::number(i));
        EXPECT_EQ(log.lines().mid(told), (QStringList{u"1"_s, u"2"_s, u"3"_s}));
        told += 4;
        EXPECT_TRUE(waitUntil([&] { return log.lines().size() == told; }));
        EXPECT_GE(Alarm::Clock::now() - begin, 50ms);
        EXPECT_EQ(log.lines().last(), u"telnet: lines left out: %1"_s.arg(count - 3));
    }
}

TEST(LimitedLog, IsQuietWhenNothingWasLeftOut)
{
    SharedLog log;
    LimitedLog limited(log, u"telnet"_s, {1, 20ms});
    for (const QString& text : {u"1"_s, u"2"_s}) {
        limited.line(text);
        EXPECT_EQ(log.lines().last(), text);
        const auto begin = Alarm::Clock::now();
        EXPECT_TRUE(waitUntil([begin] { return Alarm::Clock::now() - begin > 40ms; }));
        QCoreApplication::processEvents();
    }
    EXPECT_EQ(log.lines().size(), 2);
    EXPECT_EQ(LimitedLog::Limits{}.lines, 20U);
    EXPECT_EQ(LimitedLog::Limits{}.interval, 1s);
}

} // namespace

} // namespace spotwell::bridge
