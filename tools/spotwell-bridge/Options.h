#pragma once

#include <QString>
#include <QStringList>

#include <chrono>
#include <optional>

namespace spotwell
{

/// What the bridge is asked to be and do.
struct BridgeOptions {
    /// Whether what arrives is printed.
    bool print = false;
    QString displayName = QStringLiteral("Logwright");
    /// Absent for an application that gives no version.
    std::optional<QString> version = QStringLiteral("6.45");
    /// What processSpot is answered with, as an error; absent for success.
    std::optional<QString> scriptError;
    /// How long the answer to processSpot is held back.
    std::chrono::microseconds scriptDelay{0};
    /// After how many notifications and commands the bridge ends; absent for never.
    std::optional<unsigned> count;
    /// After what time the bridge ends; absent for never.
    std::optional<std::chrono::microseconds> duration;
};

/// How reading the command line ended: with options, with a text to show, or with a complaint.
struct BridgeCommandLine {
    std::optional<BridgeOptions> options;
    QString help;
    QString complaint;
};

/// Reads the command line; the first argument is the program's name.
[[nodiscard]] BridgeCommandLine readBridgeOptions(const QStringList& arguments);

} // namespace spotwell
