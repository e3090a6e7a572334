// SPDX-FileCopyrightText: 2026 the spotwell developers
// SPDX-License-Identifier: MIT

#pragma once

#include <QString>
#include <QStringList>

namespace spotwell
{

/// What the command line asks for. Without a text and a complaint: the program itself.
struct CommandLine {
    /// For the standard output, after which the program ends.
    QString text;
    /// What is wrong with it; empty when nothing is.
    QString complaint;
};

/// Reads the arguments, the program's name first. The toolkit's own options pass. Needs no application
/// object.
[[nodiscard]] CommandLine readCommandLine(const QStringList& arguments, const QString& version);

} // namespace spotwell
