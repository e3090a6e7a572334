#include "app/AppDelegate.h"
#include "app/MainWindow.h"
#include "platform/linux/LinuxPlatform.h"
#include "tools/spotwell-demo/DemoSettings.h"

#include <QApplication>
#include <QCommandLineParser>
#include <QStyle>
#include <QTemporaryDir>
#include <QTimer>

#include <cstdio>

namespace
{

/// What the demonstration was asked for.
struct Options {
    QString nodePort;
    int seconds = 30;
    QString screenshot;
};

Options readOptions(const QApplication& application)
{
    QCommandLineParser parser;
    parser.setApplicationDescription(QStringLiteral(
        "Shows spotwell at work with a DX cluster node on this machine, without touching its settings."));
    parser.addHelpOption();
    parser.addVersionOption();
    const QCommandLineOption port(QStringLiteral("node-port"),
                                  QStringLiteral("The node's port on 127.0.0.1."), QStringLiteral("port"),
                                  QStringLiteral("7300"));
    const QCommandLineOption seconds(QStringLiteral("seconds"),
                                     QStringLiteral("How long it lasts; 0: until quit."),
                                     QStringLiteral("seconds"), QStringLiteral("30"));
    const QCommandLineOption screenshot(QStringLiteral("screenshot"),
                                        QStringLiteral("Where to leave a picture of the window at the end."),
                                        QStringLiteral("file"));
    parser.addOptions({port, seconds, screenshot});
    parser.process(application);
    return {parser.value(port), parser.value(seconds).toInt(), parser.value(screenshot)};
}

} // namespace

int main(int argc, char** argv)
{
    using namespace spotwell;

    LinuxPlatform::prepareProcess();
    QApplication application(argc, argv);
    QApplication::setApplicationName(QStringLiteral("spotwell-demo"));
    QApplication::setApplicationVersion(QStringLiteral(SPOTWELL_VERSION));
    QApplication::setStyle(makeStyle().release());
    const Options options = readOptions(application);

    const QTemporaryDir logs;
    DemoSettings settings(QStringLiteral("127.0.0.1"), options.nodePort);
    LinuxPlatform platform(QStringLiteral(SPOTWELL_VERSION));
    const Platform real = platform.services();
    MainWindow window;
    window.setWindowTitle(QStringLiteral("spotwell (demonstration)"));
    AppDelegate delegate({real.clock, real.mainQueue, real.makeSerialQueue, real.makeUrlSession, real.sockets,
                          real.notificationCenter, real.runningApplications, real.scriptRunner,
                          real.fileViewer, settings, real.textConverter, real.process, real.log},
                         window, logs.path(), FeedAddresses{}, QStringLiteral(SPOTWELL_VERSION));
    platform.onTermination([] { QApplication::exit(0); });
    QObject::connect(&application, &QApplication::aboutToQuit, &window, [&] {
        if (!options.screenshot.isEmpty() && !window.grab().save(options.screenshot))
            std::printf("could not write %s\n", qPrintable(options.screenshot));
        delegate.applicationWillTerminate();
        platform.prepareToEnd();
    });

    delegate.applicationDidFinishLaunching();
    window.show();
    QTimer::singleShot(2000, &window, [&] { delegate.testSendSpot(); });
    // An older logger takes the line by script, which has to be waited for.
    const auto testQueue = real.makeSerialQueue(QStringLiteral("com.tarnbrooksoftware.spotwell_demo_queue"));
    QTimer::singleShot(3000, &window, [&] { testQueue->async([&] { delegate.testSendSpotLine(); }); });
    if (options.seconds > 0)
        QTimer::singleShot(options.seconds * 1000, &application, [] { QApplication::exit(0); });
    return QApplication::exec();
}
