// SPDX-FileCopyrightText: 2026 the spotwell developers
// SPDX-License-Identifier: MIT

#include "platform/linux/LinuxPlatform.h"

#include "platform/linux/Directories.h"
#include "platform/linux/Fonts.h"
#include "platform/linux/IcuTextConverter.h"
#include "platform/linux/PosixProcessServices.h"
#include "platform/linux/PosixSocketStreams.h"
#include "platform/linux/ProcessEnd.h"
#include "platform/linux/QtMainQueue.h"
#include "platform/linux/QuitEvents.h"
#include "platform/linux/SettingsUserDefaults.h"
#include "platform/linux/StandardErrorLog.h"
#include "platform/linux/StandardStreams.h"
#include "platform/linux/SystemClock.h"
#include "platform/linux/TerminationSignals.h"
#include "platform/linux/WorkerPool.h"
#include "platform/linux/bus/BusNotificationCenter.h"
#include "platform/linux/bus/BusRunningApplications.h"
#include "platform/linux/bus/BusScriptRunner.h"
#include "platform/linux/bus/DesktopFileViewer.h"
#include "platform/linux/bus/PortalContrast.h"
#include "platform/linux/bus/SessionBus.h"
#include "platform/linux/bus/ToolkitBus.h"
#include "platform/linux/web/LateUrlSession.h"
#include "platform/linux/web/WebModule.h"

#include <QCoreApplication>
#include <QDir>

#include <csignal>
#include <sys/stat.h>
#include <system_error>
#include <thread>
#include <utility>

namespace spotwell
{

namespace
{

constexpr std::chrono::milliseconds longestEnd{500};
/// How long the bus may take to answer at the start.
constexpr std::chrono::milliseconds longestGreeting{2000};

// Read by Qt when it makes a thread's event loop: with it, poll() alone instead of GLib's loop around it.
constexpr const char* withoutGlib = "QT_NO_GLIB";
constexpr const char* ownMark = "spotwell";

} // namespace

struct LinuxPlatform::Parts {
    Parts(const QString& version, std::string address)
        : userAgent(QStringLiteral("spotwell/") + version), busAddress(std::move(address))
    {
    }

    const QString userAgent;
    const std::string busAddress;
    // First, so that a second signal finds it until the very end.
    std::unique_ptr<TerminationSignals> signals;
    std::unique_ptr<QuitEvents> quitEvents;
    std::unique_ptr<ProcessEnd> processEnd;
    SystemClock clock;
    StandardErrorLog log;
    PosixProcessServices process;
    QtMainQueue mainQueue;
    const std::shared_ptr<WorkerPool> workers = std::make_shared<WorkerPool>(QStringLiteral("queues"));
    IcuTextConverter textConverter;
    PosixSocketStreams sockets;
    // depends-on: log
    SettingsUserDefaults userDefaults{
        settingsFilePath(qEnvironmentVariable("XDG_CONFIG_HOME"), QDir::homePath()), log};
    // depends-on: log
    SessionBus bus{log, busAddress};
    // depends-on: bus, log
    BusNotificationCenter notificationCenter{bus, log};
    BusRunningApplications runningApplications{bus, log};
    // depends-on: bus, runningApplications, log
    BusScriptRunner scriptRunner{bus, runningApplications, log};
    // depends-on: bus, log
    DesktopFileViewer fileViewer{bus, log};
    // depends-on: bus, mainQueue, workers
    PortalContrast desktopContrast{
        bus, mainQueue, std::make_unique<PooledSerialQueue>(workers, QStringLiteral("settings portal"))};
};

LinuxPlatform::Prepared LinuxPlatform::prepareProcess()
{
    occupyStandardStreams();
    ::umask(077);
    (void)std::signal(SIGPIPE, SIG_IGN);
    // A log or a settings file that reaches the user's limit (ulimit -f) is as with a full disk: a write
    // fails.
    (void)std::signal(SIGXFSZ, SIG_IGN);
    StandardErrorLog::takeQtMessages();
    if (!qEnvironmentVariableIsSet(withoutGlib))
        qputenv(withoutGlib, ownMark);
    // The fonts while the bus answers. Where it does not, the environment changes, and they have to be done.
    Prepared prepared{{}, readFontConfiguration()};
    prepared.busAddress = hungBus(longestGreeting);
    if (!prepared.busAddress.empty()) {
        if (prepared.fonts.joinable())
            prepared.fonts.join();
        hideBus();
    }
    return prepared;
}

QString LinuxPlatform::logDirectory()
{
    return debugLogDirectory(qEnvironmentVariable("XDG_STATE_HOME"), QDir::homePath());
}

LinuxPlatform::LinuxPlatform(const QString& version, std::string busAddress)
    : parts_(std::make_unique<Parts>(version, std::move(busAddress)))
{
    if (!parts_->busAddress.empty())
        parts_->log.line(
            QStringLiteral("LinuxPlatform: the session bus does not answer; the window goes without it"));
    // Not for the file manager that may be started later: some cannot do without GLib's loop.
    if (qgetenv(withoutGlib) == ownMark)
        qunsetenv(withoutGlib);
}

LinuxPlatform::~LinuxPlatform() = default;

Platform LinuxPlatform::services()
{
    Parts& p = *parts_;
    return {p.clock,
            p.mainQueue,
            [&p](const QString& label) { return std::make_unique<PooledSerialQueue>(p.workers, label); },
            [&p](const UrlSessionConfiguration& configuration) {
                return std::make_unique<LateUrlSession>(
                    std::make_unique<PooledSerialQueue>(p.workers, QStringLiteral("web module")),
                    [&p, configuration](QString& error) {
                        return makeUrlSession(webModulePath(QCoreApplication::applicationDirPath()),
                                              configuration, p.userAgent, error);
                    });
            },
            p.sockets,
            p.notificationCenter,
            p.runningApplications,
            p.scriptRunner,
            p.fileViewer,
            p.desktopContrast,
            p.userDefaults,
            p.textConverter,
            p.process,
            p.log};
}

void LinuxPlatform::onEnd(std::function<void()> ending)
{
    const auto quit = [] { QCoreApplication::exit(EXIT_SUCCESS); };
    parts_->signals = std::make_unique<TerminationSignals>(quit);
    parts_->quitEvents = std::make_unique<QuitEvents>(quit);
    parts_->processEnd = std::make_unique<ProcessEnd>([this, ending = std::move(ending)] {
        ending();
        prepareToEnd();
    });
}

void LinuxPlatform::prepareToEnd()
{
    // Not cut off, neither here nor by the thread below: the settings matter more than the second.
    TerminationSignals::liftBound();
    parts_->userDefaults.save();
    parts_->scriptRunner.cancel();
    try {
        std::thread([] {
            std::this_thread::sleep_for(longestEnd);
            std::_Exit(EXIT_SUCCESS);
        }).detach();
    } catch (const std::system_error&) {
        // Out of threads: the end takes the time it takes.
        return;
    }
}

} // namespace spotwell
