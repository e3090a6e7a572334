#include "tests/integration/ProgramTest.h"
#include "tests/integration/VirtualScreen.h"

#include <optional>

namespace spotwell
{
namespace
{

class DisplayEndTest : public ProgramTest
{
protected:
    std::optional<VirtualScreen> screen{std::in_place};
};

TEST_F(DisplayEndTest, savesAndSaysQuitWhenTheXServerGoes)
{
    // The toolkit exits from where it stands, so its libraries tidy nothing up.
    startConnected(
        {QStringLiteral("DISPLAY=") + screen->display(), QStringLiteral("ASAN_OPTIONS=detect_leaks=0")});
    ASSERT_TRUE(logs(QStringLiteral("NSStreamEventHasSpaceAvailable")));
    // What was never saved before.
    EXPECT_EQ(home.settings().count(), settingsFor(node.port()).count());
    screen.reset();
    EXPECT_TRUE(program->waitForEnd());
    EXPECT_TRUE(hears("quit\n"));
    EXPECT_TRUE(waitUntil([this] { return node.hasEnded(); }));
    EXPECT_EQ(countOfEntries(QStringLiteral("closeTelnetConnection")), 1);
    EXPECT_EQ(home.settings().count(), 11) << "all that there are";
    EXPECT_EQ(home.settings().value(QStringLiteral("callsign")), QStringLiteral("N0CALL"));
}

} // namespace
} // namespace spotwell
