// SPDX-FileCopyrightText: 2026 the spotwell developers
// SPDX-License-Identifier: MIT

#include "tests/integration/support/UserInput.h"

#include "tests/integration/support/VirtualScreen.h"

#include <QFile>
#include <QProcess>
#include <gtest/gtest.h>

#include <stdexcept>

namespace spotwell
{

namespace
{

// No frames: then a window's place is its frame's, and nothing depends on a theme. The keys stay bound when
// the first key pressed makes the server announce its keyboard anew: a key that came meanwhile would be lost.
constexpr char windowManagerConfiguration[] = R"(<?xml version="1.0" encoding="UTF-8"?>
<openbox_config xmlns="http://openbox.org/3.4/rc">
  <focus><focusNew>yes</focusNew></focus>
  <theme><keepBorder>no</keepBorder></theme>
  <keyboard>
    <rebindOnMappingNotify>no</rebindOnMappingNotify>
    <keybind key="A-F4"><action name="Close"/></keybind>
  </keyboard>
  <mouse>
    <context name="Client">
      <mousebind button="Left" action="Press"><action name="Focus"/><action name="Raise"/></mousebind>
      <mousebind button="A-Middle" action="Click"><action name="Close"/></mousebind>
    </context>
  </mouse>
  <applications><application class="*"><decor>no</decor></application></applications>
</openbox_config>
)";

} // namespace

UserInput::UserInput(const VirtualScreen& screen, const QStringList& variables)
    : environment_(QProcessEnvironment::systemEnvironment())
{
    // What the sanitizers find in the toolkit's libraries is nothing of the places' concern.
    const QStringList own{QStringLiteral("DISPLAY=") + screen.display(),
                          QStringLiteral("QT_QPA_PLATFORM=xcb"), QStringLiteral("LC_ALL=C.UTF-8"),
                          QStringLiteral("ASAN_OPTIONS=detect_leaks=0"),
                          QStringLiteral("TSAN_OPTIONS=ignore_noninstrumented_modules=1")};
    for (const QString& variable : variables + own) {
        const qsizetype sign = variable.indexOf(QLatin1Char('='));
        environment_.insert(variable.first(sign), variable.mid(sign + 1));
    }
    startWindowManager(screen);
    findPlaces();
    // Out of the way: the pointer is part of what is seen.
    (void)linesOf(QStringLiteral("xdotool"),
                  {QStringLiteral("mousemove"), QStringLiteral("0"), QStringLiteral("0")});
}

void UserInput::startWindowManager(const VirtualScreen& screen)
{
    QFile configuration(screen.filePath(QStringLiteral("openbox.xml")));
    if (!configuration.open(QIODevice::WriteOnly))
        throw std::runtime_error("no temporary file");
    configuration.write(windowManagerConfiguration);
    configuration.close();
    const std::string display = "DISPLAY=" + screen.display().toStdString();
    windowManager_.emplace(std::vector<std::string>{"openbox", "--sm-disable", "--config-file",
                                                    configuration.fileName().toStdString(), "--startup",
                                                    "echo ready"},
                           std::vector<std::string>{display});
    if (windowManager_->readLine() != "ready")
        throw std::runtime_error("openbox does not start");
}

void UserInput::findPlaces()
{
    for (const QString& line : linesOf(QStringLiteral(WINDOW_PLACES))) {
        const QStringList fields = line.split(QLatin1Char(' '));
        if (fields.size() == 5)
            places_.insert(fields[0],
                           {fields[1].toInt(), fields[2].toInt(), fields[3].toInt(), fields[4].toInt()});
    }
    if (places_.isEmpty())
        throw std::runtime_error("the controls' places are not known");
}

QStringList UserInput::linesOf(const QString& program, const QStringList& arguments) const
{
    QProcess process;
    process.setProcessEnvironment(environment_);
    process.start(program, arguments);
    EXPECT_TRUE(process.waitForFinished()) << program.toStdString();
    return QString::fromUtf8(process.readAllStandardOutput()).split(QLatin1Char('\n'), Qt::SkipEmptyParts);
}

QList<UserInput::Window> UserInput::windows() const
{
    QList<Window> found;
    for (const QString& line :
         linesOf(QStringLiteral("xdotool"),
                 {QStringLiteral("search"), QStringLiteral("--onlyvisible"), QStringLiteral("--class"),
                  QStringLiteral("^spotwell$"), QStringLiteral("getwindowgeometry"),
                  QStringLiteral("--shell"), QStringLiteral("%@")})) {
        const QString key = line.section(QLatin1Char('='), 0, 0);
        const QString value = line.section(QLatin1Char('='), 1);
        if (key == QStringLiteral("WINDOW"))
            found.append({value, {}});
        else if (found.isEmpty())
            continue;
        else if (key == QStringLiteral("X"))
            found.last().area.moveLeft(value.toInt());
        else if (key == QStringLiteral("Y"))
            found.last().area.moveTop(value.toInt());
        else if (key == QStringLiteral("WIDTH"))
            found.last().area.setWidth(value.toInt());
        else if (key == QStringLiteral("HEIGHT"))
            found.last().area.setHeight(value.toInt());
    }
    return found;
}

QString UserInput::activeWindow() const
{
    return linesOf(QStringLiteral("xdotool"), {QStringLiteral("getactivewindow")}).value(0);
}

QRect UserInput::place(const QString& control) const
{
    EXPECT_TRUE(places_.contains(control)) << control.toStdString();
    return places_.value(control);
}

void UserInput::click(const QPoint& at, int button) const
{
    (void)linesOf(QStringLiteral("xdotool"),
                  {QStringLiteral("mousemove"), QString::number(at.x()), QString::number(at.y()),
                   QStringLiteral("click"), QString::number(button)});
}

void UserInput::drag(const QPoint& from, const QPoint& to) const
{
    (void)linesOf(QStringLiteral("xdotool"),
                  {QStringLiteral("mousemove"), QString::number(from.x()), QString::number(from.y()),
                   QStringLiteral("mousedown"), QStringLiteral("1"), QStringLiteral("mousemove"),
                   QString::number(to.x()), QString::number(to.y()), QStringLiteral("mouseup"),
                   QStringLiteral("1")});
}

void UserInput::close(const QPoint& at) const
{
    (void)linesOf(QStringLiteral("xdotool"),
                  {QStringLiteral("mousemove"), QString::number(at.x()), QString::number(at.y()),
                   QStringLiteral("keydown"), QStringLiteral("alt"), QStringLiteral("click"),
                   QStringLiteral("2"), QStringLiteral("keyup"), QStringLiteral("alt")});
}

void UserInput::press(const QStringList& keys) const
{
    (void)linesOf(QStringLiteral("xdotool"), QStringList{QStringLiteral("key")} + keys);
}

void UserInput::type(const QString& text) const
{
    (void)linesOf(QStringLiteral("xdotool"), {QStringLiteral("type"), QStringLiteral("--"), text});
}

void UserInput::focus(const Window& window) const
{
    (void)linesOf(QStringLiteral("xdotool"), {QStringLiteral("windowfocus"), window.id});
}

void UserInput::move(const Window& window, const QPoint& to) const
{
    (void)linesOf(QStringLiteral("xdotool"), {QStringLiteral("windowmove"), window.id,
                                              QString::number(to.x()), QString::number(to.y())});
}

} // namespace spotwell
