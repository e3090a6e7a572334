// SPDX-FileCopyrightText: 2026 the spotwell developers
// SPDX-License-Identifier: MIT

#pragma once

#include "platform/Log.h"
#include "platform/Time.h"

#include <QByteArray>

namespace spotwell
{

/// Who writes an entry.
struct LogOrigin {
    QByteArray process;
    int processId = 0;
    int threadId = 0;
};

/// One entry as it stands in the log, its line feed included: local date and time with the offset from UTC,
/// process, process and thread numbers, text.
///
/// An entry begins in the first column and its further lines with a tab, so no text can pass for another
/// entry. Control characters, line separators and characters that reorder a line are written as escapes. A
/// text of more than 32,768 characters is cut, with a note of how many are missing.
[[nodiscard]] QByteArray logEntry(const QString& text, TimePoint time, const LogOrigin& origin);

/// The diagnostics log on the process's standard error stream, wherever that leads at the moment of the call.
///
/// Where an entry cannot be written, on a full disk or to a pipe that nobody reads, it is lost, and the next
/// one that can be written comes after one that says how many were. Nobody waits for a reader longer than
/// 50 ms, and not again before that reader has taken something.
class StandardErrorLog final : public Log
{
public:
    void line(const QString& text) override;
    /// Sends Qt's own messages of the whole process to this same log, in the same form.
    static void takeQtMessages();
};

} // namespace spotwell
