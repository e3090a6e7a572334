#include "platform/linux/SettingsUserDefaults.h"

namespace spotwell
{

SettingsUserDefaults::SettingsUserDefaults(const QString& organization, const QString& application, Log& log)
    : log_(log), settings_(organization, application)
{
    // The user's own file and no other: a key that was never written has no value.
    settings_.setFallbacksEnabled(false);
}

SettingsUserDefaults::~SettingsUserDefaults()
{
    save();
}

void SettingsUserDefaults::save()
{
    settings_.sync();
    if (settings_.status() != QSettings::NoError)
        log_.line(QStringLiteral("save: could not write %1").arg(settings_.fileName()));
}

std::optional<QString> SettingsUserDefaults::string(const QString& key) const
{
    const QVariant value = settings_.value(key);
    if (!value.isValid())
        return std::nullopt;
    // A hand-edited text with a bare comma is read as a list.
    return value.toStringList().join(QLatin1Char(','));
}

bool SettingsUserDefaults::boolean(const QString& key) const
{
    return settings_.value(key).toBool();
}

void SettingsUserDefaults::setString(const QString& key, const QString& value)
{
    settings_.setValue(key, value);
}

void SettingsUserDefaults::setBoolean(const QString& key, bool value)
{
    settings_.setValue(key, value);
}

} // namespace spotwell
