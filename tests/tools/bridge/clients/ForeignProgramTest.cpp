// SPDX-FileCopyrightText: 2026 the spotwell developers
// SPDX-License-Identifier: MIT

#include "tests/tools/bridge/clients/ForeignProgram.h"

#include "tests/support/Printers.h"
#include "tests/support/bus/ChildProcess.h"

#include <gtest/gtest.h>

namespace spotwell::bridge
{

namespace
{

TEST(ForeignProgramTest, GetsNothingOfTheTestsEnvironment)
{
    const Home home;
    ChildProcess child(foreignCommand(home, {QStringLiteral("DISPLAY=:7")}, {QStringLiteral("env")}));
    QStringList variables;
    while (const auto line = child.readLine())
        variables.append(QString::fromStdString(*line));
    QStringList expected{QStringLiteral("PATH=/usr/bin:/bin"), QStringLiteral("LC_ALL=C.UTF-8"),
                         QStringLiteral("DISPLAY=:7")};
    expected += home.environment();
    variables.sort();
    expected.sort();
    EXPECT_EQ(variables, expected);
}

} // namespace

} // namespace spotwell::bridge
