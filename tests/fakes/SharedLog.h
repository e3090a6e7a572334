// SPDX-FileCopyrightText: 2026 the spotwell developers
// SPDX-License-Identifier: MIT

#pragma once

#include "platform/Log.h"

#include <QStringList>

#include <mutex>

namespace spotwell
{

/// Keeps every entry as it was given, from any thread.
class SharedLog final : public Log
{
public:
    void line(const QString& text) override
    {
        const std::lock_guard lock(mutex_);
        lines_.append(text);
    }
    [[nodiscard]] QStringList lines() const
    {
        const std::lock_guard lock(mutex_);
        return lines_;
    }
    [[nodiscard]] qsizetype count(const QString& part) const { return lines().filter(part).size(); }

private:
    mutable std::mutex mutex_;
    QStringList lines_;
};

} // namespace spotwell
