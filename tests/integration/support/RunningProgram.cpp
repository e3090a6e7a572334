// SPDX-FileCopyrightText: 2026 the spotwell developers
// SPDX-License-Identifier: MIT

#include "tests/integration/support/RunningProgram.h"

#include "tests/support/WaitUntil.h"

#include <QDir>
#include <QFile>

#include <algorithm>
#include <csignal>
#include <cstring>
#include <stdexcept>

namespace spotwell
{

namespace
{

/// What a line of the status of a process or a thread says; empty without that line.
QByteArray statusIn(const QString& directory, const char* name)
{
    QFile file(directory + QStringLiteral("/status"));
    if (!file.open(QIODevice::ReadOnly))
        return {};
    for (const QByteArray& line : file.readAll().split('\n')) {
        if (line.startsWith(name))
            return line.mid(static_cast<qsizetype>(std::strlen(name))).trimmed();
    }
    return {};
}

} // namespace

QProcessEnvironment programEnvironment(const Home& home, const std::string& busAddress,
                                       const QStringList& variables)
{
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    environment.remove(QStringLiteral("WAYLAND_DISPLAY"));
    const QStringList own{QStringLiteral("QT_QPA_PLATFORM=xcb"), QStringLiteral("LC_ALL=C.UTF-8"),
                          QStringLiteral("DBUS_SESSION_BUS_ADDRESS=") + QString::fromStdString(busAddress)};
    for (const QString& variable : own + home.environment() + variables) {
        const qsizetype sign = variable.indexOf(QLatin1Char('='));
        environment.insert(variable.first(sign), variable.mid(sign + 1));
    }
    // ThreadSanitizer sees what the toolkit's own libraries do to memory, but not how they order it.
    const QString threadSanitizer = QStringLiteral("TSAN_OPTIONS");
    environment.insert(threadSanitizer, environment.value(threadSanitizer) +
                                            QStringLiteral(":ignore_noninstrumented_modules=1"));
    return environment;
}

RunningProgram::RunningProgram(const Home& home, const std::string& busAddress, const QStringList& variables,
                               const QStringList& launcher)
{
    process_.setProcessEnvironment(programEnvironment(home, busAddress, variables));
    process_.setStandardInputFile(QProcess::nullDevice());
    const QStringList command = launcher + QStringList(QStringLiteral(SPOTWELL));
    process_.start(command.first(), command.mid(1));
    if (!process_.waitForStarted())
        throw std::runtime_error("cannot start " + command.first().toStdString());
}

RunningProgram::~RunningProgram()
{
    process_.kill();
    process_.waitForFinished();
}

void RunningProgram::signal(int number) const
{
    if (process_.processId() > 0)
        ::kill(static_cast<pid_t>(process_.processId()), number);
}

std::optional<int> RunningProgram::waitForEnd()
{
    if (!waitUntil([this] { return !isRunning(); }) || process_.exitStatus() != QProcess::NormalExit)
        return std::nullopt;
    return process_.exitCode();
}

std::optional<std::chrono::duration<double>> RunningProgram::end(int signalNumber)
{
    const auto asked = std::chrono::steady_clock::now();
    signal(signalNumber);
    if (waitForEnd() != 0)
        return std::nullopt;
    return std::chrono::steady_clock::now() - asked;
}

QByteArray RunningProgram::standardError()
{
    return standardError_ += process_.readAllStandardError();
}

void RunningProgram::stop() const
{
    signal(SIGSTOP);
    (void)waitUntilStopped();
}

bool RunningProgram::waitUntilStopped() const
{
    // Each thread: one that waits for a processor may still be in the middle of a call.
    return waitUntil([this] {
        const QDir tasks(QStringLiteral("/proc/%1/task").arg(process_.processId()));
        const QStringList threads = tasks.entryList(QDir::Dirs | QDir::NoDotAndDotDot);
        return !threads.isEmpty() &&
               std::all_of(threads.begin(), threads.end(), [&tasks](const QString& thread) {
                   return statusIn(tasks.filePath(thread), "State:").startsWith('T');
               });
    });
}

qint64 RunningProgram::residentKiB() const
{
    return statusIn(QStringLiteral("/proc/%1").arg(process_.processId()), "VmRSS:")
        .split(' ')
        .first()
        .toLongLong();
}

} // namespace spotwell
