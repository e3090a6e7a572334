// SPDX-FileCopyrightText: 2026 the spotwell developers
// SPDX-License-Identifier: MIT

#include "tests/integration/support/ProgramFixture.h"
#include "tests/integration/support/RunningSimulator.h"

#include <QFile>

#include <csignal>

namespace spotwell
{
namespace
{

using namespace std::chrono_literals;

class LoginTest : public ProgramFixture
{
protected:
    /// Waits until start-up is over, be there a connection or not.
    void startUp()
    {
        start();
        ASSERT_TRUE(waitUntil([this] {
            return !entries().filter(QStringLiteral("applicationDidFinishLaunching:v")).isEmpty();
        }));
    }
    /// Whether the program opened a connection at launch; a supervised reconnection announces itself.
    bool connectedAtLaunch()
    {
        end();
        for (const QString& entry : entries()) {
            if (entry.startsWith(QStringLiteral("Attempting Reconnect with")))
                return false;
            if (entry == QStringLiteral("openTelnetConnection"))
                return true;
        }
        return false;
    }
};

TEST_F(LoginTest, answersTheCallsignPromptASecondLater)
{
    startConnected();
    const Moment asked = say("login: ");
    const auto answered = hears("N0CALL\n");
    ASSERT_TRUE(answered);
    EXPECT_GE(*answered - asked, 1s);
    EXPECT_LT(*answered - asked, 1s + 1s * slowness);
    EXPECT_TRUE(logs(QStringLiteral("logging in")));
    EXPECT_TRUE(logs(QStringLiteral("DXClusterController:sendTelnet:[7]characters:N0CALL")));
}

TEST_F(LoginTest, answersThePasswordPromptTwoSecondsLater)
{
    startConnected();
    const Moment asked = say("password: ");
    const auto answered = hears("secret\n");
    ASSERT_TRUE(answered);
    EXPECT_GE(*answered - asked, 2s);
    EXPECT_LT(*answered - asked, 2s + 1s * slowness);
    EXPECT_TRUE(logs(QStringLiteral("DXClusterController:sendTelnet:[7]characters:secret")));
}

TEST_F(LoginTest, answersNoPasswordPromptWithoutAPassword)
{
    SettingsTexts settings = settingsFor(node.port());
    settings.remove(QStringLiteral("password"));
    home.writeSettings(settings);
    start();
    ASSERT_TRUE(node.accept());
    say("password: ");
    // Asked a whole answer's time later, so that the password's would have come first.
    say("\r\nlogin: ");
    ASSERT_TRUE(hears("N0CALL\n"));
    say("\r\nlogin: ");
    ASSERT_TRUE(hears("N0CALL\nN0CALL\n"));
    say("\r\nlogin: ");
    ASSERT_TRUE(hears("N0CALL\nN0CALL\nN0CALL\n"));
}

TEST_F(LoginTest, connectsAtLaunchWithReconnectHostAndCallsign)
{
    home.writeSettings(settingsFor(node.port()));
    startUp();
    EXPECT_TRUE(node.accept());
    EXPECT_TRUE(connectedAtLaunch());
}

TEST_F(LoginTest, doesNotConnectAtLaunchOnAFirstRun)
{
    startUp();
    EXPECT_FALSE(connectedAtLaunch());
}

TEST_F(LoginTest, doesNotConnectAtLaunchWithReconnectOff)
{
    SettingsTexts settings = settingsFor(node.port());
    settings[QStringLiteral("reconnect")] = QStringLiteral("false");
    home.writeSettings(settings);
    startUp();
    EXPECT_FALSE(connectedAtLaunch());
    EXPECT_FALSE(node.acceptNow());
}

TEST_F(LoginTest, doesNotConnectAtLaunchWithoutACallsign)
{
    SettingsTexts settings = settingsFor(node.port());
    settings[QStringLiteral("callsign")] = QString();
    home.writeSettings(settings);
    startUp();
    EXPECT_FALSE(connectedAtLaunch());
}

TEST_F(LoginTest, doesNotConnectAtLaunchWithoutAHost)
{
    SettingsTexts settings = settingsFor(node.port());
    settings.remove(QStringLiteral("dxcluster"));
    home.writeSettings(settings);
    startUp();
    EXPECT_FALSE(connectedAtLaunch());
}

TEST_F(LoginTest, triesThePortOfTelnetWithoutAPort)
{
    SettingsTexts settings = settingsFor(node.port());
    settings.remove(QStringLiteral("port"));
    home.writeSettings(settings);
    startUp();
    EXPECT_TRUE(waitUntil([this] {
        return !entries()
                    .filter(QStringLiteral("Node:127.0.0.1 Opened on Port:23 istream status:["))
                    .isEmpty();
    }));
    EXPECT_TRUE(connectedAtLaunch());
}

TEST_F(LoginTest, makesOneConnectionOnly)
{
    startConnected();
    say("Please enter your call:\r\n\r\nlogin: ");
    ASSERT_TRUE(hears("N0CALL\nN0CALL\n"));
    say("password: ");
    ASSERT_TRUE(hears("N0CALL\nN0CALL\nsecret\n"));
    end();
    ASSERT_TRUE(hears("N0CALL\nN0CALL\nsecret\nquit\n"));
    EXPECT_TRUE(node.hasEnded());
    EXPECT_FALSE(node.acceptNow());
}

TEST_F(LoginTest, worksTwiceAtOnce)
{
    const QString scenario = home.filePath(QStringLiteral("two.scenario"));
    QFile file(scenario);
    ASSERT_TRUE(file.open(QIODevice::WriteOnly));
    const QByteArray session = "session\nsend \"login: \"\nexpect \"N0CALL\\n\" after 0.9 within 60\n"
                               "expect \"quit\\n\" within 60\nexpect close within 60\nend\n";
    file.write(session + session);
    file.close();
    RunningSimulator simulator({QStringLiteral("--once"), scenario});
    home.writeSettings(settingsFor(simulator.port()));
    start();
    RunningProgram second(home, bus.address());
    EXPECT_TRUE(waitUntil([&] { return simulator.count(u"check", u"result", u"passed"_qs) == 2; }));
    end();
    EXPECT_TRUE(second.end(SIGTERM));
    EXPECT_EQ(simulator.waitForEnd(), 0) << simulator.report().constData();
    EXPECT_EQ(simulator.count(u"connect"), 2);
    for (const QByteArray& line : home.log().split('\n'))
        EXPECT_TRUE(line.isEmpty() || entryFront().match(QString::fromUtf8(line)).hasMatch())
            << line.constData();
}

} // namespace
} // namespace spotwell
