// SPDX-FileCopyrightText: 2026 the spotwell developers
// SPDX-License-Identifier: MIT

#include "cluster/Supervision.h"
#include "tests/support/Printers.h"

#include <gtest/gtest.h>

#include <array>
#include <limits>

namespace spotwell
{

namespace
{

constexpr Seconds never = Seconds{std::numeric_limits<double>::infinity()};
/// The smallest step of the clock.
constexpr Seconds aMicrosecond{1e-6};

const QString noData = QStringLiteral("Waited 30 seconds for data, giving up.");
const QString noLogin = QStringLiteral("Waited 120 seconds for login, giving up.");

} // namespace

TEST(LoginGivenUp, StrictlyBeyondEachLimit)
{
    struct Row {
        bool anyData;
        bool loggedIn;
        Seconds sinceStart;
        std::optional<QString> message;
    };
    const std::array rows{
        Row{false, false, Seconds{0}, std::nullopt},
        Row{false, false, Seconds{30}, std::nullopt},
        Row{false, false, Seconds{30} + aMicrosecond, noData},
        Row{false, false, Seconds{1000}, noData},
        Row{false, true, Seconds{30} + aMicrosecond, noData},
        Row{true, false, Seconds{30} + aMicrosecond, std::nullopt},
        Row{true, false, Seconds{120}, std::nullopt},
        Row{true, false, Seconds{120} + aMicrosecond, noLogin},
        Row{true, true, Seconds{120} + aMicrosecond, std::nullopt},
        Row{true, true, Seconds{100000}, std::nullopt},
        Row{false, false, Seconds{-5}, std::nullopt},
    };
    for (const Row& row : rows) {
        EXPECT_EQ(loginGivenUp(row.anyData, row.loggedIn, row.sinceStart), row.message)
            << row.anyData << row.loggedIn << ' ' << row.sinceStart.count();
    }
}

TEST(UpkeepOfAConnection, StrictlyBeyondEachLimit)
{
    struct Row {
        bool isConnected;
        Seconds idle;
        Seconds sinceKeepAlive;
        Upkeep upkeep;
    };
    const std::array rows{
        Row{true, Seconds{0}, never, Upkeep::nothing},
        Row{true, Seconds{600}, never, Upkeep::nothing},
        Row{true, Seconds{600} + aMicrosecond, never, Upkeep::sendKeepAlive},
        Row{true, Seconds{650}, Seconds{60}, Upkeep::nothing},
        Row{true, Seconds{650}, Seconds{60} + aMicrosecond, Upkeep::sendKeepAlive},
        Row{true, Seconds{720}, Seconds{1}, Upkeep::nothing},
        Row{true, Seconds{720}, Seconds{61}, Upkeep::sendKeepAlive},
        Row{true, Seconds{720} + aMicrosecond, Seconds{61}, Upkeep::disconnect},
        Row{true, Seconds{720} + aMicrosecond, Seconds{1}, Upkeep::disconnect},
        Row{true, Seconds{1e9}, never, Upkeep::disconnect},
        Row{false, Seconds{0}, never, Upkeep::nothing},
        Row{false, Seconds{60}, never, Upkeep::nothing},
        Row{false, Seconds{60} + aMicrosecond, Seconds{1}, Upkeep::reconnect},
        Row{false, Seconds{1e9}, never, Upkeep::reconnect},
        Row{false, Seconds{-100}, never, Upkeep::nothing},
    };
    for (const Row& row : rows) {
        EXPECT_EQ(upkeep(row.isConnected, row.idle, row.sinceKeepAlive), row.upkeep)
            << row.isConnected << ' ' << row.idle.count() << ' ' << row.sinceKeepAlive.count();
    }
}

} // namespace spotwell
