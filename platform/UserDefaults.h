// SPDX-FileCopyrightText: 2026 the spotwell developers
// SPDX-License-Identifier: MIT

#pragma once

#include <QString>

#include <optional>

namespace spotwell
{

/// The user's settings store. Main thread only. What is set is kept by the store in its own time, at the
/// latest when it is destroyed.
class UserDefaults
{
public:
    virtual ~UserDefaults() = default;
    /// The text under `key`; absent when none was ever written.
    [[nodiscard]] virtual std::optional<QString> string(const QString& key) const = 0;
    /// The Boolean under `key`; false when none was ever written.
    [[nodiscard]] virtual bool boolean(const QString& key) const = 0;
    virtual void setString(const QString& key, const QString& value) = 0;
    virtual void setBoolean(const QString& key, bool value) = 0;
};

} // namespace spotwell
