// SPDX-FileCopyrightText: 2026 the spotwell developers
// SPDX-License-Identifier: MIT

#include "app/Appearance.h"

#include "app/Images.h"
#include "tests/window/Contrast.h"

#include <QColor>
#include <QIcon>
#include <QImage>
#include <QStyle>
#include <gtest/gtest.h>

#include <algorithm>

namespace spotwell
{
namespace
{

using Role = QPalette::ColorRole;
using Group = QPalette::ColorGroup;

class EachAppearance : public testing::TestWithParam<Wanted>
{
protected:
    const double ofText = leastOfText(GetParam());
    const double ofDisabledText = leastOfDisabledText(GetParam());
    const double ofOutlines = GetParam().contrast == Contrast::high ? 7.0 : 3.0;

    [[nodiscard]] double between(Group group, Role a, Role b) const
    {
        return contrast(palette.color(group, a), palette.color(group, b));
    }
    QPalette palette = desiredAppearanceObject(GetParam().dark, GetParam().contrast).palette;
};

TEST(Appearance, HasItsName)
{
    EXPECT_EQ(darkAppearnace().name, QStringLiteral("NSAppearanceNameDarkAqua"));
    EXPECT_EQ(lightAppearnace().name, QStringLiteral("NSAppearanceNameAqua"));
    EXPECT_EQ(desiredAppearanceObject(true).name, QStringLiteral("NSAppearanceNameDarkAqua"));
    EXPECT_EQ(desiredAppearanceObject(false).name, QStringLiteral("NSAppearanceNameAqua"));
    EXPECT_EQ(desiredAppearanceObject(true).palette, darkAppearnace().palette);
    EXPECT_EQ(desiredAppearanceObject(false).palette, lightAppearnace().palette);
}

TEST(Appearance, DarkIsDarkAndLightIsLight)
{
    for (const Role role : {QPalette::Window, QPalette::Base, QPalette::Button}) {
        EXPECT_LT(luminance(darkAppearnace().palette.color(role)), 0.1);
        EXPECT_GT(luminance(lightAppearnace().palette.color(role)), 0.7);
    }
}

TEST_P(EachAppearance, LeavesNoRoleToTheDesktop)
{
    for (const Group group : {QPalette::Active, QPalette::Inactive, QPalette::Disabled}) {
        for (int role = 0; role < QPalette::NColorRoles; ++role) {
            if (role != QPalette::NoRole) {
                EXPECT_TRUE(palette.isBrushSet(group, static_cast<Role>(role))) << group << ' ' << role;
            }
        }
    }
}

TEST_P(EachAppearance, TextIsReadable)
{
    const std::pair<Role, Role> pairs[] = {
        {QPalette::WindowText, QPalette::Window},
        {QPalette::Text, QPalette::Base},
        {QPalette::Text, QPalette::AlternateBase},
        {QPalette::ButtonText, QPalette::Button},
        {QPalette::PlaceholderText, QPalette::Base},
        {QPalette::HighlightedText, QPalette::Highlight},
        {QPalette::ToolTipText, QPalette::ToolTipBase},
        {QPalette::Link, QPalette::Window},
        {QPalette::Link, QPalette::Base},
        {QPalette::LinkVisited, QPalette::Window},
        {QPalette::LinkVisited, QPalette::Base},
        {QPalette::BrightText, QPalette::Window},
        {QPalette::BrightText, QPalette::Base},
    };
    for (const Group group : {QPalette::Active, QPalette::Inactive}) {
        for (const auto& [text, ground] : pairs)
            EXPECT_GE(between(group, text, ground), ofText) << group << ' ' << text << ' ' << ground;
    }
}

TEST_P(EachAppearance, DisabledTextIsStillLegible)
{
    for (const auto& [text, ground] : {std::pair{QPalette::WindowText, QPalette::Window},
                                       {QPalette::Text, QPalette::Base},
                                       {QPalette::ButtonText, QPalette::Button},
                                       {QPalette::PlaceholderText, QPalette::Base}}) {
        EXPECT_GE(between(QPalette::Disabled, text, ground), ofDisabledText) << text;
        EXPECT_LT(between(QPalette::Disabled, text, ground), between(QPalette::Active, text, ground)) << text;
    }
}

TEST_P(EachAppearance, FocusAndOutlinesStandOut)
{
    for (const Group group : {QPalette::Active, QPalette::Inactive}) {
        for (const Role ground : {QPalette::Window, QPalette::Base, QPalette::Button}) {
            EXPECT_GE(between(group, QPalette::Highlight, ground), ofOutlines) << group << ' ' << ground;
            EXPECT_GE(between(group, QPalette::Dark, ground), ofOutlines) << group << ' ' << ground;
        }
    }
}

TEST_P(EachAppearance, BulbsStandOutAndDifferInShape)
{
    const QColor ground = palette.color(QPalette::Window);
    int painted[2] = {0, 0};
    const QString names[2] = {QStringLiteral("green_ball"), QStringLiteral("gray_ball")};
    for (int i = 0; i < 2; ++i) {
        const QImage image = imageNamed(names[i]).pixmap(22, 22).toImage();
        ASSERT_FALSE(image.isNull());
        double best = 0;
        for (int y = 0; y < image.height(); ++y) {
            for (int x = 0; x < image.width(); ++x) {
                const QColor pixel = image.pixelColor(x, y);
                if (pixel.alpha() < 250)
                    continue;
                ++painted[i];
                best = std::max(best, contrast(pixel, ground));
            }
        }
        EXPECT_GE(best, 3.0) << names[i].toStdString();
    }
    // A full ball and an empty ring: told apart without colour.
    EXPECT_GT(painted[0], 2 * painted[1]);
}

INSTANTIATE_TEST_SUITE_P(Appearance, EachAppearance, eachWantedAppearance(), nameOfWanted);

TEST(Appearance, WithHighContrastIsBlackAndWhite)
{
    for (const bool dark : {false, true}) {
        const Appearance appearance = desiredAppearanceObject(dark, Contrast::high);
        EXPECT_EQ(appearance.name, desiredAppearanceObject(dark).name);
        for (const Role role : {QPalette::Window, QPalette::Base, QPalette::Button})
            EXPECT_EQ(appearance.palette.color(role), QColor(dark ? Qt::black : Qt::white));
        EXPECT_EQ(contrastOf(appearance.palette), Contrast::high);
        EXPECT_EQ(contrastOf(desiredAppearanceObject(dark).palette), Contrast::normal);
    }
    QPalette desktop(Qt::black, QColor(0xEF, 0xEF, 0xEF));
    EXPECT_EQ(contrastOf(desktop), Contrast::normal);
    desktop.setColor(QPalette::Window, Qt::black);
    EXPECT_EQ(contrastOf(desktop), Contrast::normal);
}

TEST(Images, AreThereInTheSizesTheyAreShownIn)
{
    const QList<QSize> bulb{{22, 22}, {44, 44}};
    EXPECT_EQ(imageNamed(QStringLiteral("green_ball")).availableSizes(), bulb);
    EXPECT_EQ(imageNamed(QStringLiteral("gray_ball")).availableSizes(), bulb);
    const QList<QSize> application{{32, 32}, {64, 64}};
    EXPECT_EQ(imageNamed(QStringLiteral("spotwell")).availableSizes(), application);
    EXPECT_TRUE(imageNamed(QStringLiteral("grey_ball")).isNull());
}

TEST(Images, StandOnNothing)
{
    for (const auto& name :
         {QStringLiteral("green_ball"), QStringLiteral("gray_ball"), QStringLiteral("spotwell")}) {
        const QImage image = imageNamed(name).pixmap(44, 44).toImage();
        EXPECT_EQ(image.pixelColor(0, 0).alpha(), 0) << name.toStdString();
        // The ring is empty, the others are full.
        EXPECT_EQ(image.pixelColor(22, 22).alpha() > 0, name != QStringLiteral("gray_ball"))
            << name.toStdString();
    }
}

} // namespace
} // namespace spotwell
