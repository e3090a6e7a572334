#include "platform/linux/LinuxPlatform.h"

#include "platform/linux/BusNotificationCenter.h"
#include "platform/linux/BusRunningApplications.h"
#include "platform/linux/BusScriptRunner.h"
#include "platform/linux/DesktopFileViewer.h"
#include "platform/linux/Directories.h"
#include "platform/linux/IcuTextConverter.h"
#include "platform/linux/LinuxQueues.h"
#include "platform/linux/PosixProcessServices.h"
#include "platform/linux/PosixSocketStreams.h"
#include "platform/linux/ProcessEnd.h"
#include "platform/linux/QtUrlSession.h"
#include "platform/linux/QuitEvents.h"
#include "platform/linux/SessionBus.h"
#include "platform/linux/SettingsUserDefaults.h"
#include "platform/linux/StandardErrorLog.h"
#include "platform/linux/SystemClock.h"
#include "platform/linux/TerminationSignals.h"

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

} // namespace

struct LinuxPlatform::Parts {
    explicit Parts(const QString& version) : userAgent(QStringLiteral("spotwell/") + version) {}

    const QString userAgent;
    // First, so that a second signal finds it until the very end.
    std::unique_ptr<TerminationSignals> signals;
    std::unique_ptr<QuitEvents> quitEvents;
    std::unique_ptr<ProcessEnd> processEnd;
    SystemClock clock;
    StandardErrorLog log;
    PosixProcessServices process;
    QtMainQueue mainQueue;
    IcuTextConverter textConverter;
    PosixSocketStreams sockets;
    // depends-on: log
    SettingsUserDefaults userDefaults{QStringLiteral("tarnbrooksoftware"), QStringLiteral("spotwell"), log};
    // depends-on: log
    SessionBus bus{log};
    // depends-on: bus, log
    BusNotificationCenter notificationCenter{bus, log};
    BusRunningApplications runningApplications{bus, log};
    // depends-on: bus, runningApplications, log
    BusScriptRunner scriptRunner{bus, runningApplications, log};
    // depends-on: bus, log
    DesktopFileViewer fileViewer{bus, log};
};

void LinuxPlatform::prepareProcess()
{
    ::umask(077);
    (void)std::signal(SIGPIPE, SIG_IGN);
    StandardErrorLog::takeQtMessages();
}

QString LinuxPlatform::logDirectory()
{
    return debugLogDirectory(qEnvironmentVariable("XDG_STATE_HOME"), QDir::homePath());
}

LinuxPlatform::LinuxPlatform(const QString& version) : parts_(std::make_unique<Parts>(version)) {}

LinuxPlatform::~LinuxPlatform() = default;

Platform LinuxPlatform::services()
{
    Parts& p = *parts_;
    return {p.clock,
            p.mainQueue,
            [](const QString& label) { return std::make_unique<ThreadSerialQueue>(label); },
            [&p](const UrlSessionConfiguration& configuration) {
                return std::make_unique<QtUrlSession>(configuration, p.userAgent);
            },
            p.sockets,
            p.notificationCenter,
            p.runningApplications,
            p.scriptRunner,
            p.fileViewer,
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
    // Not cut off by the thread below: the settings matter more than the second.
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
