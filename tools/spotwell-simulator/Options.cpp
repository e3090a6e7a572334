// SPDX-FileCopyrightText: 2026 the spotwell developers
// SPDX-License-Identifier: MIT

#include "tools/spotwell-simulator/Options.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>

namespace spotwell::simulator
{
namespace
{

const QString ending = QStringLiteral(".scenario");

/// The arguments, read from the left; "--name=value" counts as "--name" and "value".
class Arguments
{
public:
    explicit Arguments(const QStringList& arguments) : arguments_(arguments) {}

    [[nodiscard]] bool atEnd() const { return arguments_.isEmpty(); }

    QString next()
    {
        value_ = QString{};
        QString argument = arguments_.takeFirst();
        const qsizetype equals = argument.indexOf(u'=');
        if (argument.startsWith(QStringLiteral("--")) && equals > 0) {
            value_ = argument.mid(equals + 1);
            argument.truncate(equals);
        }
        return argument;
    }

    /// The next argument as it stands.
    QString takeWhole() { return arguments_.takeFirst(); }
    [[nodiscard]] bool hasAttachedValue() const { return !value_.isNull(); }
    /// The value of the option that next() gave; null when there is none.
    QString value()
    {
        if (value_.isNull() && !atEnd())
            value_ = arguments_.takeFirst();
        return value_;
    }

private:
    QStringList arguments_;
    QString value_;
};

void readValue(Options& options, std::uint16_t& port, const QString& name, const QString& value)
{
    bool valid = !value.isNull();
    if (name == u"--port") {
        port = value.toUShort(&valid);
        if (!valid)
            options.error = QStringLiteral("--port needs a number from 0 to 65535");
    } else if (name == u"--timeout") {
        const double seconds = value.toDouble(&valid);
        if (!valid || !(seconds > 0.0) || seconds > 1e6)
            options.error = QStringLiteral("--timeout needs a number of seconds");
        else
            options.timeout = Seconds{seconds};
    } else {
        const qsizetype equals = value.indexOf(u'=');
        if (equals < 1)
            options.error = QStringLiteral("--set needs NAME=VALUE");
        else
            options.variables.insert(value.left(equals), value.mid(equals + 1));
    }
}

void readTls(Options& options, Arguments& arguments)
{
    options.certificate = arguments.value();
    if (!options.certificate.isNull() && !arguments.atEnd())
        options.key = arguments.takeWhole();
    if (options.key.isNull())
        options.error = QStringLiteral("--tls needs a certificate's file and its key's");
}

/// Reads what stands behind the "@" of a scenario: a port, or an address and a port.
bool readEndpoint(const QString& text, Endpoint& endpoint)
{
    const qsizetype colon = text.lastIndexOf(u':');
    if (colon >= 0)
        endpoint.address = QHostAddress{text.left(colon)};
    bool valid = false;
    endpoint.port = text.mid(colon + 1).toUShort(&valid);
    return valid && endpoint.address.protocol() == QAbstractSocket::IPv4Protocol &&
           endpoint.address.isLoopback();
}

/// A scenario may have "@PORT" or "@ADDRESS:PORT" behind it.
void readScenarioName(Options& options, const QString& argument)
{
    const qsizetype at = argument.lastIndexOf(u'@');
    if (at < 0 || argument.indexOf(u'/', at) >= 0) {
        options.plays.push_back({argument, {}});
        return;
    }
    Options::Play play{argument.left(at), {}};
    if (readEndpoint(argument.mid(at + 1), play.endpoint))
        options.plays.push_back(std::move(play));
    else
        options.error =
            QStringLiteral("\"%1\" needs a port behind the \"@\", or an address like 127.0.0.2, a "
                           "colon and a port")
                .arg(argument);
}

/// Applies --port, whose value is `port`.
void usePort(Options& options, std::uint16_t port)
{
    if (options.plays.size() > 1)
        options.error = QStringLiteral("--port goes with one scenario only");
    else if (options.plays.front().endpoint != Endpoint{})
        options.error = QStringLiteral("--port does not go with a scenario that has its own");
    else
        options.plays.front().endpoint.port = port;
}

QString firstComment(const QString& path)
{
    QFile file{path};
    if (!file.open(QIODevice::ReadOnly))
        return {};
    const QString line = QString::fromUtf8(file.readLine(1024)).trimmed();
    return line.startsWith(u'#') ? line.mid(1).trimmed() : QString{};
}

} // namespace

Options parseOptions(const QStringList& list)
{
    Options options;
    Arguments arguments{list};
    bool onlyScenarios = false;
    std::uint16_t port = 0;
    while (!arguments.atEnd() && options.error.isNull()) {
        if (onlyScenarios) {
            readScenarioName(options, arguments.takeWhole());
            continue;
        }
        const QString argument = arguments.next();
        bool* flag = argument == u"--once"      ? &options.once
                     : argument == u"--list"    ? &options.list
                     : argument == u"--help"    ? &options.help
                     : argument == u"--version" ? &options.version
                                                : nullptr;
        if (flag && arguments.hasAttachedValue())
            options.error = QStringLiteral("%1 takes no value").arg(argument);
        else if (flag)
            *flag = true;
        else if (argument == u"--port" || argument == u"--timeout" || argument == u"--set")
            readValue(options, port, argument, arguments.value());
        else if (argument == u"--tls")
            readTls(options, arguments);
        else if (argument == u"--")
            onlyScenarios = true;
        else if (argument.startsWith(u'-'))
            options.error = QStringLiteral("unknown option \"%1\"").arg(argument);
        else
            readScenarioName(options, argument);
    }
    if (!options.error.isNull() || options.help || options.version || options.list)
        return options;
    if (options.plays.empty())
        options.error = QStringLiteral("no scenario was given");
    else if (port != 0)
        usePort(options, port);
    return options;
}

QString helpText()
{
    return QStringLiteral(
        "Usage: spotwell-simulator [OPTION]... SCENARIO...\n"
        "Plays DX cluster nodes and web services on 127.0.0.1, one port for each SCENARIO: a file, or the\n"
        "name of a shipped scenario. SCENARIO@PORT and SCENARIO@ADDRESS:PORT say where it listens. What\n"
        "happens is written to the standard output, a JSON object a line.\n"
        "\n"
        "  --port N           listen on port N; 0, the default, takes any that is free\n"
        "  --tls CERT KEY     the PEM files of the certificate and the key that https services use\n"
        "  --once             end when every session of the scenarios was played\n"
        "  --timeout SECONDS  end after that time, as failed when --once was not fulfilled\n"
        "  --set NAME=VALUE   set a variable of the scenarios\n"
        "  --list             list the shipped scenarios\n"
        "  --help             show this text\n"
        "  --version          show the version\n"
        "\n"
        "The exit code is 0 when all checks held, 1 when one failed or, with --once, was left out,\n"
        "and 2 for a mistake in the command line or in a scenario.\n");
}

QString scenarioPath(const QString& name, const QString& folder)
{
    if (name.contains(u'/') || QFileInfo{name}.isFile())
        return name;
    return QDir{folder}.filePath(name.endsWith(ending) ? name : name + ending);
}

QString listScenarios(const QString& folder)
{
    constexpr qsizetype column = 28;
    QString text;
    const QDir directory{folder};
    for (const QString& file : directory.entryList({u'*' + ending}, QDir::Files, QDir::Name)) {
        const QString name = file.chopped(ending.size());
        text += name.leftJustified(column) + firstComment(directory.filePath(file)) + u'\n';
    }
    return text;
}

} // namespace spotwell::simulator
