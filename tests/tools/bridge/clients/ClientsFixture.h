// SPDX-FileCopyrightText: 2026 the spotwell developers
// SPDX-License-Identifier: MIT

#pragma once

#include "tests/integration/support/Home.h"
#include "tests/support/Printers.h"
#include "tests/support/bus/PrivateBus.h"
#include "tests/tools/bridge/clients/RunningBridge.h"

#include <QProcess>
#include <gtest/gtest.h>

#include <iostream>

namespace spotwell::bridge
{

/// spotwell-bridge with a node on a bus of its own. Whatever its clients do, it has to end in order, without
/// a sanitizer's report.
class ClientsFixture : public testing::Test
{
protected:
    void TearDown() override
    {
        EXPECT_EQ(bridge.end(), 0);
        if (HasFailure())
            std::cerr << "What spotwell-bridge wrote:\n" << bridge.errors().constData();
    }

    /// Posts a notification as spotwell does, from a process of its own. `userInfo` is the dictionary, as
    /// busctl takes it: the number of entries, and of each one key, type and value.
    void post(const QString& name, const QStringList& userInfo) const
    {
        QProcess busctl;
        QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
        environment.insert(QStringLiteral("DBUS_SESSION_BUS_ADDRESS"), QString::fromStdString(bus.address()));
        busctl.setProcessEnvironment(environment);
        busctl.start(QStringLiteral("busctl"),
                     QStringList{QStringLiteral("--user"), QStringLiteral("emit"),
                                 QStringLiteral("/com/tarnbrooksoftware/DistributedNotifications"),
                                 QStringLiteral("com.tarnbrooksoftware.DistributedNotifications"),
                                 QStringLiteral("Posted"), QStringLiteral("ssa{sv}"), name,
                                 QStringLiteral("string object")} +
                         userInfo);
        ASSERT_TRUE(busctl.waitForFinished());
        ASSERT_EQ(busctl.exitCode(), 0) << busctl.readAllStandardError().constData();
    }
    void postLine(const QString& line) const
    {
        post(QStringLiteral("com.tarnbrooksoftware.spotwell_line"),
             {QStringLiteral("2"), QStringLiteral("line"), QStringLiteral("s"), line,
              QStringLiteral("source"), QStringLiteral("s"), QStringLiteral("node")});
    }

    Home home;
    PrivateBus bus;
    RunningBridge bridge{bus};
};

} // namespace spotwell::bridge
