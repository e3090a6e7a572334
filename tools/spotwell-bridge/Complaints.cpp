// SPDX-FileCopyrightText: 2026 the spotwell developers
// SPDX-License-Identifier: MIT

#include "tools/spotwell-bridge/Complaints.h"

#include <utility>

namespace spotwell::bridge
{

namespace
{

using namespace std::chrono_literals;

constexpr auto interval = 1s;

} // namespace

Complaints::Complaints(Log& log) : log_(log), alarm_([this] { tellCounts(); }) {}

void Complaints::complain(const QString& text)
{
    const auto [entry, isNew] = counts_.try_emplace(text, 0);
    if (!isNew) {
        ++entry->second;
        return;
    }
    log_.line(text);
    if (counts_.size() == 1)
        alarm_.set(Alarm::Clock::now() + interval);
}

void Complaints::tellCounts()
{
    for (auto entry = counts_.begin(); entry != counts_.end();) {
        if (entry->second == 0) {
            entry = counts_.erase(entry);
            continue;
        }
        log_.line(QStringLiteral("%1 (%2 more)").arg(entry->first).arg(std::exchange(entry->second, 0)));
        ++entry;
    }
    if (!counts_.empty())
        alarm_.set(Alarm::Clock::now() + interval);
}

} // namespace spotwell::bridge
