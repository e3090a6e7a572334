// SPDX-FileCopyrightText: 2026 the spotwell developers
// SPDX-License-Identifier: MIT

#include "tests/integration/support/ScreenReader.h"
#include "tests/integration/support/UserFixture.h"
#include "tests/integration/support/WindowPing.h"

#include <QFile>

#include <algorithm>
#include <array>

namespace spotwell
{
namespace
{

/// How a user reaches a control.
enum class Way { mouse, mnemonic, tab, reader };

void PrintTo(Way way, std::ostream* out)
{
    constexpr std::array names{"mouse", "mnemonic", "tab", "reader"};
    *out << names.at(static_cast<std::size_t>(way));
}

struct Control {
    const char* name;
    const char* letter;
    /// To a screen reader.
    const char* accessibleName;
};

/// In the order of the tab key, from the first field on.
constexpr std::array<Control, 14> controls{{{"dxcluster", "u", "DX cluster node"},
                                            {"port", "o", "DX cluster port"},
                                            {"callsign", "s", "Callsign"},
                                            {"password", "w", "DX cluster password"},
                                            {"connected", "n", "Connection to the DX cluster"},
                                            {"reconnectCheckBox", "r", "Reconnect to the DX cluster"},
                                            {"potaCheckBox", "p", "POTA spots"},
                                            {"skimmersCheckBox", "k", "POTA: skimmer spots too"},
                                            {"dxsummitCheckBox", "m", "DXSummit spots"},
                                            {"dxsExclusiveCheckBox", "x", "DXSummit: exclusive spots only"},
                                            {"wsprnetCheckBox", "t", "WSPRnet spots"},
                                            {"darkCheckBox", "d", "Dark appearance"},
                                            {"lgwtRunningButton", "g", "Logwright"},
                                            {"showDebugLogButton", "b", "Show debug log"}}};

class ControlsTest : public UserFixture, public testing::WithParamInterface<Way>
{
protected:
    /// Presses a button or switches a box.
    void use(const char* name)
    {
        const QString control = QLatin1String(name);
        switch (GetParam()) {
        case Way::mouse:
            click(control);
            break;
        case Way::mnemonic:
            user.press(mnemonicOf(control));
            break;
        case Way::tab:
            user.press(tabsTo(control) + QStringList(QStringLiteral("space")));
            break;
        case Way::reader:
            EXPECT_TRUE(reader_->press(QLatin1String(find(control).accessibleName))) << name;
            break;
        }
    }
    /// Replaces the text of a field.
    void fill(const char* name, const QString& text)
    {
        const QString field = QLatin1String(name);
        if (GetParam() == Way::mouse)
            user.click(placeOf(field).center());
        else if (GetParam() == Way::mnemonic || GetParam() == Way::reader)
            user.press(mnemonicOf(field));
        else
            user.press(tabsTo(field));
        user.press(QStringLiteral("ctrl+a"));
        user.type(text);
    }
    /// A click on a control that is disabled; the keyboard has nothing like it but the letter.
    void tryToUse(const char* name)
    {
        if (GetParam() == Way::reader)
            EXPECT_FALSE(reader_->press(QLatin1String(find(QLatin1String(name)).accessibleName))) << name;
        else if (GetParam() != Way::tab)
            use(name);
    }
    /// Uses a box whose action saves, and sees that all is saved then.
    void useAndSee(const char* box, const char* key, bool on)
    {
        isOn_[QLatin1String(box)] = on;
        expected_[QLatin1String(key)] = on ? QStringLiteral("true") : QStringLiteral("false");
        use(box);
        EXPECT_TRUE(waitUntil([&] { return home.settings() == expected_; })) << box;
        EXPECT_EQ(home.settings(), expected_) << box;
    }
    /// Has the log shown. Whatever was done before is over then.
    void seeLogShown(BusPeer& fileManager)
    {
        use("showDebugLogButton");
        ASSERT_EQ(home.logFiles().size(), 1);
        const QString file = QStringLiteral("file://") +
                             home.logFiles().first().replace(QLatin1Char(' '), QStringLiteral("%20"));
        const QStringList call{QStringLiteral("call"),
                               QStringLiteral("org.freedesktop.FileManager1"),
                               QStringLiteral("ShowItems"),
                               QStringLiteral("ass"),
                               file,
                               QString()};
        EXPECT_EQ(next(fileManager, QStringLiteral("call")), call);
    }

