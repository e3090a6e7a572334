// SPDX-FileCopyrightText: 2026 the spotwell developers
// SPDX-License-Identifier: MIT

#pragma once

#include <QMap>
#include <QString>
#include <QStringList>
#include <QTemporaryDir>

namespace spotwell
{

/// Settings by their keys, as they stand in the file.
using SettingsTexts = QMap<QString, QString>;

/// What is in the file; empty when it cannot be read.
[[nodiscard]] QByteArray contentOf(const QString& path);

/// A user's directories in a temporary place, with what the program keeps there.
class Home
{
public:
    Home();

    /// The variables, "NAME=VALUE", that lead the program here.
    [[nodiscard]] QStringList environment() const;
    [[nodiscard]] QString filePath(const QString& name) const { return directory_.filePath(name); }

    [[nodiscard]] QString settingsFile() const;
    void writeSettings(const SettingsTexts& settings) const;
    /// The file's settings; empty when it is not of the one expected form.
    [[nodiscard]] SettingsTexts settings() const;

    [[nodiscard]] QString logDirectory() const;
    /// Paths of the log files, the oldest first.
    [[nodiscard]] QStringList logFiles() const;
    /// All log files, one after the other.
    [[nodiscard]] QByteArray log() const;

private:
    /// In memory where possible: the program's last act is to bring its settings onto the disk, and how busy
    /// the disk is is not what the tests measure.
    QTemporaryDir directory_;
};

} // namespace spotwell
