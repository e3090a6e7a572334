// SPDX-FileCopyrightText: 2026 the spotwell developers
// SPDX-License-Identifier: MIT

#pragma once

#include "platform/Log.h"
#include "platform/UserDefaults.h"
#include "platform/linux/SettingsFile.h"

#include <QTimer>

#include <optional>

namespace spotwell
{

/// The settings store in a file of QSettings' INI format.
///
/// The file is read once, when the first value is asked for. It is written as a whole at the end of the event
/// loop's turn in which something was set, when told, and when the store is destroyed; so what others write
/// to it meanwhile has an effect only when nothing is set any more. Where reading fails the settings count
/// as never written; where writing fails the texts are kept for the next attempt. Either is logged, writing
/// as often as the reason changes.
class SettingsUserDefaults final : public UserDefaults
{
public:
    SettingsUserDefaults(QString path, Log& log);
    ~SettingsUserDefaults() override;
    SettingsUserDefaults(const SettingsUserDefaults&) = delete;
    SettingsUserDefaults& operator=(const SettingsUserDefaults&) = delete;

    [[nodiscard]] std::optional<QString> string(const QString& key) const override;
    [[nodiscard]] bool boolean(const QString& key) const override;
    void setString(const QString& key, const QString& value) override;
    void setBoolean(const QString& key, bool value) override;

    /// Writes what was set since the last time.
    void save();

private:
    [[nodiscard]] SettingsTexts& texts() const;

    const QString path_;
    Log& log_;
    /// What the file has and what was set; absent before the file was read.
    mutable std::optional<SettingsTexts> texts_;
    bool isUnsaved_ = false;
    QString lastTrouble_;
    QTimer turnEnd_;
};

} // namespace spotwell
