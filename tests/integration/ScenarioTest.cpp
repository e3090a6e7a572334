// SPDX-FileCopyrightText: 2026 the spotwell developers
// SPDX-License-Identifier: MIT

#include "tests/integration/support/ProgramFixture.h"
#include "tests/integration/support/RunningSimulator.h"

namespace spotwell
{
namespace
{

/// A shipped scenario of one session, and what has happened when nothing but the client's leaving is left.
struct Scenario {
    const char* name;
    /// The checks before "quit".
    int checks;
    /// The spot lines that reach the logger.
    int spots;
};

void PrintTo(const Scenario& scenario, std::ostream* out)
{
    *out << scenario.name;
}

class ScenarioTest : public ProgramFixture
{
protected:
    void startAt(const RunningSimulator& simulator)
    {
        home.writeSettings(settingsFor(simulator.port()));
        start();
    }
    static bool passed(RunningSimulator& simulator, qsizetype checks)
    {
        return waitUntil([&] {
            return simulator.count(u"check", u"result", QStringLiteral("passed")) >= checks ||
                   simulator.count(u"done") > 0;
        });
    }
    static void expectAllHeld(RunningSimulator& simulator)
    {
        EXPECT_EQ(simulator.waitForEnd(), 0) << simulator.report().constData();
        EXPECT_EQ(simulator.count(u"check", u"result", QStringLiteral("failed")), 0);
    }
};

class DialogueTest : public ScenarioTest, public testing::WithParamInterface<Scenario>
{
};

TEST_P(DialogueTest, holdsAllOfTheNodesChecks)
{
    const Scenario& scenario = GetParam();
    const auto logger = makeLogger(QStringLiteral("6.45"));
    RunningSimulator simulator({QStringLiteral("--once"), QString::fromLatin1(scenario.name)});
    startAt(simulator);
    EXPECT_TRUE(passed(simulator, scenario.checks)) << simulator.report().constData();
    for (int spot = 0; spot < scenario.spots; ++spot)
        EXPECT_EQ(next(*logger, QStringLiteral("signal")).size(), 9) << "spot " << spot;
    end();
    expectAllHeld(simulator);
    EXPECT_EQ(logger->count(QStringLiteral("signal")), 0);
    EXPECT_EQ(simulator.count(u"connect"), 1);
}

INSTANTIATE_TEST_SUITE_P(Shipped, DialogueTest,
                         testing::Values(Scenario{"login", 2, 3}, Scenario{"login-password", 2, 3},
                                         Scenario{"enter-call", 1, 3}, Scenario{"enter-call-login", 1, 3},
                                         Scenario{"enter-call-login-one-line", 2, 3},
                                         Scenario{"enter-callsign", 1, 3}, Scenario{"glued-banner", 2, 3},
                                         Scenario{"capitals", 2, 3}, Scenario{"french", 2, 3},
                                         Scenario{"french-spaced", 2, 3}, Scenario{"veto", 4, 0},
                                         Scenario{"cut-lines", 2, 3}, Scenario{"bells", 1, 1},
                                         Scenario{"latin1", 1, 1}, Scenario{"windows-1251", 1, 1}),
                         [](const auto& scenario) {
                             std::string name = scenario.param.name;
                             std::replace(name.begin(), name.end(), '-', '_');
                             return name;
                         });

TEST_F(ScenarioTest, leavesANodeThatHalfCloses)
{
    RunningSimulator simulator({QStringLiteral("--once"), QStringLiteral("half-close")});
    startAt(simulator);
    expectAllHeld(simulator);
    EXPECT_TRUE(logs(QStringLiteral("closeTelnetConnection")));
    EXPECT_TRUE(program->isRunning());
}

TEST_F(ScenarioTest, leavesAFloodingNodeForGood)
{
    RunningSimulator simulator({QStringLiteral("--once"), QStringLiteral("flood")});
    startAt(simulator);
    expectAllHeld(simulator);
    EXPECT_TRUE(logs(QStringLiteral("NSStreamEventHasBytesAvailable: Spot Flood, Disconnecting")));
    end();
    EXPECT_EQ(home.settings().value(QStringLiteral("reconnect")), QStringLiteral("false"));
}

/// Scenarios of two sessions: the first ends by the node, the second one is let in.
class SecondSessionTest : public ScenarioTest, public testing::WithParamInterface<Scenario>
{
};

TEST_P(SecondSessionTest, isLetInAtTheNextStart)
{
    RunningSimulator simulator({QStringLiteral("--once"), QString::fromLatin1(GetParam().name)});
    startAt(simulator);
    ASSERT_TRUE(logs(QStringLiteral("closeTelnetConnection")));
    EXPECT_TRUE(program->isRunning());
    end();
    startAt(simulator);
    EXPECT_TRUE(passed(simulator, 2 * GetParam().checks)) << simulator.report().constData();
    const auto lastSent = [&] { return simulator.count(u"sent", u"connection", 2) >= GetParam().spots; };
    EXPECT_TRUE(waitUntil(lastSent)) << simulator.report().constData();
    end();
    expectAllHeld(simulator);
}

INSTANTIATE_TEST_SUITE_P(Shipped, SecondSessionTest,
                         testing::Values(Scenario{"reset", 1, 1}, Scenario{"wrong-password", 2, 3},
                                         Scenario{"reconnect", 1, 2}),
                         [](const auto& scenario) {
                             std::string name = scenario.param.name;
                             std::replace(name.begin(), name.end(), '-', '_');
                             return name;
                         });

} // namespace
} // namespace spotwell
