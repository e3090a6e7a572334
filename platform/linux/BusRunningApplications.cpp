#include "platform/linux/BusRunningApplications.h"

namespace spotwell
{

BusRunningApplications::BusRunningApplications(SessionBus& bus, Log& log, std::chrono::milliseconds limit,
                                               Patience patience)
    : limit_(limit), directory_(bus, log, patience)
{
}

std::vector<RunningApplication> BusRunningApplications::runningApplications()
{
    const auto start = ApplicationDirectory::Clock::now();
    const auto end = start + limit_;
    {
        std::unique_lock lock(mutex_);
        if (!free_.wait_until(lock, end, [this] { return !busy_; }))
            return {};
        busy_ = true;
    }
    auto applications = directory_.list(end, start + limit_ * 4 / 5);
    {
        const std::lock_guard lock(mutex_);
        busy_ = false;
    }
    free_.notify_one();
    return applications;
}

} // namespace spotwell
