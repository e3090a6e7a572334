// SPDX-FileCopyrightText: 2026 the spotwell developers
// SPDX-License-Identifier: MIT

#pragma once

#include "platform/Log.h"
#include "platform/RunningApplications.h"
#include "platform/linux/bus/ApplicationDirectory.h"

#include <chrono>
#include <condition_variable>
#include <mutex>
#include <thread>

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

    /// What bounds each call as a whole.
    struct Limits {
        std::chrono::milliseconds call{250};
        /// For calls on the window's thread, all but the first of them: that comes before there is a window,
        /// and the others would freeze it.
        std::chrono::milliseconds windowCall{80};
    };

    /// How much of a call's limit the applications have to answer. The rest is kept from them, so that a
    /// caller who waited behind another still has the time to hear the bus itself.
    [[nodiscard]] static constexpr std::chrono::milliseconds
    applicationsShare(std::chrono::milliseconds limit)
    {
        return limit * 4 / 5;
    }

    /// The thread it is made on counts as the window's.
    BusRunningApplications(SessionBus& bus, Log& log, Limits limits, Patience patience);
    BusRunningApplications(SessionBus& bus, Log& log) : BusRunningApplications(bus, log, Limits{}, Patience{})
    {
    }

    std::vector<RunningApplication> runningApplications() override;

private:
    [[nodiscard]] std::chrono::milliseconds limitOfCall();

    const Limits limits_;
    const std::thread::id windowThread_ = std::this_thread::get_id();
    bool isWindowOpen_ = false;      // used by that thread alone
    ApplicationDirectory directory_; // only while busy_ is the caller's own
    std::mutex mutex_;
    std::condition_variable free_;
    bool busy_ = false;
};

} // namespace spotwell