    /// The program with the user, and what the user needs for it.
    void openForUser()
    {
        open();
        if (GetParam() == Way::reader) {
            reader_.emplace(bus);
            ASSERT_TRUE(
                waitUntil([this] { return reader_->isOn(QStringLiteral("POTA spots")).has_value(); }));
        }
    }

    SettingsTexts expected_;

private:
    static const Control& find(const QString& name)
    {
        return *std::find_if(controls.begin(), controls.end(),
                             [&](const Control& control) { return name == QLatin1String(control.name); });
    }
    static QString mnemonicOf(const QString& name)
    {
        return QStringLiteral("alt+") + QLatin1String(find(name).letter);
    }
    /// The keys that lead from anywhere to a control: to the first field, and on over all that is enabled.
    [[nodiscard]] QStringList tabsTo(const QString& name) const
    {
        QStringList keys{mnemonicOf(QStringLiteral("dxcluster"))};
        for (const Control& control : controls) {
            const QString passed = QLatin1String(control.name);
            if (passed == name)
                break;
            const bool isDisabled =
                (passed == QStringLiteral("skimmersCheckBox") && !isOn_[QStringLiteral("potaCheckBox")]) ||
                (passed == QStringLiteral("dxsExclusiveCheckBox") &&
                 !isOn_[QStringLiteral("dxsummitCheckBox")]);
            if (!isDisabled)
                keys.append(QStringLiteral("Tab"));
        }
        return keys;
    }

