// SPDX-FileCopyrightText: 2026 the spotwell developers
// SPDX-License-Identifier: MIT

#include "platform/linux/StandardStreams.h"
#include "platform/linux/SystemClock.h"
#include "tools/spotwell-bridge/Options.h"
#include "tools/spotwell-bridge/Program.h"

#include <QCoreApplication>

#include <csignal>
#include <cstdio>

namespace
{

} // namespace

int main(int argc, char** argv)
{
    (void)std::signal(SIGPIPE, SIG_IGN);
    spotwell::occupyStandardStreams();
    const QCoreApplication application(argc, argv);
    const auto commandLine = spotwell::bridge::readCommandLine(QCoreApplication::arguments());
    if (!commandLine.complaint.isEmpty()) {
        (void)std::fprintf(stderr, "spotwell-bridge: %s\n", commandLine.complaint.toUtf8().constData());
        return 2;
    }
    if (!commandLine.options) {
        (void)std::fputs(commandLine.text.toUtf8().constData(), stdout);
        return 0;
    }
    const spotwell::SystemClock clock;
    return spotwell::bridge::Program(*commandLine.options, clock).run();
}
