// SPDX-FileCopyrightText: 2026 the spotwell developers
// SPDX-License-Identifier: MIT

#include "platform/linux/SettingsUserDefaults.h"

#include <QVariant>

#include <utility>

namespace spotwell
{

SettingsUserDefaults::SettingsUserDefaults(QString path, Log& log) : path_(std::move(path)), log_(log)
{
    turnEnd_.setSingleShot(true);
    turnEnd_.setInterval(0);
    turnEnd_.callOnTimeout([this] { save(); });
}

SettingsUserDefaults::~SettingsUserDefaults()
{
    save();
}

void SettingsUserDefaults::save()
{
    turnEnd_.stop();
    if (!isUnsaved_)
        return;
    const QString trouble = writeSettingsFile(path_, texts());
    isUnsaved_ = !trouble.isEmpty();
    if (trouble != std::exchange(lastTrouble_, trouble) && isUnsaved_)
        log_.line(QStringLiteral("save: could not write %1 - %2").arg(path_, trouble));
}

std::optional<QString> SettingsUserDefaults::string(const QString& key) const
{
    const auto found = texts().constFind(key);
    return found == texts().constEnd() ? std::nullopt : std::optional{*found};
}

bool SettingsUserDefaults::boolean(const QString& key) const
{
    return QVariant(texts().value(key)).toBool();
}

void SettingsUserDefaults::setString(const QString& key, const QString& value)
{
    texts().insert(key, value);
    isUnsaved_ = true;
    turnEnd_.start();
}

void SettingsUserDefaults::setBoolean(const QString& key, bool value)
{
    setString(key, value ? QStringLiteral("true") : QStringLiteral("false"));
}

SettingsTexts& SettingsUserDefaults::texts() const
{
    if (!texts_) {
        SettingsContent content = readSettingsFile(path_);
        if (!content.trouble.isEmpty())
            log_.line(QStringLiteral("read: could not read all of %1 - %2").arg(path_, content.trouble));
        texts_ = std::move(content.texts);
    }
    return *texts_;
}

} // namespace spotwell
