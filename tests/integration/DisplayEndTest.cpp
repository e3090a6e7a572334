// SPDX-FileCopyrightText: 2026 the spotwell developers
// SPDX-License-Identifier: MIT

#include "tests/integration/support/ProgramFixture.h"
#include "tests/integration/support/VirtualScreen.h"

#include <optional>

namespace spotwell
{
namespace
{

class DisplayEndTest : public ProgramFixture
{
protected:
    std::optional<VirtualScreen> screen{std::in_place};
};

TEST_F(DisplayEndTest, savesAndSaysQuitWhenTheXServerGoes)
{
    // The toolkit exits from where it stands, so its libraries tidy nothing up.
    const auto logger = makeLogger(QStringLiteral("6.45"));
    startConnected(
        {QStringLiteral("DISPLAY=") + screen->display(), QStringLiteral("ASAN_OPTIONS=detect_leaks=0")});
    ASSERT_TRUE(logs(QStringLiteral("NSStreamEventHasSpaceAvailable")));
    say(spotLine(1) + "\r\n");
    EXPECT_EQ(next(*logger, QStringLiteral("signal")), notificationOf(spotLine(1)));
    // What was never saved before.
    EXPECT_EQ(home.settings().count(), settingsFor(node.port()).count());
    screen.reset();
    EXPECT_TRUE(program->waitForEnd());
    EXPECT_TRUE(hears("quit\n"));
    EXPECT_TRUE(waitUntil([this] { return node.hasEnded(); }));
    // The event thread sees it in its own words, or Xlib in the middle of a request, which adds two lines.
    EXPECT_EQ(
        countOfEntries(QStringLiteral("Qt:The X11 connection broke (error 1). Did the X11 server die?")) +
            countOfEntries(QStringLiteral("Qt:The X11 connection broke: I/O error (code 1)")),
        1);
    EXPECT_EQ(entries().mid(entries().size() - 3),
              QStringList({QStringLiteral("DXClusterController:sendTelnet:[5]characters:quit"),
                           QStringLiteral("closeTelnetConnection"), QString()}));
    EXPECT_EQ(countOfEntries(QStringLiteral("closeTelnetConnection")), 1);
    EXPECT_EQ(home.settings().count(), 11) << "all that there are";
    EXPECT_EQ(home.settings().value(QStringLiteral("callsign")), QStringLiteral("N0CALL"));
}

TEST_F(DisplayEndTest, endsInTimeWhenTheXServerHangs)
{
    startConnected({QStringLiteral("DISPLAY=") + screen->display()});
    ASSERT_TRUE(logs(QStringLiteral("NSStreamEventHasSpaceAvailable")));
    screen->stop();
    // Painting holds the main thread, which reads no more lines then.
    const auto reads = [this](int line) {
        say(spotLine(line) + "\r\n");
        return waitUntil([&] { return countOfEntries(QStringLiteral("Logwright is not running")) >= line; },
                         std::chrono::seconds{10});
    };
    int line = 1;
    while (line < 100 && reads(line))
        ++line;
    ASSERT_LT(line, 100);
    program->signal(SIGTERM);
    EXPECT_FALSE(program->waitForEnd()) << "a signal ends it";
    EXPECT_FALSE(program->isRunning());
    EXPECT_EQ(home.settings(), settingsFor(node.port()));
    screen->resume();
}

} // namespace
} // namespace spotwell
