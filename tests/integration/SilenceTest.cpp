#include "tests/integration/ProgramTest.h"
#include "tests/integration/RunningSimulator.h"

namespace spotwell
{
namespace
{

class SilenceTest : public ProgramTest
{
};

// Half a minute of real time: what the clock of the other tests says has to be what the program's timers do.
TEST_F(SilenceTest, aNodeThatSaysNothingIsGivenUpAfterHalfAMinute)
{
    RunningSimulator simulator({QStringLiteral("--once"), QStringLiteral("silence")});
    home.writeSettings(settingsFor(simulator.port()));
    start();
    EXPECT_EQ(simulator.waitForEnd(std::chrono::seconds{60}), 0) << simulator.report().constData();
    EXPECT_EQ(simulator.count(u"check", u"result", QStringLiteral("failed")), 0);
    const QString message = QStringLiteral("Waited 30 seconds for data, giving up.");
    EXPECT_TRUE(logs(QStringLiteral("DXClusterController:loginTimeoutTimer:") + message));
    EXPECT_TRUE(program->isRunning());
}

} // namespace
} // namespace spotwell
