// SPDX-FileCopyrightText: 2026 the spotwell developers
// SPDX-License-Identifier: MIT

#pragma once

#include <QString>

#include <optional>

namespace spotwell
{

/// Runs a script that addresses another application.
class ScriptRunner
{
public:
    virtual ~ScriptRunner() = default;
    /// Compiles and runs `source` and waits for it to end on the calling thread, at most 120 s. The error
    /// message when it could not be compiled, its application is not there, or it answered with an error;
    /// nothing when it ran. From any thread but the main one.
    virtual std::optional<QString> run(const QString& source) = 0;
};

} // namespace spotwell
