// SPDX-FileCopyrightText: 2026 the spotwell developers
// SPDX-License-Identifier: MIT

#include "tests/integration/support/ProgramFixture.h"

#include <QFile>
#include <QFileInfo>
#include <QTemporaryDir>

namespace spotwell
{
namespace
{

using namespace Qt::StringLiterals;

/// The program where the desktop is a Wayland compositor that nobody sees.
class WaylandTest : public ProgramFixture
{
protected:
    WaylandTest()
    {
        compositor.emplace(std::vector<std::string>{"weston", "--backend=headless-backend.so",
                                                    "--shell=kiosk-shell.so", "--no-config",
                                                    "--socket=screen"},
                           std::vector<std::string>{"XDG_RUNTIME_DIR=" + directory_.path().toStdString()});
    }
    /// Starts the program there, connected, once the compositor takes connections.
    void startThere(const QString& more = u"LC_ALL=C.UTF-8"_s)
    {
        const QString socket = directory_.filePath(u"screen"_s);
        ASSERT_TRUE(waitUntil([&] { return QFile::exists(socket); })) << "no compositor";
        startConnected({u"QT_QPA_PLATFORM=wayland"_s, u"WAYLAND_DISPLAY="_s + socket, u"DISPLAY="_s,
                        // The libraries between keep what they made of the compositor's answers.
                        u"ASAN_OPTIONS=detect_leaks=0"_s, more});
    }

    std::optional<ChildProcess> compositor;

private:
    const QTemporaryDir directory_;
};

TEST_F(WaylandTest, theWindowIsKnownByTheDesktopEntrysName)
{
    startThere(u"WAYLAND_DEBUG=1"_s);
    const QString id = QFileInfo(QStringLiteral(DESKTOP_ENTRY)).completeBaseName();
    const QByteArray told = "set_app_id(\"" + id.toUtf8() + "\")";
    // What the library tells of itself goes where the log goes.
    EXPECT_TRUE(waitUntil([&] { return home.log().contains(told); }));
    end();
}

TEST_F(WaylandTest, savesWhenTheCompositorGoes)
{
    startThere();
    // What was never saved before.
    EXPECT_EQ(home.settings().count(), settingsFor(node.port()).count());
    compositor->signal(SIGKILL);
    EXPECT_TRUE(program->waitForEnd()) << "a signal ends it";
    // The main thread may say it, too.
    EXPECT_GE(countOfEntries(u"Qt:The Wayland connection broke. Did the Wayland compositor die?"_s), 1);
    EXPECT_TRUE(hears("quit\n"));
    EXPECT_TRUE(waitUntil([this] { return node.hasEnded(); }));
    EXPECT_EQ(home.settings().count(), 11) << "all that there are";
}

TEST_F(WaylandTest, goesOnAndEndsInOrderWhileTheCompositorHangs)
{
    startThere();
    compositor->signal(SIGSTOP);
    for (int line = 1; line <= 100; ++line)
        say(spotLine(line) + "\r\n");
    EXPECT_TRUE(logs(QStringLiteral("Logwright is not running"), 100));
    end();
    EXPECT_TRUE(hears("quit\n"));
    EXPECT_EQ(home.settings().count(), 11) << "all that there are";
}

} // namespace
} // namespace spotwell
