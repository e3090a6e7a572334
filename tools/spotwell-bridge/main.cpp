#include "platform/linux/SystemClock.h"
#include "tools/spotwell-bridge/Options.h"
#include "tools/spotwell-bridge/Program.h"

#include <QCoreApplication>

#include <csignal>
#include <cstdio>
#include <fcntl.h>
#include <unistd.h>

namespace
{

/// Whatever is opened later must not be taken for a standard stream that the parent has closed. Writing to
/// these fails as it did.
void occupyStandardStreams()
{
    int descriptor = -1;
    do {
        descriptor = ::open("/dev/null", O_RDONLY);
    } while (descriptor >= 0 && descriptor <= STDERR_FILENO);
    ::close(descriptor);
}

} // namespace

int main(int argc, char** argv)
{
    (void)std::signal(SIGPIPE, SIG_IGN);
    occupyStandardStreams();
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
