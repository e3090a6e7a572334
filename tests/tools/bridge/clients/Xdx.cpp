// SPDX-FileCopyrightText: 2026 the spotwell developers
// SPDX-License-Identifier: MIT

#include "tests/tools/bridge/clients/Xdx.h"

#include "tests/support/WaitUntil.h"
#include "tests/tools/bridge/clients/ForeignProgram.h"

#include <QDir>
#include <QFile>
#include <QProcess>
#include <QRegularExpression>

#include <stdexcept>

namespace spotwell::bridge
{

namespace
{

// A tilde stands for a blank. The column "Info" is left out: it makes rows of different heights.
constexpr char preferences[] = "version 2.91\n"
                               "width 1000\n"
                               "height 700\n"
                               "columnwidths2 100,90,110,270,60,60,120,\n"
                               "col5visible 0\n"
                               "handlebarpos 550\n"
                               "sidebar 0\n"
                               "fbox 0\n"
                               "autologin 1\n"
                               "callsign N0CALL\n"
                               "commands ?\n"
                               "savedx 1\n"
                               "savetoall 1\n"
                               "hamlib 1\n"
                               "rigctl echo~%d~>>radio\n";

// Where the list is in a window that stands at the upper left of the screen, as it does without a window
// manager. Rows are higher than the steps.
constexpr int listLeft = 100;
constexpr int listTop = 84;
constexpr int listBottom = 580;
constexpr int step = 12;

void write(const QString& path, const QByteArray& content)
{
    QFile file(path);
    if (!file.open(QIODevice::WriteOnly) || file.write(content) != content.size())
        throw std::runtime_error("cannot write " + path.toStdString());
}

QByteArray contentOf(const QString& path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

} // namespace

Xdx::Xdx(std::uint16_t port)
{
    QDir(home_.filePath({})).mkdir(QStringLiteral(".xdx"));
    write(home_.filePath(QStringLiteral(".xdx/preferences")), preferences);
    write(home_.filePath(QStringLiteral(".xdx/history")),
          "ho:127.0.0.1\npo:" + QByteArray::number(port) + '\n');
    process_.emplace(foreignCommand(home_,
                                    {QStringLiteral("DISPLAY=") + screen_.display(),
                                     QStringLiteral("GDK_BACKEND=x11"), QStringLiteral("NO_AT_BRIDGE=1")},
                                    {QStringLiteral("xdx")}));
}

void Xdx::connect()
{
    (void)xdotool({QStringLiteral("windowfocus"), QStringLiteral("--sync"), window(QStringLiteral("xdx")),
                   QStringLiteral("key"), QStringLiteral("ctrl+o")});
    (void)xdotool({QStringLiteral("windowfocus"), QStringLiteral("--sync"),
                   window(QStringLiteral("Xdx - Open connection")), QStringLiteral("key"),
                   QStringLiteral("alt+o")});
}

QStringList Xdx::spots() const
{
    // What came at once is saved once for each spot in it, from that spot on.
    static const QRegularExpression front(QStringLiteral(R"(^\d{4}-\d\d-\d\d \d\d:\d\d:\d\d GMT - )"));
    QStringList result;
    for (QString line : QString::fromUtf8(saved(QStringLiteral("dxspots"))).split(u'\n')) {
        if (line.contains(front))
            result.append(line.remove(front).remove(u'\r'));
    }
    return result;
}

QString Xdx::messages() const
{
    return QString::fromUtf8(saved(QStringLiteral("toall")));
}

void Xdx::chooseEverySpot() const
{
    QStringList clicks;
    for (int y = listTop; y < listBottom; y += step)
        clicks += {QStringLiteral("mousemove"), QString::number(listLeft),  QString::number(y),
                   QStringLiteral("click"),     QStringLiteral("--repeat"), QStringLiteral("2"),
                   QStringLiteral("--delay"),   QStringLiteral("20"),       QStringLiteral("1")};
    (void)xdotool(clicks);
}

QStringList Xdx::tunedTo() const
{
    return QString::fromUtf8(contentOf(home_.filePath(QStringLiteral("radio"))))
        .split(u'\n', Qt::SkipEmptyParts);
}

void Xdx::keepPicture(const QString& name) const
{
    const QString directory = qEnvironmentVariable("SPOTWELL_PICTURES");
    if (!directory.isEmpty())
        screen_.picture().save(QDir(directory).filePath(name + QStringLiteral(".png")));
}

QString Xdx::window(const QString& title) const
{
    QStringList found;
    (void)waitUntil([&] {
        found = xdotool({QStringLiteral("search"), QStringLiteral("--onlyvisible"), QStringLiteral("--name"),
                         u'^' + title + u'$'});
        return !found.isEmpty();
    });
    if (found.isEmpty())
        throw std::runtime_error("xdx has no window \"" + title.toStdString() + '"');
    return found.first();
}

QStringList Xdx::xdotool(const QStringList& arguments) const
{
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    environment.insert(QStringLiteral("DISPLAY"), screen_.display());
    QProcess process;
    process.setProcessEnvironment(environment);
    process.start(QStringLiteral("xdotool"), arguments);
    process.waitForFinished();
    return QString::fromUtf8(process.readAllStandardOutput()).split(u'\n', Qt::SkipEmptyParts);
}

QByteArray Xdx::saved(const QString& name) const
{
    return contentOf(home_.filePath(QStringLiteral(".xdx/") + name));
}

} // namespace spotwell::bridge
