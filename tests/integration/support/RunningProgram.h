// SPDX-FileCopyrightText: 2026 the spotwell developers
// SPDX-License-Identifier: MIT

#pragma once

#include "tests/integration/support/Home.h"
#include "tests/support/Sanitizers.h"

#include <QProcess>
#include <QProcessEnvironment>

#include <chrono>
#include <optional>

namespace spotwell
{

/// The test's own environment, with what leads a program with a window to this home and this bus, and with
/// `variables`, "NAME=VALUE".
[[nodiscard]] QProcessEnvironment programEnvironment(const Home& home, const std::string& busAddress,
                                                     const QStringList& variables);

/// The shipped program as a process; killed at the latest when destroyed.
class RunningProgram
{
public:
    /// Starts it. `variables`, "NAME=VALUE", are added to the test's own environment and to the home's;
    /// `launcher` is a command that becomes the one behind it.
    RunningProgram(const Home& home, const std::string& busAddress, const QStringList& variables = {},
                   const QStringList& launcher = {});
    ~RunningProgram();
    RunningProgram(const RunningProgram&) = delete;
    RunningProgram& operator=(const RunningProgram&) = delete;

    [[nodiscard]] qint64 processId() const { return process_.processId(); }
    void signal(int number) const;
    [[nodiscard]] bool isRunning() const { return process_.state() != QProcess::NotRunning; }
    /// Waits for its end. The exit code; absent when a signal ended it or it does not end.
    std::optional<int> waitForEnd();
    /// Ends it with a signal. How long that took; absent when it did not end with exit code 0.
    std::optional<std::chrono::duration<double>> end(int signalNumber);
    /// What came on the standard error stream it was started with.
    QByteArray standardError();
    /// Lets it hang: this returns when nothing of it runs any more. signal(SIGCONT) lets it go on.
    void stop() const;
    /// Waits until it is stopped; false when it goes on.
    [[nodiscard]] bool waitUntilStopped() const;
    /// The memory it has in use, in KiB.
    [[nodiscard]] qint64 residentKiB() const;

private:
    QProcess process_;
    QByteArray standardError_;
};

} // namespace spotwell
