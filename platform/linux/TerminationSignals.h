// SPDX-FileCopyrightText: 2026 the spotwell developers
// SPDX-License-Identifier: MIT

#pragma once

#include <QSocketNotifier>

#include <functional>
#include <memory>

namespace spotwell
{

/// Turns SIGTERM, SIGINT and SIGHUP into a call on the main thread. One for the process, made on the main
/// thread; when it is destroyed the process is about to end, and they are ignored.
///
/// A main thread that somebody else holds, a display that hangs or a clipboard's owner, ends nothing. So the
/// first signal sets a bound: SIGALRM ends the process when that is not lifted in time.
class TerminationSignals
{
public:
    /// Seconds.
    static constexpr unsigned bound = 5;

    /// `requested` runs for each signal from now on, also for one that arrives before the event loop runs.
    explicit TerminationSignals(std::function<void()> requested);
    ~TerminationSignals();
    TerminationSignals(const TerminationSignals&) = delete;
    TerminationSignals& operator=(const TerminationSignals&) = delete;

    /// The end has come so far that it takes what it takes.
    static void liftBound();

private:
    std::function<void()> requested_;
    std::unique_ptr<QSocketNotifier> notifier_;
};

} // namespace spotwell
