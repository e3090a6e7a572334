// SPDX-FileCopyrightText: 2026 the spotwell developers
// SPDX-License-Identifier: MIT

#include "delivery/LoggerPresence.h"

#include "util/StringAdditions.h"

#include <algorithm>

namespace spotwell
{

LoggerPresence::LoggerPresence(RunningApplications& applications, Log& log)
    : applications_(applications), log_(log)
{
}

bool LoggerPresence::appIsRunning(const QString& name, bool logIt, double* version) const
{
    if (name.isEmpty())
        return false;
    const std::vector<RunningApplication> running = applications_.runningApplications();
    const auto match =
        std::find_if(running.begin(), running.end(), [&name](const RunningApplication& application) {
            return application.displayName == name;
        });
    if (match == running.end() || !match->information)
        return false;
    const std::optional<QString>& versionText = match->information->shortVersion;
    *version = doubleValue(versionText.value_or(QString()));
    if (logIt)
        log_.line(QStringLiteral("appIsRunning:%1 Version %2 is running")
                      .arg(name, versionText.value_or(QStringLiteral("(null)"))));
    return true;
}

} // namespace spotwell
