// SPDX-FileCopyrightText: 2026 the spotwell developers
// SPDX-License-Identifier: MIT

#include "tests/integration/support/ScreenReader.h"
#include "tests/integration/support/UserFixture.h"

#include <algorithm>

namespace spotwell
{
namespace
{

/// What begins the events' words.
const QString focused = QStringLiteral("StateChanged focused 1 ");
const QString shown = QStringLiteral("StateChanged showing 1 ");

class AccessibilityTest : public UserFixture
{
protected:
    /// Opens the program, which knows of the screen reader when this returns.
    void openToReader()
    {
        open();
        reader.emplace(bus, ScreenReader::Hears::events);
        ASSERT_TRUE(
            waitUntil([this] { return reader->isKnownToHear() && reader->isOn(toggle).has_value(); }));
    }
    [[nodiscard]] bool tells(const QString& event)
    {
        return waitUntil([&] { return reader->events().contains(event); });
    }
    /// What was told with these words before it.
    [[nodiscard]] QStringList heard(const QString& words)
    {
        QStringList result;
        for (const QString& event : reader->events()) {
            if (event.startsWith(words))
                result.append(event.mid(words.size()));
        }
        return result;
    }
    [[nodiscard]] AccessibleControl control(const QString& name)
    {
        const QList<AccessibleControl> all = reader->controls();
        const auto found = std::find_if(all.begin(), all.end(),
                                        [&](const AccessibleControl& each) { return each.name == name; });
        EXPECT_NE(found, all.end()) << name.toStdString();
        return found == all.end() ? AccessibleControl() : *found;
    }

