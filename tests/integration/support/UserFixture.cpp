// SPDX-FileCopyrightText: 2026 the spotwell developers
// SPDX-License-Identifier: MIT

#include "tests/integration/support/UserFixture.h"

#include <QDir>

namespace spotwell
{

QStringList UserFixture::desktop() const
{
    return home.environment() +
           QStringList(QStringLiteral("DBUS_SESSION_BUS_ADDRESS=") + QString::fromStdString(bus.address()));
}

QStringList UserFixture::variables() const
{
    // Nobody listens there, so no request leaves the machine.
    const QString nobody = QStringLiteral("http://127.0.0.1:1");
    return {QStringLiteral("DISPLAY=") + screen.display(), QStringLiteral("http_proxy=") + nobody,
            QStringLiteral("https_proxy=") + nobody};
}

void UserFixture::open()
{
    start(variables());
    findWindow();
}

void UserFixture::openConnected()
{
    startConnected(variables());
    findWindow();
}

void UserFixture::findWindow()
{
    ASSERT_TRUE(waitUntil([this] {
        const auto windows = user.windows();
        if (windows.size() != 1)
            return false;
        window = windows.first();
        return user.activeWindow() == window.id;
    }));
    ASSERT_EQ(window.area.size(), user.place(QStringLiteral("MainWindow")).size());
}

QRect UserFixture::placeOf(const QString& control) const
{
    return user.place(control).translated(window.area.topLeft());
}

void UserFixture::click(const QString& control) const
{
    const QRect place = placeOf(control);
    user.click({place.left() + 8, place.center().y()});
}

UserInput::Window UserFixture::question() const
{
    UserInput::Window found;
    EXPECT_TRUE(waitUntil([&] {
        const auto windows = user.windows();
        if (windows.size() != 2)
            return false;
        found = windows[windows[0].id == window.id ? 1 : 0];
        return user.activeWindow() == found.id;
    })) << "no question";
    return found;
}

bool UserFixture::isAlone() const
{
    return waitUntil([this] { return user.windows().size() == 1 && user.activeWindow() == window.id; });
}

ConsolePicture UserFixture::console() const
{
    // Within the frame, and left of the question.
    constexpr int frame = 3;
    constexpr int width = 300;
    const QRect inside = placeOf(QStringLiteral("statusLine")).adjusted(frame, frame, -frame, -frame);
    // Above the horizontal scroll bar.
    return lookAtConsole(screen.picture().copy(inside.x(), inside.y(), width, inside.height() * 9 / 10));
}

bool UserFixture::shows(int lines) const
{
    const bool shown = waitUntil([&] { return console().lines == lines; });
    EXPECT_EQ(console().lines, lines);
    return shown;
}

void UserFixture::keepPicture(const QString& name) const
{
    const QString directory = qEnvironmentVariable("SPOTWELL_PICTURES");
    if (!directory.isEmpty()) {
        EXPECT_TRUE(screen.picture().save(QDir(directory).filePath(name + QStringLiteral(".png"))));
    }
}

} // namespace spotwell
