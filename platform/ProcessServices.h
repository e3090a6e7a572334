// SPDX-FileCopyrightText: 2026 the spotwell developers
// SPDX-License-Identifier: MIT

#pragma once

#include <QString>
#include <QStringList>

namespace spotwell
{

/// What the program asks of its own process.
class ProcessServices
{
public:
    virtual ~ProcessServices() = default;
    /// Leads the standard error stream into the file at `path` from now on: created where it is missing,
    /// every write at its end. Where the file cannot be opened the stream stays as it was. Main thread,
    /// before other threads exist.
    virtual void reopenStandardError(const QString& path) = 0;
    /// The calling thread's call stack, innermost frame first, one text a frame. Any thread.
    [[nodiscard]] virtual QStringList callStackSymbols() const = 0;
};

} // namespace spotwell
