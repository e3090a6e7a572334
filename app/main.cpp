// SPDX-FileCopyrightText: 2026 the spotwell developers
// SPDX-License-Identifier: MIT

#include "app/AppDelegate.h"
#include "app/CommandLine.h"
#include "app/MainWindow.h"
#include "platform/linux/LinuxPlatform.h"

#include <QApplication>
#include <QStyle>

#include <cstdio>
#include <cstdlib>
#include <optional>

namespace
{

/// Where the feeds come from. Nothing changes these.
spotwell::FeedAddresses feedAddresses()
{
    return {QStringLiteral("https://api.pota.app/spot/activator"),
            QStringLiteral("http://www.dxsummit.fi/api/v1/spots"),
            QStringLiteral("http://www.wsprnet.org/drupal/wsprnet/spots")};
}

constexpr int exitWrongOption = 2;

/// The exit code, where the command line asks for a text or is wrong. No display, bus or file is touched for
/// it.
std::optional<int> answerCommandLine(int argc, char** argv)
{
    QStringList arguments;
    for (int index = 0; index < argc; ++index)
        arguments.append(QString::fromLocal8Bit(argv[index]));
    const auto commandLine = spotwell::readCommandLine(arguments, QStringLiteral(SPOTWELL_VERSION));
    if (!commandLine.complaint.isEmpty()) {
        (void)std::fprintf(stderr, "spotwell: %s\n", qUtf8Printable(commandLine.complaint));
        return exitWrongOption;
    }
    if (commandLine.text.isEmpty())
        return std::nullopt;
    (void)std::fputs(qUtf8Printable(commandLine.text), stdout);
    return EXIT_SUCCESS;
}

} // namespace

// Everything with a life of its own hangs off here: the toolkit, the platform's services, and the one
// delegate.
int main(int argc, char** argv)
{
    using namespace spotwell;

    // As it is started as a rule, there is nothing to read.
    if (argc > 1) {
        if (const std::optional<int> code = answerCommandLine(argc, argv))
            return *code;
    }
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
