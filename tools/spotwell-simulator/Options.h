// SPDX-FileCopyrightText: 2026 the spotwell developers
// SPDX-License-Identifier: MIT

#pragma once

#include "platform/Time.h"
#include "tools/spotwell-simulator/ScenarioWords.h"
#include "tools/spotwell-simulator/Server.h"

#include <QString>
#include <QStringList>

#include <optional>
#include <vector>

namespace spotwell::simulator
{

/// What the command line asks for.
struct Options {
    /// What to play, and where.
    struct Play {
        /// A path or the name of a shipped scenario.
        QString scenario;
        Endpoint endpoint;

        bool operator==(const Play&) const = default;
    };

    std::vector<Play> plays;
    /// The files that services speak TLS with; null where none were given.
    QString certificate;
    QString key;
    bool once = false;
    bool list = false;
    bool help = false;
    bool version = false;
    /// When to end in any case.
    std::optional<Seconds> timeout;
    Variables variables;

    /// What is wrong with the command line; null when nothing is.
    QString error;
};

/// Reads the command line's arguments, the program's name not among them.
Options parseOptions(const QStringList& arguments);

/// The text for --help.
QString helpText();

/// The file that `name` means: itself when it holds a slash or is a file, else the shipped scenario of that
/// name in `folder`.
QString scenarioPath(const QString& name, const QString& folder);

/// The scenarios in `folder`, a line each: the name and the first comment of the file.
QString listScenarios(const QString& folder);

} // namespace spotwell::simulator
