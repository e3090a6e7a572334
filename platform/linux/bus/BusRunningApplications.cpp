// SPDX-FileCopyrightText: 2026 the spotwell developers
// SPDX-License-Identifier: MIT

#include "platform/linux/bus/BusRunningApplications.h"

#include <utility>

namespace spotwell
{

BusRunningApplications::BusRunningApplications(SessionBus& bus, Log& log, Limits limits, Patience patience)
    : limits_(limits), directory_(bus, log, patience)
{
}

std::vector<RunningApplication> BusRunningApplications::runningApplications()
{
    const auto start = ApplicationDirectory::Clock::now();
    const auto limit = limitOfCall();
    const auto end = start + limit;
    {
        std::unique_lock lock(mutex_);
        if (!free_.wait_until(lock, end, [this] { return !busy_; }))
            return {};
        busy_ = true;
    }
    auto applications = directory_.list(end, start + applicationsShare(limit));
    {
        const std::lock_guard lock(mutex_);
        busy_ = false;
    }
    free_.notify_one();
    return applications;
}

std::chrono::milliseconds BusRunningApplications::limitOfCall()
{
    if (std::this_thread::get_id() != windowThread_ || !std::exchange(isWindowOpen_, true))
        return limits_.call;
    return limits_.windowCall;
}

} // namespace spotwell
