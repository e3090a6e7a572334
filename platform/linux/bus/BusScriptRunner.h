// SPDX-FileCopyrightText: 2026 the spotwell developers
// SPDX-License-Identifier: MIT

#pragma once

#include "platform/Log.h"
#include "platform/RunningApplications.h"
#include "platform/ScriptRunner.h"
#include "platform/linux/WakeUp.h"
#include "platform/linux/bus/BusConnection.h"
#include "platform/linux/bus/ScriptText.h"

#include <chrono>
#include <mutex>

namespace spotwell
{

/// Scripts as method calls on the session bus (docs/logger-interface.md). One script runs at a time.
class BusScriptRunner final : public ScriptRunner
{
public:
    /// `limit` is how long an application may take to answer.
    BusScriptRunner(SessionBus& bus, RunningApplications& applications, Log& log,
                    std::chrono::milliseconds limit = std::chrono::seconds{120});

    std::optional<QString> run(const QString& source) override;
    /// Makes the script that runs, and all later ones, end at once with an error. Any thread.
    void cancel();

private:
    std::optional<QString> call(const ScriptText& script, const QString& address);

    RunningApplications& applications_;
    Log& log_;
    const std::chrono::milliseconds limit_;
    WakeUp cancelled_; // stays readable once cancelled
    std::mutex mutex_; // guards the connection
    BusConnection connection_;
};

} // namespace spotwell
