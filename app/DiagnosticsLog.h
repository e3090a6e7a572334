// SPDX-FileCopyrightText: 2026 the spotwell developers
// SPDX-License-Identifier: MIT

#pragma once

#include "platform/Log.h"
#include "platform/ProcessServices.h"
#include "platform/Queues.h"
#include "platform/Time.h"

#include <QString>

namespace spotwell
{

/// Where the diagnostics of a run go: a new file per run in one directory.
class DiagnosticsLog
{
public:
    /// `version` is the program's own, "1.2.3" say.
    DiagnosticsLog(Log& log, const Clock& clock, const MainQueue& mainQueue, ProcessServices& process,
                   QString version);

    /// Keeps `path` as the log directory.
    void setDebugPath(const QString& path) { _debugPath = path; }
    /// Makes the log directory, with its parents, where nothing stands in its place; logs what came of it.
    void createDebugDirectory() const;
    /// Leads standard error, and with it every log line from here on, into this run's own file.
    void redirectConsoleLogToDocumentFolder();

    /// The current local date and time in the pattern yyyyMMdd_HHmmss.
    [[nodiscard]] QString debugTimeStamp() const;
    /// The letter v and the version.
    [[nodiscard]] QString displayLongVersionString() const;
    /// Logs a warning with the call stack when the calling thread is not the main one. From any thread.
    void threadCheckWarning() const;

    [[nodiscard]] const QString& debugPath() const { return _debugPath; }
    /// This run's log file; empty before the redirection.
    [[nodiscard]] const QString& debugLogFilePath() const { return _debugLogFilePath; }

private:
    Log& log_;
    const Clock& clock_;
    const MainQueue& mainQueue_;
    ProcessServices& process_;
    const QString version_;
    QString _debugPath;
    QString _debugLogFilePath;
};

} // namespace spotwell
