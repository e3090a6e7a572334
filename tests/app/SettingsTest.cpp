// SPDX-FileCopyrightText: 2026 the spotwell developers
// SPDX-License-Identifier: MIT

#include "app/Settings.h"

#include "tests/fakes/FakeServices.h"
#include "tests/support/Printers.h"

#include <gtest/gtest.h>

namespace spotwell
{

TEST(Settings, AnEmptyStoreGivesNoTextsAndAllOff)
{
    const Settings settings = readSettings(FakeUserDefaults{});
    for (const auto& text : {settings.dxcluster, settings.password, settings.port, settings.callsign})
        EXPECT_EQ(text, std::nullopt);
    for (const bool box : {settings.reconnect, settings.wsprnet, settings.dxsummit, settings.pota,
                           settings.skimmers, settings.dxsexclusive, settings.dark})
        EXPECT_FALSE(box);
}

TEST(Settings, EachKeyHasItsPlace)
{
    FakeUserDefaults defaults;
    defaults.strings = {{QStringLiteral("dxcluster"), QStringLiteral("dxc.example.org")},
                        {QStringLiteral("password"), QStringLiteral("secret")},
                        {QStringLiteral("port"), QStringLiteral("7300")},
                        {QStringLiteral("callsign"), QStringLiteral("N0CALL")}};
    const Settings texts = readSettings(defaults);
    EXPECT_EQ(texts.dxcluster, std::optional{QStringLiteral("dxc.example.org")});
    EXPECT_EQ(texts.password, std::optional{QStringLiteral("secret")});
    EXPECT_EQ(texts.port, std::optional{QStringLiteral("7300")});
    EXPECT_EQ(texts.callsign, std::optional{QStringLiteral("N0CALL")});

    const std::pair<const char*, bool Settings::*> boxes[] = {{"reconnect", &Settings::reconnect},
                                                              {"wsprnet", &Settings::wsprnet},
                                                              {"dxsummit", &Settings::dxsummit},
                                                              {"pota", &Settings::pota},
                                                              {"skimmers", &Settings::skimmers},
                                                              {"dxsexclusive", &Settings::dxsexclusive},
                                                              {"dark", &Settings::dark}};
    for (const auto& [key, member] : boxes) {
        FakeUserDefaults one;
        one.booleans[QLatin1String(key)] = true;
        const Settings settings = readSettings(one);
        for (const auto& [otherKey, other] : boxes)
            EXPECT_EQ(settings.*other, other == member) << key << " " << otherKey;
    }
}

TEST(Settings, WritesAllElevenInOrder)
{
    FakeUserDefaults defaults;
    Settings settings;
    settings.port = QStringLiteral("7300");
    settings.dark = true;
    writeSettings(defaults, settings);
    EXPECT_EQ(defaults.written,
              (QStringList{QStringLiteral("dxcluster"), QStringLiteral("password"), QStringLiteral("port"),
                           QStringLiteral("callsign"), QStringLiteral("reconnect"), QStringLiteral("wsprnet"),
                           QStringLiteral("dxsummit"), QStringLiteral("pota"), QStringLiteral("skimmers"),
                           QStringLiteral("dxsexclusive"), QStringLiteral("dark")}));
    EXPECT_EQ(defaults.strings.at(QStringLiteral("port")), QStringLiteral("7300"));
    EXPECT_EQ(defaults.strings.at(QStringLiteral("callsign")), QString()) << "written also when empty";
    EXPECT_TRUE(defaults.booleans.at(QStringLiteral("dark")));
    EXPECT_FALSE(defaults.booleans.at(QStringLiteral("pota")));
}

} // namespace spotwell
