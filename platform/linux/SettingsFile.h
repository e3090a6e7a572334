// SPDX-FileCopyrightText: 2026 the spotwell developers
// SPDX-License-Identifier: MIT

#pragma once

#include <QByteArray>
#include <QMap>
#include <QString>

namespace spotwell
{

/// Texts by their keys.
using SettingsTexts = QMap<QString, QString>;

/// What was found in a settings file.
struct SettingsContent {
    /// The keys that stand in no section of their own; a list is joined by commas.
    SettingsTexts texts;
    /// Why some of it or all could not be read; empty when all was, or when there is no file.
    QString trouble;
};

/// Reads a file in QSettings' INI format. Whatever stands at `path`, this neither waits for anybody nor takes
/// more memory than a file of a mebibyte needs.
[[nodiscard]] SettingsContent readSettingsFile(const QString& path);

/// Puts a file with these texts in the place of the one at `path` (of what it leads to, if it is a link), for
/// the user alone to read. At any moment there is the old file or the new one, whole. Makes missing
/// directories. Why that failed; empty when it did not.
[[nodiscard]] QString writeSettingsFile(const QString& path, const SettingsTexts& texts);

/// The texts as QSettings writes them.
[[nodiscard]] QByteArray settingsFileText(const SettingsTexts& texts);

} // namespace spotwell