    QHash<QString, bool> isOn_;
    std::optional<ScreenReader> reader_;
};

TEST_P(ControlsTest, eachDoesItsWorkAndSixOfTheBoxesSave)
{
    BusPeer fileManager(bus);
    fileManager.command({QStringLiteral("own"), QStringLiteral("org.freedesktop.FileManager1")});
    openForUser();
    keepPicture(QStringLiteral("first-run"));

    fill("dxcluster", QStringLiteral("127.0.0.1"));
    fill("port", QString::number(node.port()));
    fill("callsign", QStringLiteral("N0CALL"));
    fill("password", QStringLiteral("secret"));
    use("connected");
    EXPECT_TRUE(logs(QStringLiteral("connectedPressed:[1]")));
    ASSERT_TRUE(node.accept());
    // Without that the node is left without a word.
    ASSERT_TRUE(logs(QStringLiteral("NSStreamEventHasSpaceAvailable")));
    use("reconnectCheckBox");
    tryToUse("skimmersCheckBox");
    tryToUse("dxsExclusiveCheckBox");
    keepPicture(QStringLiteral("connected"));
    use("connected");
    EXPECT_TRUE(logs(QStringLiteral("connectedPressed:[0]")));
    EXPECT_TRUE(hears("quit\n"));
    EXPECT_TRUE(waitUntil([this] { return node.hasEnded(); }));
    seeLogShown(fileManager);
    EXPECT_EQ(countOfEntries(QStringLiteral("connectedPressed:[1]")), 1);
    EXPECT_EQ(countOfEntries(QStringLiteral("connectedPressed:[0]")), 1);
    EXPECT_FALSE(QFile::exists(home.settingsFile())) << "saved too early";

    expected_ = settingsFor(node.port());
    for (const char* key : {"wsprnet", "dxsummit", "pota", "skimmers", "dxsexclusive", "dark"})
        expected_.insert(QString::fromLatin1(key), QStringLiteral("false"));
    useAndSee("potaCheckBox", "pota", true);
    useAndSee("skimmersCheckBox", "skimmers", true);
    useAndSee("dxsummitCheckBox", "dxsummit", true);
    useAndSee("dxsExclusiveCheckBox", "dxsexclusive", true);
    useAndSee("wsprnetCheckBox", "wsprnet", true);
    useAndSee("darkCheckBox", "dark", true);
    keepPicture(QStringLiteral("all-on"));

    // The options of a feed that is off stay as they are, out of reach.
    useAndSee("potaCheckBox", "pota", false);
    tryToUse("skimmersCheckBox");
    useAndSee("dxsummitCheckBox", "dxsummit", false);
    tryToUse("dxsExclusiveCheckBox");
    fill("dxcluster", QStringLiteral("localhost"));
    use("reconnectCheckBox");
    seeLogShown(fileManager);
    EXPECT_EQ(home.settings(), expected_);
    keepPicture(QStringLiteral("options-off"));

    expected_[QStringLiteral("dxcluster")] = QStringLiteral("localhost");
    expected_[QStringLiteral("reconnect")] = QStringLiteral("false");
    useAndSee("wsprnetCheckBox", "wsprnet", false);
    useAndSee("potaCheckBox", "pota", true);
    useAndSee("skimmersCheckBox", "skimmers", false);
    useAndSee("dxsummitCheckBox", "dxsummit", true);
    useAndSee("dxsExclusiveCheckBox", "dxsexclusive", false);
    useAndSee("darkCheckBox", "dark", false);
}

INSTANTIATE_TEST_SUITE_P(Ways, ControlsTest,
                         testing::Values(Way::mouse, Way::mnemonic, Way::tab, Way::reader),
                         testing::PrintToStringParamName());

class DarkTest : public UserFixture
{
protected:
    WindowPing ping{screen.display()};
};

TEST_F(DarkTest, linesOnTheScreenFollowTheSwitchAndBack)
{
    openConnected();
    for (int number = 1; number <= 10; ++number)
        say(spotLine(number) + "\r\n");
    constexpr int lines = 11;
    ASSERT_TRUE(shows(lines));
    // The answer comes over the screen behind what was painted, so that all of this is there.
    ASSERT_TRUE(ping.answers());
    const ConsolePicture light = console();
    keepPicture(QStringLiteral("lines-light"));
    EXPECT_GT(luminance(light.background), 0.8);
    EXPECT_GT(light.readablePixels, 1000);

    click(QStringLiteral("darkCheckBox"));
    EXPECT_TRUE(waitUntil([&] { return luminance(console().background) < 0.05; }));
    EXPECT_TRUE(waitUntil([&] { return console().readablePixels > light.readablePixels / 2; }))
        << console().readablePixels << " of " << light.readablePixels;
    EXPECT_TRUE(shows(lines));
    keepPicture(QStringLiteral("lines-dark"));

    click(QStringLiteral("darkCheckBox"));
    EXPECT_TRUE(waitUntil([&] { return console().text == light.text; }));
    keepPicture(QStringLiteral("lines-light-again"));
}

TEST_F(DarkTest, aDesktopThatWantsHighContrastGetsIt)
{
    BusPeer portal(bus);
    portal.command({QStringLiteral("setting"), QStringLiteral("org.freedesktop.appearance contrast"),
                    QStringLiteral("u"), QStringLiteral("1")});
    portal.command({QStringLiteral("own"), QStringLiteral("org.freedesktop.portal.Desktop")});
    openConnected();
    EXPECT_TRUE(waitUntil([&] {
        const QRect place = placeOf(QStringLiteral("lgwtRunningButton"));
        return screen.picture().pixel(place.topLeft()) == qRgb(255, 255, 255);
    }));
    keepPicture(QStringLiteral("high-contrast-light"));
    click(QStringLiteral("darkCheckBox"));
    EXPECT_TRUE(waitUntil([&] { return console().background == qRgb(0, 0, 0); }));
    keepPicture(QStringLiteral("high-contrast-dark"));
}

} // namespace
} // namespace spotwell
