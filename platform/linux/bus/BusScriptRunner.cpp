// SPDX-FileCopyrightText: 2026 the spotwell developers
// SPDX-License-Identifier: MIT

#include "platform/linux/bus/BusScriptRunner.h"

#include "platform/linux/bus/ApplicationProperties.h"
#include "platform/linux/bus/BusText.h"

#include <algorithm>

namespace spotwell
{

namespace
{

constexpr const char* scriptingInterface = "com.tarnbrooksoftware.Scripting";

QString cancelledText()
{
    return QStringLiteral("The script was cancelled.");
}

} // namespace

BusScriptRunner::BusScriptRunner(SessionBus& bus, RunningApplications& applications, Log& log,
                                 std::chrono::milliseconds limit)
    : applications_(applications), log_(log), limit_(limit), connection_(bus, "scripts")
{
}

void BusScriptRunner::cancel()
{
    cancelled_.wake();
}

std::optional<QString> BusScriptRunner::run(const QString& source)
{
    const auto read = readScriptText(source);
    if (const auto* error = std::get_if<ScriptTextError>(&read))
        return error->message;
    const auto& script = std::get<ScriptText>(read);
    if (cancelled_.isAwake())
        return cancelledText();

    const auto running = applications_.runningApplications();
    const auto found =
        std::find_if(running.begin(), running.end(), [&script](const RunningApplication& application) {
            return application.displayName == script.application;
        });
    if (found == running.end())
        return QStringLiteral("%1 isn’t running.").arg(script.application);
    const std::lock_guard lock(mutex_);
    return call(script, found->address);
}

std::optional<QString> BusScriptRunner::call(const ScriptText& script, const QString& address)
{
    if (!connection_.open())
        return QStringLiteral("There is no session bus.");
    sd_bus_message* created = nullptr;
    sd_bus_message_new_method_call(connection_.get(), &created, busSafeText(address).c_str(), applicationPath,
                                   scriptingInterface, busSafeText(script.command).c_str());
    const BusMessage message(created);
    if (message)
        sd_bus_message_append(message.get(), "s", busSafeText(script.text).c_str());

    const BusReply reply = connection_.call(message.get(), BusConnection::Clock::now() + limit_, &cancelled_);
    switch (reply.end) {
    case BusReply::End::answered:
        return std::nullopt;
    case BusReply::End::failed:
        log_.line(QStringLiteral("run: %1 of %2 failed: %3").arg(script.command, address, reply.errorName));
        return reply.error;
    case BusReply::End::lost:
        return QStringLiteral("The connection to the session bus was lost.");
    case BusReply::End::woken:
        return cancelledText();
    case BusReply::End::late:
        break;
    }
    const double seconds = std::chrono::duration<double>(limit_).count();
    return QStringLiteral("%1 did not answer within %2 s.").arg(script.application, QString::number(seconds));
}

} // namespace spotwell
