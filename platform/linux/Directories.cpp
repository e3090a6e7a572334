#include "platform/linux/Directories.h"

namespace spotwell
{

QString debugLogDirectory(const QString& stateHome, const QString& home)
{
    const QString base =
        stateHome.startsWith(QLatin1Char('/')) ? stateHome : home + QStringLiteral("/.local/state");
    return base + QStringLiteral("/tarnbrooksoftware/Logwright/debug_log_files");
}

} // namespace spotwell
