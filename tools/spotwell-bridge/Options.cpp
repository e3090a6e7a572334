// SPDX-FileCopyrightText: 2026 the spotwell developers
// SPDX-License-Identifier: MIT

#include "tools/spotwell-bridge/Options.h"

#include <QCommandLineParser>

#include <array>

namespace spotwell::bridge
{

namespace
{

constexpr double longestSeconds = 1e9;

/// An option that takes a value, or with `standard` may stand without one and then means that.
struct ValueOption {
    const char16_t* name;
    const char16_t* value;
    const char16_t* description;
    /// What a complaint says of it.
    const char16_t* takes;
    const char16_t* standard = nullptr;
};

constexpr ValueOption telnet{
    u"telnet", u"[ADDRESS:]PORT",
    u"Serves telnet clients as a DX cluster node there; without a value on 127.0.0.1:7373.",
    u"[ADDRESS:]PORT, such as 7373, 0.0.0.0:7373 or [::1]:7373", u"127.0.0.1:7373"};
constexpr ValueOption n1mm{u"n1mm", u"HOST:PORT",
                           u"Sends each spot as an N1MM datagram (XML over UDP) there.",
                           u"HOST:PORT, such as 127.0.0.1:12060"};
constexpr ValueOption print{
    u"print", u"json|text",
    u"Prints what arrives: as JSON objects, which is meant without a value, or as lines of a DX cluster.",
    u"json or text", u"json"};
constexpr ValueOption displayName{u"display-name", u"TEXT", u"The logger's displayed name (Logwright).",
                                  u"a text"};
constexpr ValueOption loggerVersion{u"logger-version", u"TEXT", u"The logger's version (6.45).", u"a text"};
constexpr ValueOption scriptError{u"script-error", u"TEXT",
                                  u"Answers the command processSpot with an error of this text.", u"a text"};
constexpr ValueOption scriptDelay{u"script-delay", u"SECONDS",
                                  u"Answers the command processSpot so much later.", u"a number of seconds"};
constexpr ValueOption count{u"count", u"N", u"Ends after so many notifications and commands.",
                            u"a whole number above 0"};
constexpr ValueOption seconds{u"seconds", u"SECONDS", u"Ends after this time.", u"a number of seconds"};

constexpr std::array<const ValueOption*, 9> valueOptions{
    &telnet, &n1mm, &print, &displayName, &loggerVersion, &scriptError, &scriptDelay, &count, &seconds};

QString text(const char16_t* characters)
{
    return QString::fromUtf16(characters);
}

QString complaintOf(const ValueOption& option)
{
    return QStringLiteral("--%1 takes %2.").arg(text(option.name), text(option.takes));
}

CommandLine complain(const QString& complaint)
{
    return {std::nullopt, {}, complaint};
}

const ValueOption* valueOption(const QString& argument)
{
    for (const ValueOption* option : valueOptions) {
        if (argument == QStringLiteral("--") + text(option->name))
            return option;
    }
    return nullptr;
}

/// Puts the standard value behind each option that stands without the one it may have.
QStringList withStandardValues(const QStringList& arguments)
{
    QStringList result;
    for (qsizetype index = 0; index < arguments.size(); ++index) {
        const QString& argument = arguments[index];
        result.append(argument);
        const bool isLast = index + 1 == arguments.size();
        const ValueOption* const option = valueOption(argument);
        if (option == nullptr)
            continue;
        if (option->standard != nullptr && (isLast || arguments[index + 1].startsWith(u'-')))
            result.append(text(option->standard));
        else if (!isLast)
            result.append(arguments[++index]);
    }
    return result;
}

/// A span of the command line; absent when it is none.
std::optional<std::chrono::microseconds> readSeconds(const QString& value)
{
    bool isNumber = false;
    const double number = value.toDouble(&isNumber);
    if (!isNumber || !(number >= 0 && number <= longestSeconds))
        return std::nullopt;
    return std::chrono::round<std::chrono::microseconds>(std::chrono::duration<double>(number));
}

/// The values that were given, turned into options one by one.
class ValueReader
{
public:
    explicit ValueReader(const QCommandLineParser& parser) : parser_(parser) {}

