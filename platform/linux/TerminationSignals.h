#pragma once

#include <QSocketNotifier>

#include <functional>
#include <memory>

namespace spotwell
{

/// Turns SIGTERM, SIGINT and SIGHUP into a call on the main thread. One for the process, made on the main
/// thread.
class TerminationSignals
{
public:
    /// `requested` runs for each signal from now on, also for one that arrives before the event loop runs.
    explicit TerminationSignals(std::function<void()> requested);
    ~TerminationSignals();
    TerminationSignals(const TerminationSignals&) = delete;
    TerminationSignals& operator=(const TerminationSignals&) = delete;

private:
    std::function<void()> requested_;
    std::unique_ptr<QSocketNotifier> notifier_;
};

} // namespace spotwell
