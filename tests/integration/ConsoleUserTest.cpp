// SPDX-FileCopyrightText: 2026 the spotwell developers
// SPDX-License-Identifier: MIT

#include "tests/integration/support/ScreenReader.h"
#include "tests/integration/support/UserFixture.h"

namespace spotwell
{
namespace
{

QString shownLine(int number)
{
    return QStringLiteral("teln ") + QString::fromUtf8(spotLine(number));
}

/// What a user does with the console's text, and with the fields above it.
class ConsoleUserTest : public UserFixture
{
protected:
    /// Opens the program; the node has said so many lines, and they are shown.
    void openWithLines(int count)
    {
        openConnected();
        for (int number = 1; number <= count; ++number)
            say(spotLine(number) + "\r\n");
        ASSERT_TRUE(shows(1 + count));
    }
    /// Selects the spot of this number with the mouse. Nothing else may be selected.
    void selectWithMouse(int number)
    {
        const ConsolePicture seen = console();
        // An empty line and one that says that the connection is opened come first.
        const int lines = 1 + seen.lines;
        const QRect place = placeOf(QStringLiteral("statusLine"));
        const int y = place.top() + seen.text.height() * (2 * (number + 1) + 1) / (2 * lines);
        // Its end, where the caret never is: it looks otherwise once it is selected.
        const QRect end(place.center().x(), y, place.width() / 4, 1);
        const QImage before = screen.picture().copy(end);
        user.drag({place.left() + 4, y}, {place.left() + place.width() * 19 / 20, y});
        ASSERT_TRUE(waitUntil([&] { return screen.picture().copy(end) != before; })) << "nothing is selected";
    }
    /// Opens the console's menu with its keys and presses others there, which close it.
    void useMenu(const QString& keys, const QStringList& others)
    {
        user.press({QStringLiteral("alt+l"), keys});
        chooseInMenu(others);
    }
    /// Presses keys in the menu that opens, and waits until it is closed. Before the server has given it the
    /// keyboard, and after, a key could go to either window.
    void chooseInMenu(const QStringList& keys)
    {
        ASSERT_TRUE(waitUntil([this] { return user.windows().size() == 2; })) << "no menu";
        user.press(keys);
        ASSERT_TRUE(isAlone());
    }
    /// What can be pasted now: the callsign, once it is saved.
    [[nodiscard]] QString clipboard()
    {
        user.press({QStringLiteral("alt+s"), QStringLiteral("ctrl+a"), QStringLiteral("Delete"),
                    QStringLiteral("ctrl+v"), QStringLiteral("alt+t")});
        isOn_ = !isOn_;
        const QString expected = isOn_ ? QStringLiteral("true") : QStringLiteral("false");
        EXPECT_TRUE(waitUntil([&] { return home.settings().value(QStringLiteral("wsprnet")) == expected; }));
        return home.settings().value(QStringLiteral("callsign"));
    }

private:
    bool isOn_ = false;
};

TEST_F(ConsoleUserTest, theMouseSelectsAndTheMenuCopies)
{
    openWithLines(9);
    selectWithMouse(3);
    const QRect place = placeOf(QStringLiteral("statusLine"));
    user.click(place.center(), 3);
    chooseInMenu({QStringLiteral("c")});
    EXPECT_EQ(clipboard(), shownLine(3));

    selectWithMouse(5);
    user.press(QStringLiteral("ctrl+c"));
    EXPECT_EQ(clipboard(), shownLine(5));
}

TEST_F(ConsoleUserTest, theKeyboardSelectsAndCopies)
{
    openWithLines(3);
    const QStringList toSecondSpot{QStringLiteral("alt+l"),    QStringLiteral("ctrl+Home"),
                                   QStringLiteral("Down"),     QStringLiteral("Down"),
                                   QStringLiteral("Down"),     QStringLiteral("Home"),
                                   QStringLiteral("shift+End")};
    user.press(toSecondSpot + QStringList(QStringLiteral("ctrl+c")));
    EXPECT_EQ(clipboard(), shownLine(2));
    user.press(QStringList{QStringLiteral("alt+s"), QStringLiteral("ctrl+a")});
    user.type(QStringLiteral("N0CALL"));
    user.press(QStringList{QStringLiteral("ctrl+a"), QStringLiteral("ctrl+c")});
    ASSERT_EQ(clipboard(), QStringLiteral("N0CALL"));

    for (const QString& menu : {QStringLiteral("Menu"), QStringLiteral("shift+F10")}) {
        user.press(toSecondSpot);
        useMenu(menu, {QStringLiteral("c")});
        EXPECT_EQ(clipboard(), shownLine(2)) << menu.toStdString();
        user.press(QStringList{QStringLiteral("alt+l"), QStringLiteral("ctrl+End")});
        // Of nothing there is no copy.
        useMenu(menu, {QStringLiteral("c"), QStringLiteral("Escape")});
        EXPECT_EQ(clipboard(), shownLine(2)) << menu.toStdString();
        // The only other entry.
        useMenu(menu, {QStringLiteral("Up"), QStringLiteral("Return")});
        user.press(QStringLiteral("ctrl+c"));
        const QString all = clipboard();
        // As the settings file has it.
        EXPECT_TRUE(all.startsWith(QStringLiteral("\\xaopenTelnetConnection\\xateln "))) << all.toStdString();
        EXPECT_TRUE(all.endsWith(shownLine(3))) << all.toStdString();
        EXPECT_EQ(clipboard(), all);
    }
}

TEST_F(ConsoleUserTest, aSelectionSurvivesNewLinesWhichAreFollowed)
{
    openWithLines(9);
    selectWithMouse(3);
    constexpr int last = 60;
    for (int number = 10; number <= last; ++number)
        say(spotLine(number) + "\r\n");
    ScreenReader reader(bus);
    ASSERT_TRUE(waitUntil([&] { return reader.console().value(last) == shownLine(last); }));
    // What was selected has gone out of sight.
    EXPECT_TRUE(waitUntil([&] { return console().lines > 15; }));
    user.press(QStringLiteral("ctrl+c"));
    EXPECT_EQ(clipboard(), shownLine(3));
    // The menu comes where it can be seen, though the caret cannot.
    useMenu(QStringLiteral("shift+F10"), {QStringLiteral("Up"), QStringLiteral("Return")});
    user.press(QStringLiteral("ctrl+c"));
    EXPECT_TRUE(clipboard().endsWith(shownLine(last)));
}

TEST_F(ConsoleUserTest, theEnterKeyInAFieldDoesNothing)
{
    home.writeSettings({{QStringLiteral("dxcluster"), QStringLiteral("127.0.0.1")},
                        {QStringLiteral("port"), QString::number(node.port())},
                        {QStringLiteral("callsign"), QStringLiteral("N0CALL")}});
    const SettingsTexts before = home.settings();
    open();
    for (const QString& field :
         {QStringLiteral("alt+u"), QStringLiteral("alt+o"), QStringLiteral("alt+s"), QStringLiteral("alt+w")})
        user.press({field, QStringLiteral("Return"), QStringLiteral("KP_Enter")});
    // The first thing that a key does.
    user.press(QStringLiteral("alt+n"));
    ASSERT_TRUE(node.accept());
    ASSERT_TRUE(logs(QStringLiteral("NSStreamEventHasSpaceAvailable")));
    EXPECT_EQ(countOfEntries(QStringLiteral("connectedPressed:[1]")), 1);
    EXPECT_EQ(countOfEntries(QStringLiteral("connectedPressed:[0]")), 0);
    EXPECT_EQ(countOfEntries(QStringLiteral("openTelnetConnection")), 1);
    EXPECT_EQ(home.settings(), before);
}

} // namespace
} // namespace spotwell
