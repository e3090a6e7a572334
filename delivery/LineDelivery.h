// SPDX-FileCopyrightText: 2026 the spotwell developers
// SPDX-License-Identifier: MIT

#pragma once

#include "delivery/LoggerPresence.h"
#include "platform/Log.h"
#include "platform/NotificationCenter.h"
#include "platform/ScriptRunner.h"

#include <QString>

#include <functional>

namespace spotwell
{

/// The lowest logger version that receives lines by notification.
inline constexpr double LogwrightVersionThreshold = 6.45;

/// The script that asks an older logger to take `line`: each backslash, apostrophe and double quote of the
/// line becomes one full stop.
[[nodiscard]] QString processSpotScript(const QString& line);

/// What the line delivery shows of its work. Called on the delivering thread; must not wait for the main one.
struct LineDeliveryDisplay {
    /// Has the main thread show whether the logger runs.
    std::function<void(bool)> setLogwrightRunning;
    /// Has the main thread append an entry to the console.
    std::function<void(const QString&)> postText;
};

/// Hands cluster spot lines, whole, to the logger.
class LineDelivery
{
public:
    LineDelivery(LoggerPresence& presence, NotificationCenter& notificationCenter, ScriptRunner& scriptRunner,
                 Log& log, LineDeliveryDisplay display);

    /// Delivers one line heard from the node `source`: by notification, by script to an older logger, or not
    /// at all where no logger runs. A script is waited for on the calling thread, which must not be the main
    /// one.
    void sendSpotLineToLogwright(const QString& line, const QString& source);

private:
    void runScript(const QString& line);

    LoggerPresence& presence_;
    NotificationCenter& notificationCenter_;
    ScriptRunner& scriptRunner_;
    Log& log_;
    LineDeliveryDisplay display_;
};

} // namespace spotwell
