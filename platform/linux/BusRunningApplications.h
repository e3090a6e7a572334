#pragma once

#include "platform/Log.h"
#include "platform/RunningApplications.h"
#include "platform/linux/ApplicationDirectory.h"

#include <chrono>
#include <condition_variable>
#include <mutex>

namespace spotwell
{

/// The applications of the session bus that answer to com.tarnbrooksoftware.Application
/// (docs/logger-interface.md).
///
/// Works on the calling thread, for one caller at a time: a second one waits its turn, within its own time
/// limit.
class BusRunningApplications final : public RunningApplications
{
public:
    using Patience = ApplicationDirectory::Patience;

    /// `limit` bounds each call as a whole. Some of it is kept from the applications, so that a caller who
    /// waited behind another still has the time to hear the bus itself.
    BusRunningApplications(SessionBus& bus, Log& log, std::chrono::milliseconds limit, Patience patience);
    BusRunningApplications(SessionBus& bus, Log& log)
        : BusRunningApplications(bus, log, std::chrono::milliseconds{250}, Patience{})
    {
    }

    std::vector<RunningApplication> runningApplications() override;

private:
    const std::chrono::milliseconds limit_;
    ApplicationDirectory directory_; // only while busy_ is the caller's own
    std::mutex mutex_;
    std::condition_variable free_;
    bool busy_ = false;
};

} // namespace spotwell
