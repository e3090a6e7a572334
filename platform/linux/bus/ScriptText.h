// SPDX-FileCopyrightText: 2026 the spotwell developers
// SPDX-License-Identifier: MIT

#pragma once

#include <QString>

#include <variant>

namespace spotwell
{

/// A script that asks one application to run one command on one text.
struct ScriptText {
    /// The displayed name of the application.
    QString application;
    /// A D-Bus member name.
    QString command;
    QString text;
};

/// Why a text is not such a script, in words for the user.
struct ScriptTextError {
    QString message;
};

/// Reads a script of exactly this shape, each line ended by a line feed (the last one's may be missing):
///
///     tell application "NAME"
///     COMMAND "TEXT"
///     end tell
///
/// The keywords may be in any case; blanks around and between the words, and empty lines at the end, do not
/// matter. NAME and TEXT hold neither a double quote nor a backslash.
[[nodiscard]] std::variant<ScriptText, ScriptTextError> readScriptText(const QString& source);

} // namespace spotwell
