// SPDX-FileCopyrightText: 2026 the spotwell developers
// SPDX-License-Identifier: MIT

#include "tools/spotwell-bridge/JsonReport.h"

#include "tools/spotwell-bridge/JsonLine.h"

namespace spotwell::bridge
{

namespace
{

QString timeText(TimePoint time)
{
    return isoTime(time.time_since_epoch().count());
}

QJsonValue jsonValue(const Value& value)
{
    if (const auto* text = std::get_if<QString>(&value))
        return *text;
    if (const auto* number = std::get_if<double>(&value))
        return *number;
    if (const auto* time = std::get_if<TimePoint>(&value))
        return timeText(*time);
    return {};
}

QByteArray finish(JsonLine& line, TimePoint received)
{
    line.add(QStringLiteral("received"), timeText(received));
    return line.text();
}

} // namespace

QByteArray notificationJson(const Notification& notification, TimePoint received)
{
    JsonLine userInfo;
    for (const auto& [key, value] : notification.userInfo)
        userInfo.add(key, jsonValue(value));
    JsonLine line;
    line.add(QStringLiteral("notification"), notification.name);
    line.add(QStringLiteral("object"), notification.object);
    line.add(QStringLiteral("userInfo"), userInfo);
    return finish(line, received);
}

QByteArray commandJson(const QString& text, TimePoint received)
{
    JsonLine line;
    line.add(QStringLiteral("command"), QStringLiteral("processSpot"));
    line.add(QStringLiteral("text"), text);
    return finish(line, received);
}

QByteArray readyJson(const LoggerIdentity& identity, const QString& telnet, bool queued)
{
    JsonLine line;
    line.add(QStringLiteral("ready"), true);
    line.add(QStringLiteral("name"), QString::fromLatin1(loggerBusName));
    line.add(QStringLiteral("displayName"), identity.displayName);
    if (identity.version)
        line.add(QStringLiteral("version"), *identity.version);
    if (!telnet.isEmpty())
        line.add(QStringLiteral("telnet"), telnet);
    if (queued)
        line.add(QStringLiteral("queued"), true);
    return line.text();
}

} // namespace spotwell::bridge
