#pragma once

#include "platform/Log.h"
#include "platform/UserDefaults.h"

#include <QSettings>

namespace spotwell
{

/// The settings store in the organisation's and program's file below the user's configuration directory
/// ($XDG_CONFIG_HOME, ~/.config), in QSettings' native format.
class SettingsUserDefaults final : public UserDefaults
{
public:
    SettingsUserDefaults(const QString& organization, const QString& application, Log& log);
    ~SettingsUserDefaults() override;
    SettingsUserDefaults(const SettingsUserDefaults&) = delete;
    SettingsUserDefaults& operator=(const SettingsUserDefaults&) = delete;

    [[nodiscard]] std::optional<QString> string(const QString& key) const override;
    [[nodiscard]] bool boolean(const QString& key) const override;
    void setString(const QString& key, const QString& value) override;
    void setBoolean(const QString& key, bool value) override;

    /// Writes the file now; a failure goes to the log.
    void save();

private:
    Log& log_;
    QSettings settings_;
};

} // namespace spotwell
