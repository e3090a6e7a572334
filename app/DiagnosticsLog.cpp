// SPDX-FileCopyrightText: 2026 the spotwell developers
// SPDX-License-Identifier: MIT

#include "app/DiagnosticsLog.h"

#include <QDateTime>
#include <QFile>

#include <filesystem>
#include <system_error>
#include <utility>

namespace spotwell
{

DiagnosticsLog::DiagnosticsLog(Log& log, const Clock& clock, const MainQueue& mainQueue,
                               ProcessServices& process, QString version)
    : log_(log), clock_(clock), mainQueue_(mainQueue), process_(process), version_(std::move(version))
{
}

void DiagnosticsLog::createDebugDirectory() const
{
    const std::filesystem::path path(QFile::encodeName(_debugPath).toStdString());
    std::error_code error;
    if (std::filesystem::exists(path, error))
        return;
    std::filesystem::create_directories(path, error);
    if (error)
        log_.line(QStringLiteral("applicationDidFinishLaunching: error creating: %1 - %2")
                      .arg(_debugPath, QString::fromLocal8Bit(error.message().c_str())));
    else
        log_.line(QStringLiteral("applicationDidFinishLaunching: created: %1").arg(_debugPath));
}

void DiagnosticsLog::redirectConsoleLogToDocumentFolder()
{
    _debugLogFilePath = QStringLiteral("%1/%2 spotwell.txt").arg(_debugPath, debugTimeStamp());
    process_.reopenStandardError(_debugLogFilePath);
}

QString DiagnosticsLog::debugTimeStamp() const
{
    const auto milliseconds =
        std::chrono::floor<std::chrono::milliseconds>(clock_.now()).time_since_epoch().count();
    return QDateTime::fromMSecsSinceEpoch(milliseconds).toString(QStringLiteral("yyyyMMdd_HHmmss"));
}

QString DiagnosticsLog::displayLongVersionString() const
{
    return QLatin1Char('v') + version_;
}

void DiagnosticsLog::threadCheckWarning() const
{
    if (mainQueue_.isMainThread())
        return;
    log_.line(QStringLiteral("threadCheckWarning: called on background thread:\n") +
              process_.callStackSymbols().join(QLatin1Char('\n')));
}

} // namespace spotwell
