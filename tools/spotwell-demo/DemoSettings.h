// SPDX-FileCopyrightText: 2026 the spotwell developers
// SPDX-License-Identifier: MIT

#pragma once

#include "feeds/FeedAddresses.h"
#include "platform/UserDefaults.h"

#include <QHash>

namespace spotwell
{

/// The settings of a demonstration: given at its start, kept in memory, gone with it. The user's own stay
/// untouched.
class DemoSettings final : public UserDefaults
{
public:
    /// A feed whose address is empty is switched off.
    DemoSettings(const QString& host, const QString& port, const FeedAddresses& feeds, bool dark)
        : strings_{{QStringLiteral("dxcluster"), host},
                   {QStringLiteral("port"), port},
                   {QStringLiteral("callsign"), QStringLiteral("N0CALL")}},
          booleans_{{QStringLiteral("reconnect"), true},
                    {QStringLiteral("pota"), !feeds.pota.isEmpty()},
                    {QStringLiteral("skimmers"), true},
                    {QStringLiteral("dxsummit"), !feeds.dxsummit.isEmpty()},
                    {QStringLiteral("wsprnet"), !feeds.wsprnet.isEmpty()},
                    {QStringLiteral("dark"), dark}}
    {
    }

    [[nodiscard]] std::optional<QString> string(const QString& key) const override
    {
        const auto found = strings_.constFind(key);
        return found == strings_.constEnd() ? std::nullopt : std::optional{*found};
    }
    [[nodiscard]] bool boolean(const QString& key) const override { return booleans_.value(key); }
    void setString(const QString& key, const QString& value) override { strings_[key] = value; }
    void setBoolean(const QString& key, bool value) override { booleans_[key] = value; }

private:
    QHash<QString, QString> strings_;
    QHash<QString, bool> booleans_;
};

} // namespace spotwell
