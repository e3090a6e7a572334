// SPDX-FileCopyrightText: 2026 the spotwell developers
// SPDX-License-Identifier: MIT

#include "tests/integration/support/UserFixture.h"

#include <csignal>

namespace spotwell
{
namespace
{

class QuitTest : public UserFixture
{
protected:
    /// Tells the active window to close, as a desktop does.
    void close() { user.press(QStringLiteral("alt+F4")); }
    void fillCallsign(const QString& text)
    {
        user.press({QStringLiteral("alt+s"), QStringLiteral("ctrl+a")});
        user.type(text);
    }
    /// Clicks on a button of the question.
    void answer(const UserInput::Window& asked, const QString& button)
    {
        user.click(user.place(button).center() + asked.area.topLeft());
    }
    /// The node says a spot line and the logger gets it.
    void seeDelivered(BusPeer& logger, int number)
    {
        say(spotLine(number) + "\r\n");
        EXPECT_EQ(next(logger, QStringLiteral("signal")), notificationOf(spotLine(number)));
    }
    /// The program has ended by itself, in order, with the typed callsign saved and the node told.
    void expectEnd(const QString& callsign, bool isDark = false)
    {
        EXPECT_EQ(program->waitForEnd(), 0);
        EXPECT_TRUE(hears("quit\n"));
        EXPECT_TRUE(waitUntil([this] { return node.hasEnded(); }));
        SettingsTexts settings = settingsFor(node.port());
        for (const char* key : {"wsprnet", "dxsummit", "pota", "skimmers", "dxsexclusive", "dark"})
            settings.insert(QString::fromLatin1(key), QStringLiteral("false"));
        settings[QStringLiteral("callsign")] = callsign;
        if (isDark)
            settings[QStringLiteral("dark")] = QStringLiteral("true");
        EXPECT_EQ(home.settings(), settings);
    }
};

TEST_F(QuitTest, aClosedWindowAsksAndStaysOnContinue)
{
    const auto logger = makeLogger(QStringLiteral("6.45"));
    openConnected();
    fillCallsign(QStringLiteral("N1CALL"));
    seeDelivered(*logger, 1);
    ASSERT_TRUE(shows(2));
    const QImage before = console().text;

    close();
    const UserInput::Window asked = question();
    keepPicture(QStringLiteral("question"));
    seeDelivered(*logger, 2);
    EXPECT_TRUE(shows(3)) << "while it asks";
    // Told again to close, the window asks no second time.
    user.close(window.area.topLeft() + QPoint(2, 2));
    seeDelivered(*logger, 3);
    EXPECT_TRUE(shows(4));
    EXPECT_EQ(question().id, asked.id);
    user.press(QStringLiteral("Escape"));
    EXPECT_TRUE(isAlone());
    seeDelivered(*logger, 4);
    EXPECT_TRUE(shows(5));
    EXPECT_EQ(console().text.copy(before.rect()), before);
    keepPicture(QStringLiteral("continued"));

    close();
    answer(question(), QStringLiteral("Continue"));
    EXPECT_TRUE(isAlone());
    seeDelivered(*logger, 5);
    EXPECT_TRUE(shows(6));
    EXPECT_EQ(node.heard(), QByteArray());
    EXPECT_EQ(home.settings(), settingsFor(node.port())) << "saved by Continue";

    close();
    (void)question();
    user.press(QStringLiteral("Return"));
    expectEnd(QStringLiteral("N1CALL"));
}

TEST_F(QuitTest, aClickOnQuitEndsADarkWindowToo)
{
    openConnected();
    click(QStringLiteral("darkCheckBox"));
    fillCallsign(QStringLiteral("N2CALL"));
    close();
    const UserInput::Window asked = question();
    keepPicture(QStringLiteral("question-dark"));
    answer(asked, QStringLiteral("Quit"));
    expectEnd(QStringLiteral("N2CALL"), true);
}

TEST_F(QuitTest, theQuitCommandDoesNotAsk)
{
    openConnected();
    fillCallsign(QStringLiteral("N3CALL"));
    user.press(QStringLiteral("ctrl+q"));
    expectEnd(QStringLiteral("N3CALL"));
}

TEST_F(QuitTest, aSignalEndsTheQuestion)
{
    openConnected();
    fillCallsign(QStringLiteral("N4CALL"));
    close();
    (void)question();
    end();
    expectEnd(QStringLiteral("N4CALL"));
}

TEST_F(QuitTest, continueBringsTheWindowBackToTheFront)
{
    open();
    close();
    const UserInput::Window asked = question();

    // Another program comes and takes the place, dark to be told from ours.
    Home otherHome;
    otherHome.writeSettings({{QStringLiteral("dark"), QStringLiteral("true")}});
    RunningProgram other(otherHome, bus.address(), variables());
    ASSERT_TRUE(waitUntil([this] { return user.windows().size() == 3; }));
    for (const UserInput::Window& candidate : user.windows()) {
        if (candidate.id != asked.id && candidate.id != window.id) {
            ASSERT_TRUE(waitUntil([&] { return user.activeWindow() == candidate.id; }));
            user.move(candidate, window.area.topLeft());
        }
    }
    const auto isCovered = [this] {
        return luminance(screen.picture().pixel(window.area.topLeft() + QPoint(2, 2))) < 0.5;
    };
    ASSERT_TRUE(waitUntil(isCovered));
    user.focus(asked);
    ASSERT_TRUE(waitUntil([&] { return user.activeWindow() == asked.id; }));
    keepPicture(QStringLiteral("covered"));
    ASSERT_TRUE(isCovered());

    user.press(QStringLiteral("Escape"));
    EXPECT_TRUE(waitUntil([&] { return user.windows().size() == 2; }));
    EXPECT_TRUE(waitUntil([&] { return !isCovered(); }));
    EXPECT_TRUE(waitUntil([&] { return user.activeWindow() == window.id; }));
    keepPicture(QStringLiteral("back-in-front"));
    EXPECT_TRUE(other.end(SIGTERM));
}

} // namespace
} // namespace spotwell
