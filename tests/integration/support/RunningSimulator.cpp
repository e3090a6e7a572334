// SPDX-FileCopyrightText: 2026 the spotwell developers
// SPDX-License-Identifier: MIT

#include "tests/integration/support/RunningSimulator.h"

#include "tests/support/WaitUntil.h"

#include <QJsonDocument>

#include <stdexcept>

namespace spotwell
{

RunningSimulator::RunningSimulator(const QStringList& arguments)
{
    process_.setProcessChannelMode(QProcess::MergedChannels);
    process_.start(QStringLiteral(SIMULATOR), arguments);
    if (!waitUntil([this] { return report().contains('\n'); }))
        throw std::runtime_error("the simulator does not start");
    port_ = static_cast<std::uint16_t>(
        QJsonDocument::fromJson(report_.first(report_.indexOf('\n'))).object()[u"port"].toInt());
}

RunningSimulator::~RunningSimulator()
{
    process_.kill();
    process_.waitForFinished();
}

qsizetype RunningSimulator::count(QStringView event, QStringView key, const QJsonValue& value)
{
    qsizetype found = 0;
    for (const QByteArray& line : report().split('\n')) {
        const QJsonObject object = QJsonDocument::fromJson(line).object();
        if (object[u"event"].toString() == event && (key.isEmpty() || object[key] == value))
            ++found;
    }
    return found;
}

std::optional<int> RunningSimulator::waitForEnd(std::chrono::milliseconds deadline)
{
    if (!waitUntil([this] { return process_.state() == QProcess::NotRunning; }, deadline))
        return std::nullopt;
    return process_.exitCode();
}

QByteArray RunningSimulator::report()
{
    return report_ += process_.readAllStandardOutput();
}

} // namespace spotwell
