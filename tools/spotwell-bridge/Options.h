// SPDX-FileCopyrightText: 2026 the spotwell developers
// SPDX-License-Identifier: MIT

#pragma once

#include "tools/spotwell-bridge/Endpoints.h"
#include "tools/spotwell-bridge/HeldAnswers.h"
#include "tools/spotwell-bridge/LoggerOnBus.h"

#include <QString>
#include <QStringList>

#include <chrono>
#include <optional>

namespace spotwell::bridge
{

/// What is printed of what arrives.
enum class Printing { nothing, json, text };

/// What the bridge is asked to be and do.
struct Options {
    LoggerIdentity identity{QStringLiteral("Logwright"), QStringLiteral("6.45")};
    AnswerRule answers;
    Printing printing = Printing::nothing;
    /// Where telnet clients are served; absent when they are not.
    std::optional<ListenAddress> telnet;
    /// Where spots are sent as datagrams; absent when they are not.
    std::optional<Target> n1mm;
    /// After how many notifications and commands the bridge ends; absent for never.
    std::optional<unsigned> count;
    /// After what time the bridge ends; absent for never.
    std::optional<std::chrono::microseconds> duration;
};

/// How reading the command line ended: with options, with a text to show, or with a complaint.
struct CommandLine {
    std::optional<Options> options;
    QString text;
    QString complaint;
};

/// Reads the command line; the first argument is the program's name.
[[nodiscard]] CommandLine readCommandLine(const QStringList& arguments);

} // namespace spotwell::bridge
