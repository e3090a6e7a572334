// SPDX-FileCopyrightText: 2026 the spotwell developers
// SPDX-License-Identifier: MIT

#include "app/CommandLine.h"

#include <QCommandLineParser>
#include <QStringView>

#include <algorithm>
#include <array>

namespace spotwell
{

namespace
{

// What QApplication and its platforms take from the command line, with one dash or two.
constexpr std::array<QStringView, 17> toolkitOptionsWithValue{
    u"display", u"fontengine",      u"geometry",           u"icon",
    u"name",    u"platform",        u"platformpluginpath", u"platformtheme",
    u"plugin",  u"qwindowgeometry", u"qwindowicon",        u"qwindowtitle",
    u"session", u"style",           u"stylesheet",         u"title",
    u"visual"};
constexpr std::array<QStringView, 5> toolkitSwitches{u"dograb", u"nograb", u"reverse", u"testability",
                                                     u"widgetcount"};

template <std::size_t count>
bool contains(const std::array<QStringView, count>& names, QStringView name)
{
    return std::find(names.begin(), names.end(), name) != names.end();
}

/// An option's name without its dashes; empty for what is no option.
QString optionName(const QString& argument)
{
    return argument.startsWith(u"--")  ? argument.mid(2)
           : argument.startsWith(u'-') ? argument.mid(1)
                                       : QString();
}

/// The arguments without those that are the toolkit's.
QStringList withoutToolkitOptions(const QStringList& arguments)
{
    QStringList own;
    for (qsizetype index = 0; index < arguments.size(); ++index) {
        const QString name = optionName(arguments[index]);
        if (contains(toolkitOptionsWithValue, name))
            ++index;
        else if (!contains(toolkitSwitches, name) && !name.startsWith(u"style=") &&
                 !name.startsWith(u"stylesheet="))
            own.append(arguments[index]);
    }
    return own;
}

QString helpText()
{
    return QStringLiteral(
        "Usage: spotwell [OPTION]...\n"
        "Shows DX spots of a DX cluster node and of web services in a window, and hands them to\n"
        "the logging application.\n"
        "\n"
        "  --help     show this text\n"
        "  --version  show the version\n"
        "\n"
        "The options of Qt, such as -platform NAME, are taken, too.\n");
}

} // namespace

CommandLine readCommandLine(const QStringList& arguments, const QString& version)
{
    const QString help = QStringLiteral("help");
    const QString versionOption = QStringLiteral("version");
    QCommandLineParser parser;
    parser.addOptions({QCommandLineOption(help), QCommandLineOption(versionOption)});
    if (!parser.parse(withoutToolkitOptions(arguments)))
        return {{}, parser.errorText()};
    if (parser.isSet(help))
        return {helpText(), {}};
    if (parser.isSet(versionOption))
        return {QStringLiteral("spotwell %1\n").arg(version), {}};
    if (!parser.positionalArguments().isEmpty())
        return {{}, QStringLiteral("Unexpected argument '%1'.").arg(parser.positionalArguments().first())};
    return {};
}

} // namespace spotwell
