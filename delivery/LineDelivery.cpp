// SPDX-FileCopyrightText: 2026 the spotwell developers
// SPDX-License-Identifier: MIT

#include "delivery/LineDelivery.h"

#include "util/StringAdditions.h"

#include <utility>

namespace spotwell
{

QString processSpotScript(const QString& line)
{
    const QString escaped = replaceCharactersInSet(line, u"\\'\"", QStringLiteral("."));
    return QStringLiteral("Tell application \"Logwright\"\nprocessSpot \"") + escaped +
           QStringLiteral("\"\nend tell\n");
}

LineDelivery::LineDelivery(LoggerPresence& presence, NotificationCenter& notificationCenter,
                           ScriptRunner& scriptRunner, Log& log, LineDeliveryDisplay display)
    : presence_(presence),
      notificationCenter_(notificationCenter),
      scriptRunner_(scriptRunner),
      log_(log),
      display_(std::move(display))
{
}

void LineDelivery::sendSpotLineToLogwright(const QString& line, const QString& source)
{
    if (line.isEmpty())
        return;
    double version = 0;
    const bool running = presence_.appIsRunning(loggerName(), false, &version);
    if (!running)
        log_.line(QStringLiteral("Logwright is not running"));
    display_.setLogwrightRunning(running);
    if (!running)
        return;
    if (version >= LogwrightVersionThreshold)
        notificationCenter_.post(QStringLiteral("com.tarnbrooksoftware.spotwell_line"),
                                 QStringLiteral("string object"),
                                 {{QStringLiteral("line"), line}, {QStringLiteral("source"), source}});
    else
        runScript(line);
}

void LineDelivery::runScript(const QString& line)
{
    const std::optional<QString> error = scriptRunner_.run(processSpotScript(line));
    if (!error)
        return;
    const QString text = QStringLiteral("AppleScript Error:") + *error;
    log_.line(text);
    display_.postText(text);
}

} // namespace spotwell
