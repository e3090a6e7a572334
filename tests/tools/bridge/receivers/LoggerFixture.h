// SPDX-FileCopyrightText: 2026 the spotwell developers
// SPDX-License-Identifier: MIT

#pragma once

#include "delivery/LineDelivery.h"
#include "delivery/LoggerPresence.h"
#include "delivery/SpotNotification.h"
#include "platform/linux/bus/BusNotificationCenter.h"
#include "platform/linux/bus/BusRunningApplications.h"
#include "platform/linux/bus/BusScriptRunner.h"
#include "tests/fakes/SharedLog.h"
#include "tests/support/bus/PrivateBus.h"

#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <vector>

namespace spotwell
{

/// The whole of spotwell's delivery, as shipped, on a bus of the test's own; the test brings the logger.
class LoggerFixture : public testing::Test
{
protected:
    /// Starts a shell command on the bus, in `directory`. What it says on standard error is among its lines.
    std::unique_ptr<ChildProcess> start(const QString& command,
                                        const QString& directory = QStringLiteral("/"))
    {
        const std::string script = "export PATH='" PROGRAMS "':\"$PATH\" LC_ALL=C.UTF-8; cd '" +
                                   directory.toStdString() + "' && exec " + command.toStdString();
        return std::make_unique<ChildProcess>(std::vector<std::string>{"/bin/sh", "-c", script},
                                              std::vector{bus.environment()}, true);
    }
    /// Runs a shell command on the bus to its end, which has to be a good one. All its output.
    std::string run(const QString& command, const QString& directory = QStringLiteral("/"))
    {
        const auto process = start(command, directory);
        std::string output;
        while (const auto line = process->readLine())
            output += *line + '\n';
        EXPECT_EQ(process->wait(), 0) << command.toStdString() << '\n' << output;
        return output;
    }
    /// Delivers a cluster line as the node sent it.
    void deliver(const QString& line)
    {
        lines.sendSpotLineToLogwright(line, QStringLiteral("dx.example.net"));
    }
    /// Delivers a spot in which everything is known, letters of several alphabets among it.
    void deliverSpot()
    {
        Spot spot;
        spot.call = QStringLiteral("X1X/P");
        spot.dxde = QStringLiteral("");
        spot.source = QStringLiteral("POTA");
        spot.timestamp = TimePoint{std::chrono::microseconds{1801645507000450}};
        spot.megahertz = 14.0745;
        spot.mode = QStringLiteral("FT8");
        spot.dxgrid = QStringLiteral("JN34ab");
        spot.dxlatitude = -33.856784;
        spot.dxlongitude = 151.215297;
        spot.delatitude = 0.1;
        spot.delongitude = -7.25;
        spot.pota = QStringLiteral("DE-0001");
        spot.comment = QStringLiteral("“Grüße” \\ 日本 \U0001F4FB");
        spot.service = QStringLiteral("pota");
        spots.sendSpotCall(spot);
    }

    PrivateBus bus;
    SharedLog log;
    SessionBus sessionBus{log, bus.address()};
    BusRunningApplications applications{
        sessionBus, log, {std::chrono::seconds{20}, std::chrono::seconds{20}}, {}};
    BusScriptRunner scriptRunner{sessionBus, applications, log};
    BusNotificationCenter center{sessionBus, log};
    LoggerPresence presence{applications, log};
    QStringList console;
    bool isRunning = false;
    LineDelivery lines{presence,
                       center,
                       scriptRunner,
                       log,
                       {[this](bool running) { isRunning = running; },
                        [this](const QString& text) { console.append(text); }}};
    SpotNotification spots{[](const QString&) {}, center};
};

} // namespace spotwell
