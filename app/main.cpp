// SPDX-FileCopyrightText: 2026 the spotwell developers
// SPDX-License-Identifier: MIT

#include "app/AppDelegate.h"
#include "app/MainWindow.h"
#include "platform/linux/LinuxPlatform.h"

#include <QApplication>
#include <QStyle>

namespace
{

/// Where the feeds come from. Nothing changes these.
spotwell::FeedAddresses feedAddresses()
{
    return {QStringLiteral("https://api.pota.app/spot/activator"),
            QStringLiteral("http://www.dxsummit.fi/api/v1/spots"),
            QStringLiteral("http://www.wsprnet.org/drupal/wsprnet/spots")};
}

} // namespace

// Everything with a life of its own hangs off here: the toolkit, the platform's services, and the one
// delegate.
int main(int argc, char** argv)
{
    using namespace spotwell;

    LinuxPlatform::Prepared prepared = LinuxPlatform::prepareProcess();
    QApplication application(argc, argv);
    if (prepared.fonts.joinable())
        prepared.fonts.join();
    QApplication::setApplicationName(QStringLiteral("spotwell"));
    QApplication::setApplicationVersion(QStringLiteral(SPOTWELL_VERSION));
    QApplication::setDesktopFileName(QStringLiteral("com.tarnbrooksoftware.spotwell"));
    QApplication::setStyle(makeStyle().release());

    LinuxPlatform platform(QStringLiteral(SPOTWELL_VERSION), prepared.busAddress);
    MainWindow window;
    AppDelegate delegate(platform.services(), window, LinuxPlatform::logDirectory(), feedAddresses(),
                         QStringLiteral(SPOTWELL_VERSION));
    platform.onEnd([&] { delegate.applicationWillTerminate(); });

    delegate.applicationDidFinishLaunching();
    window.show();
    return QApplication::exec();
}
