// SPDX-FileCopyrightText: 2026 the spotwell developers
// SPDX-License-Identifier: MIT

#include "tests/integration/support/ProgramFixture.h"

#include <csignal>

namespace spotwell
{
namespace
{

class EndTest : public ProgramFixture
{
protected:
    /// What the program has to save.
    SettingsTexts allSettings()
    {
        SettingsTexts settings = settingsFor(node.port());
        for (const char* key : {"wsprnet", "dxsummit", "pota", "skimmers", "dxsexclusive", "dark"})
            settings.insert(QString::fromLatin1(key), QStringLiteral("false"));
        return settings;
    }
};

class SignalTest : public EndTest, public testing::WithParamInterface<int>
{
};

TEST_P(SignalTest, savesSaysQuitAndEnds)
{
    startConnected();
    endAtOnce(GetParam());
    EXPECT_TRUE(hears("quit\n"));
    EXPECT_TRUE(node.hasEnded());
    EXPECT_EQ(home.settings(), allSettings());
    EXPECT_EQ(countOfEntries(QStringLiteral("closeTelnetConnection")), 1);
}

INSTANTIATE_TEST_SUITE_P(Termination, SignalTest, testing::Values(SIGTERM, SIGINT, SIGHUP),
                         [](const auto& signal) { return "signal" + std::to_string(signal.param); });

TEST_F(EndTest, savesTheTextsOfAFirstRunAsEmpty)
{
    start();
    ASSERT_TRUE(waitUntil([this] { return home.log().contains("applicationDidFinishLaunching:v"); }));
    endAtOnce();
    SettingsTexts settings = allSettings();
    for (const char* key : {"dxcluster", "port", "callsign", "password"})
        settings[QString::fromLatin1(key)] = QString();
    settings[QStringLiteral("reconnect")] = QStringLiteral("false");
    EXPECT_EQ(home.settings(), settings);
}

TEST_F(EndTest, keepsTheChoicesThatWereOn)
{
    SettingsTexts settings = allSettings();
    for (const char* key : {"skimmers", "dxsexclusive", "dark"})
        settings[QString::fromLatin1(key)] = QStringLiteral("true");
    home.writeSettings(settings);
    start();
    ASSERT_TRUE(node.accept());
    endAtOnce();
    EXPECT_EQ(home.settings(), settings);
}

TEST_F(EndTest, doesNotWaitForAScript)
{
    const auto logger = makeLogger(QStringLiteral("6.44"));
    logger->command({QStringLiteral("hold")});
    startConnected();
    say(spotLine(1) + "\n" + spotLine(2) + "\n" + spotLine(3) + "\n");
    ASSERT_FALSE(next(*logger, QStringLiteral("call")).isEmpty());
    endAtOnce();
    EXPECT_TRUE(hears("quit\n"));
    EXPECT_EQ(home.settings(), allSettings());
}

TEST_F(EndTest, doesNotWaitForAHungBus)
{
    const auto logger = makeLogger(QStringLiteral("6.45"));
    startConnected();
    say(spotLine(1) + "\n");
    ASSERT_EQ(next(*logger, QStringLiteral("signal")), notificationOf(spotLine(1)));
    bus.stop();
    say(spotLine(2) + "\n" + spotLine(3) + "\n");
    endAtOnce();
    EXPECT_TRUE(hears("quit\n"));
    EXPECT_EQ(home.settings(), allSettings());
}

TEST_F(EndTest, doesNotWaitForANameServer)
{
    SettingsTexts settings = allSettings();
    settings[QStringLiteral("dxcluster")] = QStringLiteral("node.invalid");
    home.writeSettings(settings);
    start({QStringLiteral("LD_PRELOAD=" SILENT_RESOLVER),
           QStringLiteral("ASAN_OPTIONS=verify_asan_link_order=0")});
    ASSERT_TRUE(waitUntil([this] { return home.log().contains("Node:node.invalid Opened on Port:"); }));
    endAtOnce();
    EXPECT_EQ(home.settings(), settings);
}

TEST_F(EndTest, doesNotWaitForANodeThatDoesNotRead)
{
    startConnected();
    QByteArray talk;
    for (int number = 0; number < 100; ++number)
        talk += "login: " + QByteArray::number(number) + "\r\n";
    say(talk);
    ASSERT_TRUE(logs(QStringLiteral("logging in"), 100));
    endAtOnce();
    EXPECT_EQ(home.settings(), allSettings());
}

TEST_F(EndTest, doesNotWaitForANodeThatGoesOnTalking)
{
    startConnected();
    QByteArray talk;
    for (int number = 0; number < 200; ++number)
        talk += spotLine(number) + "\r\n";
    say(talk);
    program->signal(SIGTERM);
    node.send(talk);
    EXPECT_EQ(program->waitForEnd(), 0);
    EXPECT_EQ(home.settings(), allSettings());
}

} // namespace
} // namespace spotwell
