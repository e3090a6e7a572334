// SPDX-FileCopyrightText: 2026 the spotwell developers
// SPDX-License-Identifier: MIT

#include "tests/tools/bridge/clients/RunningBridge.h"

#include "tests/support/WaitUntil.h"

#include <QJsonDocument>

#include <stdexcept>

namespace spotwell::bridge
{

RunningBridge::RunningBridge(const PrivateBus& bus)
{
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    environment.insert(QStringLiteral("DBUS_SESSION_BUS_ADDRESS"), QString::fromStdString(bus.address()));
    process_.setProcessEnvironment(environment);
    process_.setStandardInputFile(QProcess::nullDevice());
    process_.start(QStringLiteral(SPOTWELL_BRIDGE),
                   {QStringLiteral("--print"), QStringLiteral("--telnet"), QStringLiteral("127.0.0.1:0")});
    (void)waitUntil([this] {
        printed_ += process_.readAllStandardOutput();
        return printed_.contains('\n') || process_.state() == QProcess::NotRunning;
    });
    const QJsonObject ready = QJsonDocument::fromJson(printed_.left(printed_.indexOf('\n'))).object();
    port_ = ready[u"telnet"].toString().section(u':', -1).toUShort();
    if (port_ == 0)
        throw std::runtime_error("spotwell-bridge does not listen: " + errors().toStdString());
}

RunningBridge::~RunningBridge()
{
    process_.kill();
    process_.waitForFinished();
}

bool RunningBridge::welcomes(const QString& callsign)
{
    const QByteArray name = callsign.toUtf8() + ' ';
    return waitUntil([&] {
        for (const QByteArray& line : errors().split('\n')) {
            if (line.contains(name) && line.contains("logged in"))
                return true;
        }
        return false;
    });
}

QList<QJsonObject> RunningBridge::spots()
{
    return notifications(u"com.tarnbrooksoftware.spotwell_spot");
}

QStringList RunningBridge::lines()
{
    QStringList result;
    for (const QJsonObject& line : notifications(u"com.tarnbrooksoftware.spotwell_line"))
        result.append(line[u"line"].toString());
    return result;
}

std::optional<int> RunningBridge::end()
{
    process_.terminate();
    if (!waitUntil([this] { return process_.state() == QProcess::NotRunning; }) ||
        process_.exitStatus() != QProcess::NormalExit)
        return std::nullopt;
    return process_.exitCode();
}

QByteArray RunningBridge::errors()
{
    return errors_ += process_.readAllStandardError();
}

QList<QJsonObject> RunningBridge::notifications(QStringView name)
{
    printed_ += process_.readAllStandardOutput();
    QList<QJsonObject> result;
    for (const QByteArray& line : printed_.left(printed_.lastIndexOf('\n') + 1).split('\n')) {
        const QJsonObject object = QJsonDocument::fromJson(line).object();
        if (object[u"notification"].toString() == name)
            result.append(object[u"userInfo"].toObject());
    }
    return result;
}

} // namespace spotwell::bridge
