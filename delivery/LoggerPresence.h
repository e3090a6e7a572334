// SPDX-FileCopyrightText: 2026 the spotwell developers
// SPDX-License-Identifier: MIT

#pragma once

#include "platform/Log.h"
#include "platform/RunningApplications.h"

#include <QString>

namespace spotwell
{

/// The displayed name of the logging application.
[[nodiscard]] inline QString loggerName()
{
    return QStringLiteral("Logwright");
}

/// Tells whether an application runs, and which version of it.
class LoggerPresence
{
public:
    LoggerPresence(RunningApplications& applications, Log& log);

    /// Whether an application whose displayed name is exactly `name` runs and its information could be read;
    /// only the first of that name in the system's list counts. On true its version text, read as a leading
    /// decimal number (0 without one), is stored through `version`; on false the target stays as it is. With
    /// `logIt` a finding goes to the log. From any thread.
    [[nodiscard]] bool appIsRunning(const QString& name, bool logIt, double* version) const;

private:
    RunningApplications& applications_;
    Log& log_;
};

} // namespace spotwell
