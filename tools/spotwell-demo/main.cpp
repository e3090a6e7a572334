// SPDX-FileCopyrightText: 2026 the spotwell developers
// SPDX-License-Identifier: MIT

#include "app/AppDelegate.h"
#include "app/MainWindow.h"
#include "platform/linux/LinuxPlatform.h"
#include "tools/spotwell-demo/DemoSettings.h"
#include "tools/spotwell-demo/Picture.h"

#include <QApplication>
#include <QCommandLineParser>
#include <QStyle>
#include <QTemporaryDir>
#include <QTimer>

namespace
{

using namespace spotwell;

/// What the demonstration was asked for.
struct Options {
    QString nodePort;
    FeedAddresses feeds;
    int seconds = 30;
    QString screenshot;
    bool dark = false;
};

/// A service on this machine; empty without a port.
QString address(const QString& port, const QString& path)
{
    return port.isEmpty() ? QString{} : QStringLiteral("http://127.0.0.1:%1%2").arg(port, path);
}

Options readOptions(const QApplication& application)
{
    QCommandLineParser parser;
    parser.setApplicationDescription(QStringLiteral("Shows spotwell at work with a DX cluster node and web "
                                                    "services on this machine, without touching its "
                                                    "settings."));
    parser.addHelpOption();
    parser.addVersionOption();
    const QCommandLineOption port(QStringLiteral("node-port"),
                                  QStringLiteral("The node's port on 127.0.0.1."), QStringLiteral("port"),
                                  QStringLiteral("7300"));
    const QCommandLineOption pota(
        QStringLiteral("pota-port"),
        QStringLiteral("The port of a POTA service on 127.0.0.1; without it the feed is off."),
        QStringLiteral("port"));
    const QCommandLineOption dxsummit(QStringLiteral("dxsummit-port"),
                                      QStringLiteral("The same for DXSummit."), QStringLiteral("port"));
    const QCommandLineOption wsprnet(QStringLiteral("wsprnet-port"), QStringLiteral("The same for WSPRnet."),
                                     QStringLiteral("port"));
    const QCommandLineOption seconds(QStringLiteral("seconds"),
                                     QStringLiteral("How long it lasts; 0: until quit."),
                                     QStringLiteral("seconds"), QStringLiteral("30"));
    const QCommandLineOption screenshot(
        QStringLiteral("screenshot"),
        QStringLiteral(
            "Where to leave a picture of the window, taken when it shows every feed or else at the end."),
        QStringLiteral("file"));
    const QCommandLineOption dark(QStringLiteral("dark"), QStringLiteral("Begins with dark colours."));
    parser.addOptions({port, pota, dxsummit, wsprnet, seconds, screenshot, dark});
    parser.process(application);
    return {parser.value(port),
            {address(parser.value(pota), QStringLiteral("/spot/activator")),
             address(parser.value(dxsummit), QStringLiteral("/api/v1/spots")),
             address(parser.value(wsprnet), QStringLiteral("/drupal/wsprnet/spots"))},
            parser.value(seconds).toInt(),
            parser.value(screenshot),
            parser.isSet(dark)};
}

/// What the console's lines begin with that come from the node and from the feeds that are on.
QStringList sources(const FeedAddresses& feeds)
{
    QStringList words{QStringLiteral("teln")};
    if (!feeds.pota.isEmpty())
        words.append(QStringLiteral("pota"));
    if (!feeds.dxsummit.isEmpty())
        words.append(QStringLiteral("dxsu"));
    if (!feeds.wsprnet.isEmpty())
        words.append(QStringLiteral("wspr"));
    return words;
}

} // namespace

int main(int argc, char** argv)
{
    LinuxPlatform::Prepared prepared = LinuxPlatform::prepareProcess();
    QApplication application(argc, argv);
    if (prepared.fonts.joinable())
        prepared.fonts.join();
    QApplication::setApplicationName(QStringLiteral("spotwell-demo"));
    QApplication::setApplicationVersion(QStringLiteral(SPOTWELL_VERSION));
    QApplication::setStyle(makeStyle().release());
    const Options options = readOptions(application);

    const QTemporaryDir logs;
    DemoSettings settings(QStringLiteral("127.0.0.1"), options.nodePort, options.feeds, options.dark);
    LinuxPlatform platform(QStringLiteral(SPOTWELL_VERSION), prepared.busAddress);
    const Platform real = platform.services();
    MainWindow window;
    window.setWindowTitle(QStringLiteral("spotwell (demonstration)"));
    AppDelegate delegate({real.clock, real.mainQueue, real.makeSerialQueue, real.makeUrlSession, real.sockets,
                          real.notificationCenter, real.runningApplications, real.scriptRunner,
                          real.fileViewer, real.desktopContrast, settings, real.textConverter, real.process,
                          real.log},
                         window, logs.path(), options.feeds, QStringLiteral(SPOTWELL_VERSION));
    Picture picture(*window.statusLine, sources(options.feeds), options.screenshot);
    platform.onEnd([&] {
        picture.takeAtLatestNow();
        delegate.applicationWillTerminate();
    });

    delegate.applicationDidFinishLaunching();
    window.show();
    picture.startWatching();
    QTimer::singleShot(2000, &window, [&] { delegate.testSendSpot(); });
    // An older logger takes the line by script, which has to be waited for.
    const auto testQueue = real.makeSerialQueue(QStringLiteral("com.tarnbrooksoftware.spotwell_demo_queue"));
    QTimer::singleShot(3000, &window, [&] { testQueue->async([&] { delegate.testSendSpotLine(); }); });
    if (options.seconds > 0)
        QTimer::singleShot(options.seconds * 1000, &application, [] { QApplication::exit(0); });
    return QApplication::exec();
}
