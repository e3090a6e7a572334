// SPDX-FileCopyrightText: 2026 the spotwell developers
// SPDX-License-Identifier: MIT

#include "app/CommandLine.h"

#include <gtest/gtest.h>

namespace spotwell
{
namespace
{

using namespace Qt::StringLiterals;

CommandLine readOptions(const QStringList& arguments)
{
    return readCommandLine(QStringList(u"spotwell"_s) + arguments, u"9.8"_s);
}

void expectStart(const QStringList& arguments)
{
    const CommandLine read = readOptions(arguments);
    EXPECT_EQ(read.text + read.complaint, QString()) << arguments.join(u' ').toStdString();
}

TEST(CommandLineTest, startsTheProgramWithoutOptions)
{
    expectStart({});
}

TEST(CommandLineTest, leavesItsOwnOptionsToTheToolkit)
{
    for (const QString& option :
         {u"display"_s, u"fontengine"_s, u"geometry"_s, u"icon"_s, u"name"_s, u"platform"_s,
          u"platformpluginpath"_s, u"platformtheme"_s, u"plugin"_s, u"qwindowgeometry"_s, u"qwindowicon"_s,
          u"qwindowtitle"_s, u"session"_s, u"style"_s, u"stylesheet"_s, u"title"_s, u"visual"_s}) {
        expectStart({u'-' + option, u"--version"_s});
        expectStart({u"--"_s + option, u"x"_s});
    }
    for (const QString& option :
         {u"dograb"_s, u"nograb"_s, u"reverse"_s, u"testability"_s, u"widgetcount"_s}) {
        expectStart({u'-' + option});
        EXPECT_EQ(readOptions({u"--"_s + option, u"--version"_s}).text, u"spotwell 9.8\n"_s);
    }
    expectStart({u"-style=fusion"_s, u"-stylesheet=a.qss"_s});
    EXPECT_EQ(readOptions({u"-platform"_s, u"xcb"_s, u"--version"_s}).text, u"spotwell 9.8\n"_s);
}

TEST(CommandLineTest, tellsOfItself)
{
    EXPECT_EQ(readOptions({u"--version"_s}).text, u"spotwell 9.8\n"_s);
    EXPECT_TRUE(readOptions({u"--help"_s}).text.startsWith(u"Usage: spotwell [OPTION]...\n"_s));
    EXPECT_TRUE(readOptions({u"--version"_s, u"--help"_s}).text.startsWith(u"Usage: "_s));
}

TEST(CommandLineTest, complainsOfWhatItDoesNotKnow)
{
    EXPECT_EQ(readOptions({u"--port"_s}).complaint, u"Unknown option 'port'."_s);
    EXPECT_EQ(readOptions({u"--help"_s, u"--port"_s}).complaint, u"Unknown option 'port'."_s);
    EXPECT_EQ(readOptions({u"-h"_s}).complaint, u"Unknown option 'h'."_s);
    EXPECT_EQ(readOptions({u"--version=1"_s}).complaint, u"Unexpected value after '--version'."_s);
    EXPECT_EQ(readOptions({u"node"_s}).complaint, u"Unexpected argument 'node'."_s);
    EXPECT_EQ(readOptions({u"-"_s}).complaint, u"Unexpected argument '-'."_s);
}

} // namespace
} // namespace spotwell
