// SPDX-FileCopyrightText: 2026 the spotwell developers
// SPDX-License-Identifier: MIT

#pragma once

#include "platform/linux/bus/BusRunningApplications.h"
#include "tests/fakes/SharedLog.h"
#include "tests/support/bus/BusPeer.h"

#include <gtest/gtest.h>

#include <chrono>
#include <optional>
#include <vector>

namespace spotwell
{

inline const QString logwrightName = QStringLiteral("com.tarnbrooksoftware.Application.Logwright");

/// A bus of the test's own, and the applications on it as the adapter sees them.
class ApplicationsFixture : public testing::Test
{
protected:
    void makeApplications(std::chrono::milliseconds limit, BusRunningApplications::Patience patience = {})
    {
        applications.emplace(sessionBus, log, BusRunningApplications::Limits{limit, limit}, patience);
    }
    static void show(BusPeer& peer, const QString& busName, const QString& displayName,
                     const QString& version)
    {
        peer.command({QStringLiteral("text"), QStringLiteral("DisplayName"), displayName});
        peer.command({QStringLiteral("text"), QStringLiteral("Version"), version});
        peer.command({QStringLiteral("own"), busName});
    }
    /// The displayed names, in the order of the list.
    QStringList names()
    {
        QStringList result;
        for (const RunningApplication& application : applications->runningApplications())
            result.append(application.displayName);
        return result;
    }
    bool becomes(const QStringList& expected)
    {
        return waitUntil([this, &expected] { return names() == expected; });
    }
    /// How long one call takes.
    std::chrono::steady_clock::duration timeOfCall()
    {
        const auto start = std::chrono::steady_clock::now();
        applications->runningApplications();
        return std::chrono::steady_clock::now() - start;
    }

    /// More than a busy machine needs for an answer that does come.
    static constexpr std::chrono::milliseconds generous{20000};

    PrivateBus bus;
    SharedLog log;
    SessionBus sessionBus{log, bus.address()};
    std::optional<BusRunningApplications> applications;
};

} // namespace spotwell
