#include "tools/spotwell-bridge/Options.h"

#include <QCommandLineParser>

namespace spotwell
{

namespace
{

constexpr double longestSeconds = 1e9;

/// A span of the command line; absent when it is none.
std::optional<std::chrono::microseconds> readSeconds(const QString& text)
{
    bool isNumber = false;
    const double seconds = text.toDouble(&isNumber);
    if (!isNumber || !(seconds >= 0 && seconds <= longestSeconds))
        return std::nullopt;
    return std::chrono::round<std::chrono::microseconds>(std::chrono::duration<double>(seconds));
}

BridgeCommandLine complain(const QString& complaint)
{
    return {std::nullopt, {}, complaint};
}

} // namespace

BridgeCommandLine readBridgeOptions(const QStringList& arguments)
{
    const QCommandLineOption help(QStringLiteral("help"), QStringLiteral("Shows this text."));
    const QCommandLineOption print(QStringLiteral("print"),
                                   QStringLiteral("Prints what arrives, one line of JSON each."));
    const QCommandLineOption displayName(QStringLiteral("display-name"),
                                         QStringLiteral("The displayed name (Logwright)."),
                                         QStringLiteral("TEXT"));
    const QCommandLineOption version(QStringLiteral("logger-version"), QStringLiteral("The version (6.45)."),
                                     QStringLiteral("TEXT"));
    const QCommandLineOption noVersion(QStringLiteral("no-version"), QStringLiteral("Gives no version."));
    const QCommandLineOption scriptError(QStringLiteral("script-error"),
                                         QStringLiteral("Answers processSpot with an error of this text."),
                                         QStringLiteral("TEXT"));
    const QCommandLineOption scriptDelay(QStringLiteral("script-delay"),
                                         QStringLiteral("Answers processSpot so much later."),
                                         QStringLiteral("SECONDS"));
    const QCommandLineOption count(QStringLiteral("count"),
                                   QStringLiteral("Ends after so many notifications and commands."),
                                   QStringLiteral("N"));
    const QCommandLineOption seconds(QStringLiteral("seconds"), QStringLiteral("Ends after this time."),
                                     QStringLiteral("SECONDS"));
    QCommandLineParser parser;
    parser.setApplicationDescription(
        QStringLiteral("Receives what spotwell hands to a logging application on the session bus."));
    parser.addOptions(
        {help, print, displayName, version, noVersion, scriptError, scriptDelay, count, seconds});

    if (!parser.parse(arguments))
        return complain(parser.errorText());
    if (parser.isSet(help))
        return {std::nullopt, parser.helpText(), {}};
    if (!parser.positionalArguments().isEmpty())
        return complain(
            QStringLiteral("Unexpected argument '%1'.").arg(parser.positionalArguments().first()));
    if (parser.isSet(version) && parser.isSet(noVersion))
        return complain(QStringLiteral("--logger-version and --no-version exclude each other."));

    BridgeOptions options;
    options.print = parser.isSet(print);
    if (parser.isSet(displayName))
        options.displayName = parser.value(displayName);
    if (parser.isSet(version))
        options.version = parser.value(version);
    if (parser.isSet(noVersion))
        options.version.reset();
    if (parser.isSet(scriptError))
        options.scriptError = parser.value(scriptError);
    if (parser.isSet(scriptDelay)) {
        const auto delay = readSeconds(parser.value(scriptDelay));
        if (!delay)
            return complain(QStringLiteral("--script-delay takes a number of seconds."));
        options.scriptDelay = *delay;
    }
    if (parser.isSet(count)) {
        bool isNumber = false;
        options.count = parser.value(count).toUInt(&isNumber);
        if (!isNumber || *options.count == 0)
            return complain(QStringLiteral("--count takes a whole number above 0."));
    }
    if (parser.isSet(seconds)) {
        options.duration = readSeconds(parser.value(seconds));
        if (!options.duration)
            return complain(QStringLiteral("--seconds takes a number of seconds."));
    }
    return {options, {}, {}};
}

} // namespace spotwell