    template <typename Read>
    void read(const ValueOption& option, Read take)
    {
        const QStringList values = parser_.values(text(option.name));
        if (!complaint_.isEmpty() || values.isEmpty())
            return;
        if (values.size() > 1)
            complaint_ = QStringLiteral("--%1 may be given only once.").arg(text(option.name));
        else if (!take(values.first()))
            complaint_ = complaintOf(option);
    }
    [[nodiscard]] const QString& complaint() const { return complaint_; }

private:
    const QCommandLineParser& parser_;
    QString complaint_;
};

bool takeCount(const QString& value, std::optional<unsigned>& number)
{
    bool isNumber = false;
    number = value.toUInt(&isNumber);
    return isNumber && *number > 0;
}

bool takePrinting(const QString& value, Printing& printing)
{
    printing = value == u"json" ? Printing::json : value == u"text" ? Printing::text : Printing::nothing;
    return printing != Printing::nothing;
}

CommandLine readValues(const QCommandLineParser& parser)
{
    Options options;
    ValueReader reader(parser);
    reader.read(telnet, [&](const QString& value) {
        return (options.telnet = readListenAddress(value)).has_value();
    });
    reader.read(n1mm, [&](const QString& value) { return (options.n1mm = readTarget(value)).has_value(); });
    reader.read(print, [&](const QString& value) { return takePrinting(value, options.printing); });
    reader.read(displayName, [&](const QString& value) {
        options.identity.displayName = value;
        return true;
    });
    reader.read(loggerVersion, [&](const QString& value) {
        options.identity.version = value;
        return true;
    });
    reader.read(scriptError, [&](const QString& value) {
        options.answers.error = value;
        return true;
    });
    reader.read(scriptDelay, [&](const QString& value) {
        const auto delay = readSeconds(value);
        options.answers.delay = delay.value_or(options.answers.delay);
        return delay.has_value();
    });
    reader.read(count, [&](const QString& value) { return takeCount(value, options.count); });
    reader.read(seconds,
                [&](const QString& value) { return (options.duration = readSeconds(value)).has_value(); });
    if (!reader.complaint().isEmpty())
        return complain(reader.complaint());
    return {options, {}, {}};
}

/// What the parser found wrong. Of a value that is missing, at the end, it does not say what it should be.
QString complaintOf(const QCommandLineParser& parser, const QString& last)
{
    const QString complaint = parser.errorText();
    const ValueOption* const option = valueOption(last);
    return option != nullptr && complaint.startsWith(u"Missing value") ? complaintOf(*option) : complaint;
}

} // namespace

CommandLine readCommandLine(const QStringList& arguments)
{
    const QCommandLineOption help(QStringLiteral("help"), QStringLiteral("Shows this text."));
    const QCommandLineOption version(QStringLiteral("version"),
                                     QStringLiteral("Shows the program's version."));
    const QCommandLineOption noVersion(QStringLiteral("no-version"),
                                       QStringLiteral("The logger gives no version."));
    QCommandLineParser parser;
    parser.setApplicationDescription(QStringLiteral(
        "Receives what spotwell hands to a logging application on the session bus, and hands it on."));
    for (const ValueOption* option : valueOptions)
        parser.addOption({text(option->name), text(option->description), text(option->value)});
    parser.addOptions({noVersion, help, version});

    const QStringList whole = withStandardValues(arguments);
    if (!parser.parse(whole))
        return complain(complaintOf(parser, whole.last()));
    if (parser.isSet(help))
        return {std::nullopt, parser.helpText(), {}};
    if (parser.isSet(version))
        return {std::nullopt, QStringLiteral("spotwell-bridge " SPOTWELL_VERSION "\n"), {}};
    CommandLine commandLine = readValues(parser);
    if (!commandLine.options) // an option taken for a value leaves that option's own value over
        return commandLine;
    if (!parser.positionalArguments().isEmpty())
        return complain(
            QStringLiteral("Unexpected argument '%1'.").arg(parser.positionalArguments().first()));
    if (parser.isSet(text(loggerVersion.name)) && parser.isSet(noVersion))
        return complain(QStringLiteral("--logger-version and --no-version exclude each other."));
    if (parser.isSet(noVersion))
        commandLine.options->identity.version.reset();
    return commandLine;
}

} // namespace spotwell::bridge
