#include "tools/spotwell-bridge/Bridge.h"
#include "tools/spotwell-bridge/Options.h"

#include <QCoreApplication>

#include <cstdio>

int main(int argc, char** argv)
{
    const QCoreApplication application(argc, argv);
    const spotwell::BridgeCommandLine commandLine =
        spotwell::readBridgeOptions(QCoreApplication::arguments());
    if (!commandLine.complaint.isEmpty()) {
        (void)std::fprintf(stderr, "spotwell-bridge: %s\n", commandLine.complaint.toUtf8().constData());
        return 2;
    }
    if (!commandLine.options) {
        (void)std::fputs(commandLine.help.toUtf8().constData(), stdout);
        return 0;
    }
    return spotwell::Bridge(*commandLine.options).run();
}
