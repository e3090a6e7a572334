// SPDX-FileCopyrightText: 2026 the spotwell developers
// SPDX-License-Identifier: MIT

#include "tests/integration/support/Home.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>

#include <stdexcept>

namespace spotwell
{

namespace
{

QString placeForHomes()
{
    const QFileInfo memory(QStringLiteral("/dev/shm"));
    return (memory.isDir() && memory.isWritable() ? memory.filePath() : QDir::tempPath()) +
           QStringLiteral("/spotwell-home-XXXXXX");
}

} // namespace

QByteArray contentOf(const QString& path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

Home::Home() : directory_(placeForHomes())
{
    if (!QDir(directory_.path()).mkdir(QStringLiteral("runtime")))
        throw std::runtime_error("no temporary directory");
    QFile::setPermissions(filePath(QStringLiteral("runtime")),
                          QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner);
}

QStringList Home::environment() const
{
    return {QStringLiteral("HOME=") + directory_.path(),
            QStringLiteral("XDG_CONFIG_HOME=") + filePath(QStringLiteral("config")),
            QStringLiteral("XDG_STATE_HOME=") + filePath(QStringLiteral("state")),
            QStringLiteral("XDG_RUNTIME_DIR=") + filePath(QStringLiteral("runtime"))};
}

QString Home::settingsFile() const
{
    return filePath(QStringLiteral("config/tarnbrooksoftware/spotwell.conf"));
}

void Home::writeSettings(const SettingsTexts& settings) const
{
    QDir(directory_.path()).mkpath(QStringLiteral("config/tarnbrooksoftware"));
    QByteArray text = "[General]\n";
    for (auto entry = settings.cbegin(); entry != settings.cend(); ++entry)
        text += entry.key().toUtf8() + '=' + entry.value().toUtf8() + '\n';
    QFile file(settingsFile());
    if (!file.open(QIODevice::WriteOnly) || file.write(text) != text.size())
        throw std::runtime_error("cannot write the settings");
}

SettingsTexts Home::settings() const
{
    SettingsTexts result;
    QList<QByteArray> lines = contentOf(settingsFile()).split('\n');
    if (lines.takeFirst() != "[General]" || lines.isEmpty() || !lines.takeLast().isEmpty())
        return {};
    for (const QByteArray& line : lines) {
        const qsizetype sign = line.indexOf('=');
        const QString key = QString::fromUtf8(line.first(qMax(sign, 0)));
        if (sign <= 0 || result.contains(key))
            return {};
        result.insert(key, QString::fromUtf8(line.mid(sign + 1)));
    }
    return result;
}

QString Home::logDirectory() const
{
    return filePath(QStringLiteral("state/tarnbrooksoftware/Logwright/debug_log_files"));
}

QStringList Home::logFiles() const
{
    const QDir directory(logDirectory());
    QStringList paths;
    for (const QString& name : directory.entryList(QDir::Files | QDir::Hidden, QDir::Name))
        paths.append(directory.filePath(name));
    return paths;
}

QByteArray Home::log() const
{
    QByteArray text;
    for (const QString& path : logFiles())
        text += contentOf(path);
    return text;
}

} // namespace spotwell
