// SPDX-FileCopyrightText: 2026 the spotwell developers
// SPDX-License-Identifier: MIT

#include "tests/integration/support/ProgramFixture.h"
#include "tests/integration/support/UserInput.h"
#include "tests/integration/support/VirtualScreen.h"

#include <QFile>

#include <sys/un.h>

namespace spotwell
{
namespace
{

using namespace Qt::StringLiterals;

/// The shipped program with as much of the session bus as the Flatpak manifest asks for, behind the proxy
/// that Flatpak puts there.
class SandboxTest : public ProgramFixture
{
protected:
    void SetUp() override
    {
        std::vector<std::string> command{"xdg-dbus-proxy", bus.address(), socket(), "--filter",
                                         // What every Flatpak has.
                                         "--own=com.tarnbrooksoftware.spotwell",
                                         "--own=com.tarnbrooksoftware.spotwell.*",
                                         "--call=org.freedesktop.portal.*=*",
                                         "--broadcast=org.freedesktop.portal.*=@/org/freedesktop/portal/*"};
        const std::size_t usual = command.size();
        const QString talk = u"- --talk-name="_s;
        for (const QString& line :
             QString::fromUtf8(contentOf(QStringLiteral(FLATPAK_MANIFEST))).split(u'\n')) {
            if (line.trimmed().startsWith(talk))
                command.push_back("--talk=" + line.trimmed().mid(talk.size()).toStdString());
        }
        ASSERT_EQ(command.size(), usual + 2) << "loggers and the file manager";
        proxy_.emplace(command);
        ASSERT_TRUE(waitUntil([this] { return canBeReached(); }));
    }
    void startInside()
    {
        startConnected({u"DISPLAY="_s + screen.display(), u"FLATPAK_ID=com.tarnbrooksoftware.spotwell"_s,
                        u"DBUS_SESSION_BUS_ADDRESS=unix:path="_s + QString::fromStdString(socket())});
    }

    VirtualScreen screen;
    UserInput user{screen, home.environment() + QStringList(QString::fromStdString(bus.environment()))};

private:
    std::string socket() const { return home.filePath(u"runtime/inside"_s).toStdString(); }
    bool canBeReached() const
    {
        sockaddr_un address{};
        address.sun_family = AF_UNIX;
        (void)socket().copy(address.sun_path, sizeof address.sun_path - 1);
        const int descriptor = ::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0);
        const bool reached =
            ::connect(descriptor, reinterpret_cast<const sockaddr*>(&address), sizeof address) == 0;
        ::close(descriptor);
        return reached;
    }

    std::optional<ChildProcess> proxy_;
};

TEST_F(SandboxTest, theBusGivesAllThatIsNeeded)
{
    std::unique_ptr<BusPeer> logger = makeLogger(u"6.50"_s);
    startInside();
    ASSERT_TRUE(logs(u"appIsRunning:Logwright Version 6.50 is running"_s));
    say(spotLine(1) + "\r\n");
    EXPECT_EQ(next(*logger, u"signal"_s), notificationOf(spotLine(1)));

    logger->kill();
    say(spotLine(2) + "\r\n");
    logger = makeLogger(u"6.44"_s);
    say(spotLine(3) + "\r\n");
    EXPECT_EQ(next(*logger, u"call"_s).value(2), u"processSpot"_s);

    BusPeer fileManager(bus);
    fileManager.command({u"own"_s, u"org.freedesktop.FileManager1"_s});
    ASSERT_TRUE(waitUntil([this] {
        const auto windows = user.windows();
        return windows.size() == 1 && user.activeWindow() == windows.first().id;
    }));
    user.press(u"alt+b"_s);
    EXPECT_TRUE(next(fileManager, u"call"_s).value(4).startsWith(u"file://"_s));
    end();
}

} // namespace
} // namespace spotwell
