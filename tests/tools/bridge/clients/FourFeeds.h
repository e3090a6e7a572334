// SPDX-FileCopyrightText: 2026 the spotwell developers
// SPDX-License-Identifier: MIT

#pragma once

#include "tests/integration/support/Home.h"
#include "tests/integration/support/RunningSimulator.h"
#include "tests/tools/bridge/clients/RunningBridge.h"

#include <QProcess>
#include <QRegularExpression>
#include <QString>

#include <functional>
#include <optional>
#include <vector>

namespace spotwell::bridge
{

/// A spot that has gone the whole road, as a client has to show it.
struct FeedSpot {
    QString feed;
    QString call;
    /// In kHz, with one decimal.
    QString frequency;
    /// What its line begins with: spotter, frequency and call, and as much of a cluster line as has its usual
    /// width.
    QRegularExpression line;
};

/// Waits until `shows` holds for each of the spots. Those for which it does not, by feed and line.
[[nodiscard]] QStringList missing(const std::vector<FeedSpot>& spots,
                                  const std::function<bool(const FeedSpot&)>& shows);

/// The sources of all spots: a DX cluster node and the three web services, simulated, and spotwell's own
/// libraries, which bring what they say onto the bus. Few spots, and soon no more.
class FourFeeds
{
public:
    static constexpr int spotsOfEach = 3;

    /// What the node says.
    [[nodiscard]] static QStringList clusterLines();

    /// `home` and `bus` outlive it. Throws when a part does not start.
    FourFeeds(const Home& home, const PrivateBus& bus);
    ~FourFeeds();
    FourFeeds(const FourFeeds&) = delete;
    FourFeeds& operator=(const FourFeeds&) = delete;

    /// Waits until the bridge has received all spots. The first ones of each feed, as its clients have to
    /// show them; fewer when they do not come.
    [[nodiscard]] static std::vector<FeedSpot> arriveAt(RunningBridge& bridge);
    /// Ends the program between the feeds and the bus. Its exit code; absent when it did not end in order.
    std::optional<int> end();

private:
    RunningSimulator node_;
    RunningSimulator pota_;
    RunningSimulator dxsummit_;
    RunningSimulator wsprnet_;
    QProcess demo_;
};

} // namespace spotwell::bridge