    const QString toggle = QStringLiteral("Connection to the DX cluster");
    std::optional<ScreenReader> reader;
};

TEST_F(AccessibilityTest, eachControlTellsWhatItIsAndWhatCanBeDone)
{
    openToReader();
    QStringList told;
    for (const AccessibleControl& each : reader->controls()) {
        EXPECT_TRUE(has(each.states, AccessibleState::visible)) << each.name.toStdString();
        if (!has(each.states, AccessibleState::focusable))
            continue;
        EXPECT_FALSE(each.description.isEmpty()) << each.name.toStdString();
        told.append(QStringList{each.role, each.name, each.actions.value(0), each.keys}.join(u'|'));
        EXPECT_EQ(has(each.states, AccessibleState::editable),
                  each.role == QStringLiteral("text") && each.name != QStringLiteral("Console"))
            << each.name.toStdString();
    }
    const QStringList expected{QStringLiteral("text|DX cluster node|SetFocus|"),
                               QStringLiteral("text|DX cluster port|SetFocus|"),
                               QStringLiteral("text|Callsign|SetFocus|"),
                               QStringLiteral("text|DX cluster password|SetFocus|"),
                               QStringLiteral("check box|Connection to the DX cluster|Toggle|Alt+N"),
                               QStringLiteral("check box|Reconnect to the DX cluster|Toggle|Alt+R"),
                               QStringLiteral("check box|POTA spots|Toggle|Alt+P"),
                               QStringLiteral("check box|POTA: skimmer spots too||"),
                               QStringLiteral("check box|DXSummit spots|Toggle|Alt+M"),
                               QStringLiteral("check box|DXSummit: exclusive spots only||"),
                               QStringLiteral("check box|WSPRnet spots|Toggle|Alt+T"),
                               QStringLiteral("check box|Dark appearance|Toggle|Alt+D"),
                               QStringLiteral("push button|Logwright|Press|"),
                               QStringLiteral("push button|Show debug log|Press|Alt+B"),
                               QStringLiteral("text|Console|SetFocus|")};
    EXPECT_EQ(told, expected);

    EXPECT_TRUE(has(control(QStringLiteral("Console")).states, AccessibleState::readOnly));
    EXPECT_TRUE(has(control(QStringLiteral("Console")).states, AccessibleState::multiLine));
    EXPECT_FALSE(has(control(QStringLiteral("POTA: skimmer spots too")).states, AccessibleState::sensitive));
    EXPECT_TRUE(has(control(QStringLiteral("POTA spots")).states, AccessibleState::sensitive));
    EXPECT_EQ(control(QStringLiteral("Logwright")).description,
              QStringLiteral("Not yet known whether Logwright runs"));
    // Only the window is one.
    const QList<AccessibleControl> all = reader->controls();
    EXPECT_EQ(
        std::count_if(all.begin(), all.end(),
                      [](const AccessibleControl& each) { return each.role == QStringLiteral("frame"); }),
        1);
}

TEST_F(AccessibilityTest, thePasswordIsNotReadOut)
{
    home.writeSettings(settingsFor(node.port()));
    openToReader();
    EXPECT_EQ(reader->text(QStringLiteral("Callsign")), QStringLiteral("N0CALL"));
    EXPECT_EQ(reader->text(QStringLiteral("DX cluster password")), QString());
}

TEST_F(AccessibilityTest, theTabKeyLeadsToEachControlInReadingOrder)
{
    openToReader();
    QStringList names;
    for (const AccessibleControl& each : reader->controls()) {
        if (has(each.states, AccessibleState::focusable) && has(each.states, AccessibleState::sensitive))
            names.append(each.name);
    }
    ASSERT_EQ(names.size(), 13);
    ASSERT_TRUE(has(control(names.first()).states, AccessibleState::focused));
    for (qsizetype i = 0; i < names.size(); ++i)
        user.press(QStringLiteral("Tab"));
    names.append(names.takeFirst());
    EXPECT_TRUE(tells(focused + names.last()));
    EXPECT_EQ(heard(focused), names);
    user.press(QStringLiteral("shift+Tab"));
    EXPECT_TRUE(waitUntil([&] { return heard(focused).size() > names.size(); }));
    EXPECT_EQ(heard(focused).last(), QStringLiteral("Console"));
}

TEST_F(AccessibilityTest, logwrightsComingAndGoingIsAnnounced)
{
    // Begun before there is a thread, as ThreadSanitizer wants it.
    auto logger = std::make_unique<BusPeer>(bus);
    openToReader();
    logger->command({QStringLiteral("text"), QStringLiteral("DisplayName"), QStringLiteral("Logwright")});
    logger->command({QStringLiteral("own"), loggerBusName});
    EXPECT_TRUE(tells(shown + QStringLiteral("Logwright is running")));
    EXPECT_EQ(control(QStringLiteral("Logwright")).description, QStringLiteral("Logwright is running"));
    const QString change = QStringLiteral("PropertyChange accessible-description 0 Logwright");
    EXPECT_TRUE(tells(change));
    logger.reset();
    EXPECT_TRUE(tells(shown + QStringLiteral("Logwright is not running")));
    EXPECT_EQ(control(QStringLiteral("Logwright")).description, QStringLiteral("Logwright is not running"));
    EXPECT_EQ(heard(change).size(), 2);
    EXPECT_EQ(heard(shown).size(), 2);
}

TEST_F(AccessibilityTest, theConnectionsOpeningAndClosingIsAnnounced)
{
    SettingsTexts settings = settingsFor(node.port());
    settings[QStringLiteral("reconnect")] = QStringLiteral("false");
    home.writeSettings(settings);
    openToReader();
    const QString opened = shown + QStringLiteral("The DX cluster connection is on");
    const QString closed = shown + QStringLiteral("The DX cluster connection is off");
    const QString on = QStringLiteral("StateChanged checked 1 ") + toggle;
    const QString off = QStringLiteral("StateChanged checked 0 ") + toggle;
    EXPECT_TRUE(reader->press(toggle));
    ASSERT_TRUE(node.accept());
    EXPECT_TRUE(tells(opened));
    EXPECT_TRUE(tells(on));
    node.close();
    EXPECT_TRUE(tells(closed));
    EXPECT_TRUE(tells(off));
    // Once each; and a toggle that has the focus is told of by itself.
    user.press(QStringLiteral("alt+n"));
    ASSERT_TRUE(node.accept());
    EXPECT_TRUE(waitUntil([&] { return reader->events().count(on) == 2; }));
    EXPECT_EQ(reader->events().count(opened), 1);
    EXPECT_EQ(reader->events().count(closed), 1);
}

} // namespace
} // namespace spotwell
