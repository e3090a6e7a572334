// SPDX-FileCopyrightText: 2026 the spotwell developers
// SPDX-License-Identifier: MIT

#include "tests/tools/bridge/program/BridgeFixture.h"
#include "tests/tools/bridge/program/Manager.h"
#include "tests/tools/bridge/program/TelnetClient.h"

#include <QFile>
#include <QTemporaryDir>

#include <csignal>

namespace spotwell::bridge
{

namespace
{

using namespace Qt::Literals::StringLiterals;
using namespace std::chrono_literals;

/// All that a command prints, its complaints included; it must end with 0.
QString outputOf(const std::vector<std::string>& command)
{
    ChildProcess process(command, {"LC_ALL=C.UTF-8"}, true);
    QString output;
    while (const auto line = process.readLine())
        output += QString::fromStdString(*line) + u'\n';
    EXPECT_EQ(process.wait(), 0) << output.toStdString();
    return output;
}

QString contentsOf(const QString& path)
{
    QFile file(path);
    EXPECT_TRUE(file.open(QIODevice::ReadOnly)) << path.toStdString();
    return QString::fromUtf8(file.readAll());
}

class ServiceTest : public BridgeFixture
{
protected:
    /// Starts the bridge under a service manager.
    void startUnder(const Manager& manager)
    {
        bridge.emplace(command({"--telnet", "127.0.0.1:0"}),
                       std::vector{bus.environment(), "NOTIFY_SOCKET=" + manager.address()}, true);
    }
};

TEST_F(ServiceTest, TheManagerIsToldHowItIs)
{
    Manager manager;
    startUnder(manager);
    EXPECT_EQ(manager.next(), "STATUS=Receiving spots");
    EXPECT_EQ(manager.next(), "READY=1");
    const std::string listening = nextLine();
    // Ready means that clients can come.
    TelnetClient client(static_cast<std::uint16_t>(std::stoi(listening.substr(listening.rfind(':') + 1))));
    EXPECT_TRUE(client.logIn());
    bus.kill();
    EXPECT_EQ(manager.next(), "STATUS=Waiting for the session bus");
    bus.start();
    EXPECT_EQ(manager.next(), "STATUS=Receiving spots");
    bridge->signal(SIGTERM);
    EXPECT_EQ(manager.next(), "STOPPING=1\nSTATUS=Ending");
    EXPECT_EQ(bridge->wait(), 0);
    EXPECT_EQ(manager.next(0), "");
}

TEST_F(ServiceTest, ItIsReadyWhileAnotherHasTheName)
{
    ChildProcess first(command({}), {bus.environment()});
    ASSERT_TRUE(first.readLine());
    Manager manager;
    startUnder(manager);
    EXPECT_EQ(manager.next(), "STATUS=Receiving spots; another logger has the bus name");
    EXPECT_EQ(manager.next(), "READY=1");
}

TEST_F(ServiceTest, ItIsNotReadyWhileTheBusHangs)
{
    Manager manager;
    bus.stop();
    startUnder(manager);
    EXPECT_EQ(nextLine().rfind("spotwell-bridge: listening on ", 0), 0U);
    EXPECT_EQ(nextLine(), "spotwell-bridge: the session bus does not answer yet");
    EXPECT_EQ(manager.next(0), "");
    bus.resume();
    EXPECT_EQ(manager.next(), "STATUS=Receiving spots");
    EXPECT_EQ(manager.next(), "READY=1");
}

TEST_F(ServiceTest, AManagerThatDoesNotReadFreezesNothing)
{
    Manager manager;
    const int count = manager.fill();
    startUnder(manager);
    const std::string listening = nextLine();
    EXPECT_EQ(nextLine(), "spotwell-bridge: receiving spots");
    TelnetClient client(static_cast<std::uint16_t>(std::stoi(listening.substr(listening.rfind(':') + 1))));
    EXPECT_TRUE(client.logIn());
    for (int i = 0; i < count; ++i)
        EXPECT_EQ(manager.next(), "x");
    EXPECT_EQ(manager.next(), "READY=1") << "told again";
    manager.fill();
    const auto begin = std::chrono::steady_clock::now();
    bridge->signal(SIGTERM);
    EXPECT_EQ(bridge->wait(), 0);
    EXPECT_LT(std::chrono::steady_clock::now() - begin, 20s);
}

TEST_F(ServiceTest, WhatIsInstalledRuns)
{
    QTemporaryDir folder;
    const std::string prefix = folder.path().toStdString();
    outputOf({"cmake", "--install", BUILD_DIRECTORY, "--component", "bridge", "--prefix", prefix});
    EXPECT_EQ(outputOf({prefix + "/bin/spotwell-bridge", "--version"}),
              u"spotwell-bridge " SPOTWELL_VERSION "\n"_s);
    EXPECT_TRUE(QFile::exists(folder.filePath(u"share/man/man1/spotwell-bridge.1"_s)));

    // The unit starts the program where it belongs; here it is elsewhere.
    QString unit = contentsOf(folder.filePath(u"lib/systemd/user/spotwell-bridge.service"_s));
    const QString place = QStringLiteral(INSTALLED_BIN "/spotwell-bridge");
    EXPECT_TRUE(unit.contains(u"\nExecStart=%1 --telnet\n"_s.arg(place)));
    EXPECT_TRUE(unit.contains(u"\nType=notify\n"_s));
    unit.replace(place, folder.filePath(u"bin/spotwell-bridge"_s));
    QFile checked(folder.filePath(u"spotwell-bridge.service"_s));
    ASSERT_TRUE(checked.open(QIODevice::WriteOnly));
    checked.write(unit.toUtf8());
    checked.close();
    // What is wrong is said, but is no failure.
    EXPECT_EQ(outputOf({"env", "XDG_RUNTIME_DIR=" + prefix, "systemd-analyze", "--user", "--man=no", "verify",
                        checked.fileName().toStdString()}),
              QString());
}

TEST_F(ServiceTest, NeitherWindowsNorIcuAreLoaded)
{
    const QString sections = outputOf({"readelf", "-d", SPOTWELL_BRIDGE});
    EXPECT_TRUE(sections.contains(u"Shared library: [libQt6Core.so.6]"_s));
    for (const QString& library : {u"[libQt6Gui"_s, u"[libQt6Widgets"_s, u"[libQt6DBus"_s, u"[libicu"_s})
        EXPECT_FALSE(sections.contains(library)) << library.toStdString();
}

} // namespace

} // namespace spotwell::bridge
