// SPDX-FileCopyrightText: 2026 the spotwell developers
// SPDX-License-Identifier: MIT

#include "tools/spotwell-bridge/Options.h"

#include <QCoreApplication>
#include <gtest/gtest.h>

namespace spotwell::bridge
{

namespace
{

using namespace Qt::Literals::StringLiterals;
using namespace std::chrono_literals;

CommandLine read(const QStringList& arguments)
{
    return readCommandLine(QStringList{u"spotwell-bridge"_s} + arguments);
}

TEST(BridgeOptions, AreThoseOfALoggerThatHandsNothingOn)
{
    const CommandLine line = read({});
    ASSERT_TRUE(line.options);
    EXPECT_EQ(line.options->identity.displayName, u"Logwright"_s);
    EXPECT_EQ(line.options->identity.version, u"6.45"_s);
    EXPECT_FALSE(line.options->answers.error);
    EXPECT_EQ(line.options->answers.delay, 0us);
    EXPECT_EQ(line.options->printing, Printing::nothing);
    EXPECT_FALSE(line.options->telnet);
    EXPECT_FALSE(line.options->n1mm);
    EXPECT_FALSE(line.options->count);
    EXPECT_FALSE(line.options->duration);
}

TEST(BridgeOptions, AreAllTaken)
{
    const CommandLine line =
        read({u"--telnet"_s, u"0.0.0.0:7300"_s, u"--n1mm"_s, u"shack:12060"_s, u"--print"_s, u"text"_s,
              u"--display-name"_s, u"--telnet"_s, u"--logger-version"_s, u"7"_s, u"--script-error"_s, u""_s,
              u"--script-delay=0.25"_s, u"--count"_s, u"3"_s, u"--seconds"_s, u"1e9"_s});
    ASSERT_TRUE(line.options) << line.complaint.toStdString();
    EXPECT_EQ(line.options->telnet, (ListenAddress{QHostAddress(u"0.0.0.0"_s), 7300}));
    EXPECT_EQ(line.options->n1mm, (Target{u"shack"_s, 12060}));
    EXPECT_EQ(line.options->printing, Printing::text);
    EXPECT_EQ(line.options->identity.displayName, u"--telnet"_s);
    EXPECT_EQ(line.options->identity.version, u"7"_s);
    EXPECT_EQ(line.options->answers.error, u""_s);
    EXPECT_EQ(line.options->answers.delay, 250ms);
    EXPECT_EQ(line.options->count, 3U);
    EXPECT_EQ(line.options->duration, 1'000'000'000s);
    EXPECT_EQ(read({u"--no-version"_s}).options->identity.version, std::nullopt);
}

TEST(BridgeOptions, HaveAMeaningWithoutAValue)
{
    const ListenAddress standard{QHostAddress(QHostAddress::LocalHost), 7373};
    for (const QStringList& arguments :
         {QStringList{u"--telnet"_s, u"--print"_s}, QStringList{u"--print"_s, u"--telnet"_s},
          QStringList{u"--print=json"_s, u"--telnet=7373"_s}}) {
        const CommandLine line = read(arguments);
        ASSERT_TRUE(line.options) << line.complaint.toStdString();
        EXPECT_EQ(line.options->printing, Printing::json);
        EXPECT_EQ(line.options->telnet, standard);
    }
}

TEST(BridgeOptions, AreComplainedOf)
{
    const QString telnet = u"--telnet takes [ADDRESS:]PORT, such as 7373, 0.0.0.0:7373 or [::1]:7373."_s;
    const QString n1mm = u"--n1mm takes HOST:PORT, such as 127.0.0.1:12060."_s;
    const QString count = u"--count takes a whole number above 0."_s;
    const struct {
        QStringList arguments;
        QString complaint;
    } table[] = {
        {{u"--nonsense"_s}, u"Unknown option 'nonsense'."_s},
        {{u"--nonsense"_s, u"--display-name"_s, u"--count"_s}, u"Unknown option 'nonsense'."_s},
        {{u"-5"_s}, u"Unknown option '5'."_s},
        {{u"more"_s}, u"Unexpected argument 'more'."_s},
        {{u"--"_s, u"--print"_s}, u"Unexpected argument '--print'."_s},
        {{u"--help=x"_s}, u"Unexpected value after '--help'."_s},
        {{u"--telnet"_s, u"x"_s}, telnet},
        {{u"--telnet="_s}, telnet},
        {{u"--telnet"_s, u"7373"_s, u"--telnet"_s}, u"--telnet may be given only once."_s},
        {{u"--n1mm"_s, u"12060"_s}, n1mm},
        {{u"--n1mm"_s}, n1mm},
        {{u"--n1mm"_s, u"--telnet"_s, u"7373"_s}, n1mm},
        {{u"--script-delay"_s, u"--print"_s, u"text"_s}, u"--script-delay takes a number of seconds."_s},
        {{u"--print"_s, u"more"_s}, u"--print takes json or text."_s},
        {{u"--print"_s, u"JSON"_s}, u"--print takes json or text."_s},
        {{u"--count"_s}, count},
        {{u"--count"_s, u"0"_s}, count},
        {{u"--count"_s, u"x"_s}, count},
        {{u"--count"_s, u"-1"_s}, count},
        {{u"--display-name"_s}, u"--display-name takes a text."_s},
        {{u"--logger-version"_s}, u"--logger-version takes a text."_s},
        {{u"--script-error"_s}, u"--script-error takes a text."_s},
        {{u"--script-delay"_s}, u"--script-delay takes a number of seconds."_s},
        {{u"--script-delay"_s, u"nan"_s}, u"--script-delay takes a number of seconds."_s},
        {{u"--seconds"_s, u"-1"_s}, u"--seconds takes a number of seconds."_s},
        {{u"--seconds"_s, u"1000000001"_s}, u"--seconds takes a number of seconds."_s},
        {{u"--no-version"_s, u"--logger-version"_s, u"7"_s},
         u"--logger-version and --no-version exclude each other."_s},
    };
    for (const auto& row : table) {
        const CommandLine line = read(row.arguments);
        EXPECT_EQ(line.complaint, row.complaint) << row.arguments.join(u' ').toStdString();
        EXPECT_FALSE(line.options);
    }
}

TEST(BridgeOptions, AreExplained)
{
    const CommandLine help = read({u"--help"_s});
    EXPECT_FALSE(help.options);
    EXPECT_EQ(
        help.text,
        u"Usage: %1 [options]\n"_s.arg(QCoreApplication::arguments().first()) +
            uR"(Receives what spotwell hands to a logging application on the session bus, and hands it on.

Options:
  --telnet <[ADDRESS:]PORT>  Serves telnet clients as a DX cluster node there;
                             without a value on 127.0.0.1:7373.
  --n1mm <HOST:PORT>         Sends each spot as an N1MM datagram (XML over UDP)
                             there.
  --print <json|text>        Prints what arrives: as JSON objects, which is
                             meant without a value, or as lines of a DX cluster.
  --display-name <TEXT>      The logger's displayed name (Logwright).
  --logger-version <TEXT>    The logger's version (6.45).
  --script-error <TEXT>      Answers the command processSpot with an error of
                             this text.
  --script-delay <SECONDS>   Answers the command processSpot so much later.
  --count <N>                Ends after so many notifications and commands.
  --seconds <SECONDS>        Ends after this time.
  --no-version               The logger gives no version.
  --help                     Shows this text.
  --version                  Shows the program's version.
)"_s);
    EXPECT_EQ(read({u"--version"_s}).text, u"spotwell-bridge " SPOTWELL_VERSION "\n"_s);
}

} // namespace

} // namespace spotwell::bridge
