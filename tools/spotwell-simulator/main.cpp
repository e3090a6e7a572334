// SPDX-FileCopyrightText: 2026 the spotwell developers
// SPDX-License-Identifier: MIT

#include "tools/spotwell-simulator/Simulator.h"

#include <QCoreApplication>
#include <QDir>
#include <QSocketNotifier>

#include <cerrno>
#include <csignal>
#include <cstdio>
#include <sys/signalfd.h>
#include <unistd.h>

namespace
{

using namespace spotwell;
using namespace spotwell::simulator;

class SystemClock final : public Clock
{
public:
    [[nodiscard]] TimePoint now() const override
    {
        return std::chrono::time_point_cast<std::chrono::microseconds>(std::chrono::system_clock::now());
    }
};

/// Writes to the standard output, unbuffered. Whoever read it may be gone; the scenarios go on.
void writeOut(const QByteArray& text)
{
    for (qsizetype written = 0; written < text.size();) {
        const ssize_t count =
            write(STDOUT_FILENO, text.constData() + written, static_cast<std::size_t>(text.size() - written));
        if (count < 0 && errno != EINTR)
            return;
        written += std::max<ssize_t>(count, 0);
    }
}

int complain(const QString& message)
{
    std::fprintf(stderr, "%s\n", qUtf8Printable(message));
    return static_cast<int>(ExitCode::badUsage);
}

/// A descriptor that becomes readable when the program is asked to end.
int openEndSignals()
{
    std::signal(SIGPIPE, SIG_IGN);
    sigset_t signals;
    sigemptyset(&signals);
    sigaddset(&signals, SIGTERM);
    sigaddset(&signals, SIGINT);
    sigprocmask(SIG_BLOCK, &signals, nullptr);
    return signalfd(-1, &signals, SFD_CLOEXEC | SFD_NONBLOCK);
}

} // namespace

int main(int argc, char* argv[])
{
    const int endSignals = openEndSignals();
    QCoreApplication application{argc, argv};
    const QString folder = QDir::cleanPath(QCoreApplication::applicationDirPath() +
                                           QStringLiteral("/../share/spotwell/scenarios"));

    const Options options = parseOptions(application.arguments().mid(1));
    if (!options.error.isNull())
        return complain(
            QStringLiteral("spotwell-simulator: %1\nTry \"spotwell-simulator --help\".").arg(options.error));
    if (options.help || options.version || options.list) {
        writeOut(options.help      ? helpText().toUtf8()
                 : options.version ? QByteArrayLiteral("spotwell-simulator " SPOTWELL_VERSION "\n")
                                   : listScenarios(folder).toUtf8());
        return static_cast<int>(ExitCode::allHeld);
    }

    const SystemClock clock;
    const Report report{writeOut};
    Simulator simulator{options, clock, report, [] { QCoreApplication::quit(); }};
    const QString error = simulator.start(folder);
    if (!error.isNull())
        return complain(error);
    const QSocketNotifier asked{endSignals, QSocketNotifier::Read};
    QObject::connect(&asked, &QSocketNotifier::activated, [] { QCoreApplication::quit(); });
    QCoreApplication::exec();
    simulator.stop();
    return static_cast<int>(simulator.exitCode());
}
