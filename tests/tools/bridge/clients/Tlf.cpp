// SPDX-FileCopyrightText: 2026 the spotwell developers
// SPDX-License-Identifier: MIT

#include "tests/tools/bridge/clients/Tlf.h"

#include "tests/support/WaitUntil.h"
#include "tests/tools/bridge/clients/ForeignProgram.h"

#include <QFile>
#include <QProcess>

#include <algorithm>
#include <stdexcept>

namespace spotwell::bridge
{

namespace
{

constexpr char configuration[] = "CALL=N0CALL\n"
                                 "RULES=qso\n"
                                 "EDITOR=vi\n"
                                 "TELNETHOST=127.0.0.1\n"
                                 "TELNETPORT=%1\n"
                                 "CLUSTERLOGIN=N0CALL\n"
                                 "CLUSTER\n"
                                 "CLUSTER_LOG\n";

/// Its start alone takes a dozen seconds, most of them asleep.
constexpr std::chrono::seconds patience{60};

} // namespace

Tlf::Tlf(std::uint16_t port)
{
    QFile file(home_.filePath(QStringLiteral("logcfg.dat")));
    if (!file.open(QIODevice::WriteOnly))
        throw std::runtime_error("no temporary file");
    file.write(QString::fromLatin1(configuration).arg(port).toLatin1());
    file.close();

    // In the foreground, so that the terminals end with it.
    terminals_.emplace(foreignCommand(home_, {}, tmuxCommand() + QStringList{QStringLiteral("-D")}));
    if (!waitUntil([this] { return QFile::exists(home_.filePath(QStringLiteral("tmux"))); }))
        throw std::runtime_error("tmux does not start");
    (void)tmux({QStringLiteral("new-session"), QStringLiteral("-d"), QStringLiteral("-x"),
                QStringLiteral("100"), QStringLiteral("-y"), QStringLiteral("40"), QStringLiteral("tlf")});
}

QStringList Tlf::screen() const
{
    return QString::fromUtf8(tmux({QStringLiteral("capture-pane"), QStringLiteral("-p")})).split(u'\n');
}

bool Tlf::shows(const QString& text) const
{
    return waitUntil([&] { return screen().join(u'\n').contains(text); }, patience);
}

bool Tlf::becomesReady() const
{
    if (!shows(QStringLiteral("Press any key to continue!")))
        return false;
    enter({});
    return shows(QStringLiteral("Cluster"));
}

void Tlf::enter(const QString& text) const
{
    if (!text.isEmpty())
        (void)tmux({QStringLiteral("send-keys"), QStringLiteral("-l"), text});
    (void)tmux({QStringLiteral("send-keys"), QStringLiteral("Enter")});
}

QString Tlf::received() const
{
    QFile file(home_.filePath(QStringLiteral("clusterlog")));
    return file.open(QIODevice::ReadOnly) ? QString::fromUtf8(file.readAll()) : QString();
}

QByteArray Tlf::tmux(const QStringList& arguments) const
{
    QStringList command;
    for (const std::string& word : foreignCommand(home_, {}, tmuxCommand() + arguments))
        command.append(QString::fromStdString(word));
    QProcess process;
    process.start(command.first(), command.mid(1));
    process.waitForFinished();
    return process.readAllStandardOutput();
}

QStringList Tlf::tmuxCommand() const
{
    return {QStringLiteral("tmux"),      QStringLiteral("-u"), QStringLiteral("-f"),
            QStringLiteral("/dev/null"), QStringLiteral("-S"), home_.filePath(QStringLiteral("tmux"))};
}

} // namespace spotwell::bridge
