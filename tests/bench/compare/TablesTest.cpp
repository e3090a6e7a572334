// SPDX-FileCopyrightText: 2026 the spotwell developers
// SPDX-License-Identifier: MIT

#include "bench/compare/Tables.h"

#include <gtest/gtest.h>

namespace spotwell::bench
{

namespace
{

Tables tables()
{
    Tables result;
    result.names =
        QStringList{QStringLiteral("spotwell"), QStringLiteral("bare Qt window"), QStringLiteral("xdx")};
    result.figures.resize(3);
    result.figures[0] = {{Figure::startMilliseconds, {44, 40, 42}},
                         {Figure::cpuMilliseconds, {200}},
                         {Figure::idleWakeUps, {71}},
                         {Figure::latencyMedian, {1}}};
    result.figures[1] = {{Figure::startMilliseconds, {40}}};
    result.figures[2] = {{Figure::startMilliseconds, {84}}, {Figure::cpuMilliseconds, {3'000}}};
    return result;
}

TEST(TablesTest, ShowMediansWithTheirRanges)
{
    EXPECT_EQ(tables().measured().toStdString(),
              "| | spotwell | bare Qt window | xdx |\n"
              "|---|---|---|---|\n"
              "| start to the window's first paint, ms | 42 (40 to 44) | 40 | 84 |\n"
              "| CPU for 1,000 lines at 200 a second, ms | 200 | - | 3000 |\n"
              "| node to logger: median, ms | 1.00 | - | - |\n"
              "| idle minute: wake-ups | 71 | - | - |\n");
}

TEST(TablesTest, ShowTimesTheFirstProgram)
{
    EXPECT_EQ(tables().ratios().toStdString(),
              "| | spotwell | bare Qt window | xdx |\n"
              "|---|---|---|---|\n"
              "| start to the window's first paint, ms | 1.00 | 0.95 | 2.00 |\n"
              "| CPU for 1,000 lines at 200 a second, ms | 1.00 | - | 15.00 |\n"
              "| node to logger: median, ms | 1.00 | - | - |\n"
              "| idle minute: wake-ups | 1.00 | - | - |\n");
}

TEST(TablesTest, HoldTheFirstProgramAgainstItsTargets)
{
    EXPECT_EQ(tables().targets().toStdString(),
              "| | at most | is | |\n"
              "|---|---|---|---|\n"
              "| start: the bare window and a tenth, ms | 44.0 | 42.0 | met |\n"
              "| CPU for 1,000 lines: a twentieth of xdx's, ms | 150 | 200 | missed |\n"
              "| idle minute: wake-ups | 70 | 71 | missed |\n"
              "| node to logger: median, ms | 1.00 | 1.00 | met |\n");
}

} // namespace

} // namespace spotwell::bench
