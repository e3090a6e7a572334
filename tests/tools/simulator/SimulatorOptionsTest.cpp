// SPDX-FileCopyrightText: 2026 the spotwell developers
// SPDX-License-Identifier: MIT

#include "tools/spotwell-simulator/Options.h"

#include <QFile>
#include <QTemporaryDir>
#include <gtest/gtest.h>

namespace spotwell::simulator
{
namespace
{

using Plays = std::vector<Options::Play>;

Options parsed(const QString& line)
{
    return parseOptions(line.split(u' ', Qt::SkipEmptyParts));
}

TEST(SimulatorOptions, areRead)
{
    const Options options = parsed(u"--port 7300 --once --timeout 2.5 --set rate=5 --set=call=A=B demo"_qs);
    EXPECT_TRUE(options.error.isNull()) << qPrintable(options.error);
    EXPECT_EQ(options.plays, (Plays{{u"demo"_qs, {QHostAddress::LocalHost, 7300}}}));
    EXPECT_TRUE(options.once);
    EXPECT_EQ(options.timeout, Seconds{2.5});
    EXPECT_EQ(options.variables, (Variables{{u"rate"_qs, u"5"_qs}, {u"call"_qs, u"A=B"_qs}}));
}

TEST(SimulatorOptions, haveDefaults)
{
    const Options options = parsed(u"a b"_qs);
    EXPECT_TRUE(options.error.isNull());
    EXPECT_FALSE(options.once || options.list || options.help || options.version);
    EXPECT_FALSE(options.timeout.has_value());
    EXPECT_EQ(options.plays,
              (Plays{{u"a"_qs, {QHostAddress::LocalHost, 0}}, {u"b"_qs, {QHostAddress::LocalHost, 0}}}));
    EXPECT_TRUE(options.certificate.isNull());
    EXPECT_EQ(parsed(u"-- --once"_qs).plays, (Plays{{u"--once"_qs, {}}}));
    EXPECT_EQ(parsed(u"-- --a=b"_qs).plays, (Plays{{u"--a=b"_qs, {}}}));
}

TEST(SimulatorOptions, sayWhereScenariosListen)
{
    const QHostAddress second{u"127.0.0.2"_qs};
    const struct {
        QString argument;
        Options::Play play;
    } cases[]{
        {u"pota@443"_qs, {u"pota"_qs, {QHostAddress::LocalHost, 443}}},
        {u"pota@127.0.0.2:80"_qs, {u"pota"_qs, {second, 80}}},
        {u"a@b/c@127.0.0.2:0"_qs, {u"a@b/c"_qs, {second, 0}}},
        {u"a@b/c"_qs, {u"a@b/c"_qs, {QHostAddress::LocalHost, 0}}},
    };
    for (const auto& c : cases) {
        EXPECT_EQ(parsed(c.argument).plays, Plays{c.play}) << qPrintable(c.argument);
        EXPECT_TRUE(parsed(c.argument).error.isNull());
    }
    EXPECT_EQ(parsed(u"a@1 b@2"_qs).plays.size(), 2U);
}

TEST(SimulatorOptions, nameTheFilesOfTls)
{
    const Options options = parsed(u"--tls a.pem b.pem pota"_qs);
    EXPECT_EQ(options.certificate, u"a.pem"_qs);
    EXPECT_EQ(options.key, u"b.pem"_qs);
    EXPECT_EQ(options.plays.size(), 1U);
    EXPECT_EQ(parsed(u"--tls=a.pem b.pem pota"_qs).key, u"b.pem"_qs);
}

TEST(SimulatorOptions, needNoScenarioToInform)
{
    EXPECT_TRUE(parsed(u"--help"_qs).help);
    EXPECT_TRUE(parsed(u"--version"_qs).version);
    EXPECT_TRUE(parsed(u"--list"_qs).list);
    EXPECT_TRUE(parsed(u"--list"_qs).error.isNull());
}

TEST(SimulatorOptions, sayWhatIsWrong)
{
    const auto behind = [](const QString& argument) {
        return u"\"%1\" needs a port behind the \"@\", or an address like 127.0.0.2, a colon and a port"_qs
            .arg(argument);
    };
    const struct {
        QString line;
        QString error;
    } cases[]{
        {u""_qs, u"no scenario was given"_qs},
        {u"--once"_qs, u"no scenario was given"_qs},
        {u"--port 65536 a"_qs, u"--port needs a number from 0 to 65535"_qs},
        {u"--port a"_qs, u"--port needs a number from 0 to 65535"_qs},
        {u"--port"_qs, u"--port needs a number from 0 to 65535"_qs},
        {u"--port=-1 a"_qs, u"--port needs a number from 0 to 65535"_qs},
        {u"--port 7300 a b"_qs, u"--port goes with one scenario only"_qs},
        {u"--port 7300 a@7301"_qs, u"--port does not go with a scenario that has its own"_qs},
        {u"a@"_qs, behind(u"a@"_qs)},
        {u"a@65536"_qs, behind(u"a@65536"_qs)},
        {u"a@192.168.0.1:80"_qs, behind(u"a@192.168.0.1:80"_qs)},
        {u"a@::1:80"_qs, behind(u"a@::1:80"_qs)},
        {u"a@127.0.0.2"_qs, behind(u"a@127.0.0.2"_qs)},
        {u"--tls"_qs, u"--tls needs a certificate's file and its key's"_qs},
        {u"--tls a.pem"_qs, u"--tls needs a certificate's file and its key's"_qs},
        {u"--timeout 0 a"_qs, u"--timeout needs a number of seconds"_qs},
        {u"--timeout nan a"_qs, u"--timeout needs a number of seconds"_qs},
        {u"--timeout"_qs, u"--timeout needs a number of seconds"_qs},
        {u"--set rate a"_qs, u"--set needs NAME=VALUE"_qs},
        {u"--set =5 a"_qs, u"--set needs NAME=VALUE"_qs},
        {u"--set"_qs, u"--set needs NAME=VALUE"_qs},
        {u"--twice a"_qs, u"unknown option \"--twice\""_qs},
        {u"-v a"_qs, u"unknown option \"-v\""_qs},
        {u"--once=1 a"_qs, u"--once takes no value"_qs},
    };
    for (const auto& c : cases)
        EXPECT_EQ(parsed(c.line).error, c.error) << qPrintable(c.line);
}

TEST(SimulatorOptions, findScenarios)
{
    const QTemporaryDir folder;
    EXPECT_EQ(scenarioPath(u"demo"_qs, u"/shipped"_qs), u"/shipped/demo.scenario"_qs);
    EXPECT_EQ(scenarioPath(u"demo.scenario"_qs, u"/shipped"_qs), u"/shipped/demo.scenario"_qs);
    EXPECT_EQ(scenarioPath(u"./demo"_qs, u"/shipped"_qs), u"./demo"_qs);
    QFile file{folder.filePath(u"b.scenario"_qs)};
    ASSERT_TRUE(file.open(QIODevice::WriteOnly));
    file.write("# Second of two.\nclose\n");
    file.close();
    QFile other{folder.filePath(u"a.scenario"_qs)};
    ASSERT_TRUE(other.open(QIODevice::WriteOnly));
    other.write("close\n");
    other.close();
    EXPECT_EQ(listScenarios(folder.path()), QString{u"a"_qs.leftJustified(28) + u"\n"_qs +
                                                    u"b"_qs.leftJustified(28) + u"Second of two.\n"_qs});
    EXPECT_EQ(listScenarios(folder.filePath(u"none"_qs)), QString{});
}

TEST(SimulatorOptions, areAllInTheHelpText)
{
    for (const char* option : {"--port N", "--tls CERT KEY", "SCENARIO@ADDRESS:PORT", "--once",
                               "--timeout SECONDS", "--set NAME=VALUE", "--list", "--help", "--version"})
        EXPECT_TRUE(helpText().contains(QString::fromLatin1(option))) << option;
}

} // namespace
} // namespace spotwell::simulator
