// SPDX-FileCopyrightText: 2026 the spotwell developers
// SPDX-License-Identifier: MIT

#include "tests/support/web/LoopbackIdentity.h"

#include <QCoreApplication>
#include <QFile>
#include <QJsonDocument>
#include <QJsonObject>
#include <QProcess>
#include <QTemporaryDir>
#include <gtest/gtest.h>

#include <arpa/inet.h>
#include <csignal>
#include <netinet/in.h>
#include <sys/socket.h>
#include <unistd.h>

namespace spotwell
{
namespace
{

constexpr int patience = 20'000;

/// The program as its users start it.
class SimulatorProgram : public testing::Test
{
protected:
    void starts(const QStringList& arguments)
    {
        process_.setWorkingDirectory(folder_.path());
        process_.start(QStringLiteral(SIMULATOR), arguments);
        ASSERT_TRUE(process_.waitForStarted(patience));
    }
    void write(const QString& name, const QByteArray& text)
    {
        QFile file{folder_.filePath(name)};
        ASSERT_TRUE(file.open(QIODevice::WriteOnly));
        file.write(text);
    }
    /// The next event; empty when none comes.
    QJsonObject event()
    {
        while (!process_.canReadLine()) {
            if (!process_.waitForReadyRead(patience))
                return {};
        }
        return QJsonDocument::fromJson(process_.readLine()).object();
    }
    std::uint16_t port()
    {
        const QJsonObject listening = event();
        EXPECT_EQ(listening[u"event"].toString(), u"listening"_qs);
        return static_cast<std::uint16_t>(listening[u"port"].toInt());
    }
    int exitCode()
    {
        EXPECT_TRUE(process_.state() == QProcess::NotRunning || process_.waitForFinished(patience));
        EXPECT_EQ(process_.exitStatus(), QProcess::NormalExit);
        return process_.exitCode();
    }
    /// Connects, says `text` and leaves.
    static void visit(std::uint16_t port, const QByteArray& text,
                      const QString& host = QStringLiteral("127.0.0.1"))
    {
        const int descriptor = socket(AF_INET, SOCK_STREAM, 0);
        sockaddr_in address{};
        address.sin_family = AF_INET;
        address.sin_port = htons(port);
        inet_pton(AF_INET, qPrintable(host), &address.sin_addr);
        EXPECT_EQ(connect(descriptor, reinterpret_cast<sockaddr*>(&address), sizeof address), 0);
        EXPECT_EQ(send(descriptor, text.constData(), static_cast<std::size_t>(text.size()), MSG_NOSIGNAL),
                  text.size());
        close(descriptor);
    }

    QTemporaryDir folder_;
    QProcess process_;
};

TEST_F(SimulatorProgram, endsWithZeroWhenAllChecksHeld)
{
    write(u"good.scenario"_qs, "expect \"a\\n\" within 60\nexpect close within 60\n");
    starts({u"--once"_qs, u"good.scenario"_qs});
    visit(port(), "a\n");
    EXPECT_EQ(exitCode(), 0);
    EXPECT_EQ(process_.readAllStandardError(), QByteArray{});
}

TEST_F(SimulatorProgram, endsWithOneWhenACheckFailed)
{
    write(u"good.scenario"_qs, "expect \"a\\n\" within 60\n");
    starts({u"--once"_qs, u"good.scenario"_qs});
    visit(port(), "b\n");
    EXPECT_EQ(exitCode(), 1);
    EXPECT_TRUE(process_.readAllStandardOutput().contains("\"at\":\"good.scenario:1\""));
}

TEST_F(SimulatorProgram, playsSeveralScenariosAndWaitsForAll)
{
    write(u"a.scenario"_qs, "set text x\nexpect $text within 60\n");
    write(u"b.scenario"_qs, "session\nexpect \"1\" within 60\nend\nsession\nexpect \"2\" within 60\nend\n");
    starts({u"--once"_qs, u"--set"_qs, u"text=ä"_qs, u"a.scenario"_qs, u"b.scenario"_qs});
    const std::uint16_t first = port();
    const std::uint16_t second = port();
    EXPECT_NE(first, second);
    visit(second, "1");
    visit(first, "\xC3\xA4");
    visit(second, "2");
    EXPECT_EQ(exitCode(), 0);
}

TEST_F(SimulatorProgram, playsWebServicesWhereItIsTold)
{
    write(u"web.scenario"_qs, "service http\nanswer\nexpect request \"GET /\"\nend\n");
    write(u"certificate.pem"_qs, loopbackCertificate);
    write(u"key.pem"_qs, loopbackKey);
    starts({u"--tls"_qs, u"certificate.pem"_qs, u"key.pem"_qs, u"--set"_qs, u"scheme=https"_qs,
            u"--timeout"_qs, u"60"_qs, u"web.scenario@0"_qs, u"web.scenario@127.0.0.2:0"_qs, u"pota"_qs});
    const QJsonObject first = event();
    EXPECT_EQ(first[u"scenario"].toString(), u"web"_qs);
    const std::uint16_t second = port();
    EXPECT_EQ(event()[u"scenario"].toString(), u"pota"_qs);
    visit(static_cast<std::uint16_t>(first[u"port"].toInt()), "GET / HTTP/1.1\r\nHost: a\r\n\r\n");
    visit(second, "GET /else HTTP/1.1\r\nHost: a\r\n\r\n", u"127.0.0.2"_qs);
    QJsonObject last;
    for (int disconnects = 0; disconnects < 2 && !(last = event()).isEmpty();)
        disconnects += last[u"event"].toString() == u"disconnect" ? 1 : 0;
    process_.terminate();
    EXPECT_EQ(exitCode(), 1);
}

TEST_F(SimulatorProgram, endsWhenEveryRequestHadItsAnswer)
{
    write(u"web.scenario"_qs, "service http\nanswer\nend\nanswer\nend\n");
    starts({u"--once"_qs, u"web.scenario"_qs});
    const std::uint16_t open = port();
    visit(open, "GET / HTTP/1.1\r\nHost: a\r\n\r\n");
    visit(open, "GET / HTTP/1.1\r\nHost: a\r\n\r\n");
    EXPECT_EQ(exitCode(), 0);
}

TEST_F(SimulatorProgram, endsWithTwoWhenTlsLacksItsFiles)
{
    write(u"web.scenario"_qs, "service https\nanswer\nend\n");
    starts({u"web.scenario"_qs});
    EXPECT_EQ(exitCode(), 2);
    EXPECT_EQ(process_.readAllStandardError(), "web.scenario: an https service needs --tls\n");
    starts({u"--tls"_qs, u"none"_qs, u"none"_qs, u"web.scenario"_qs});
    EXPECT_EQ(exitCode(), 2);
    EXPECT_EQ(process_.readAllStandardError(), "none: No such file or directory\n");
}

TEST_F(SimulatorProgram, endsWithTwoAndAPlaceForABadScenario)
{
    write(u"bad.scenario"_qs, "send \"a\"\nsned \"b\"\n");
    starts({u"bad.scenario"_qs});
    EXPECT_EQ(exitCode(), 2);
    EXPECT_EQ(process_.readAllStandardError(), "bad.scenario:2: unknown command \"sned\"\n");
    EXPECT_EQ(process_.readAllStandardOutput(), QByteArray{});
}

TEST_F(SimulatorProgram, endsWithTwoForBadUsage)
{
    starts({u"--twice"_qs});
    EXPECT_EQ(exitCode(), 2);
    EXPECT_EQ(process_.readAllStandardError(), "spotwell-simulator: unknown option \"--twice\"\n"
                                               "Try \"spotwell-simulator --help\".\n");
}

TEST_F(SimulatorProgram, endsWithTwoForAVariableNobodyKnows)
{
    starts({u"--set"_qs, u"rat=5"_qs, u"demo"_qs});
    EXPECT_EQ(exitCode(), 2);
    EXPECT_EQ(process_.readAllStandardError(), "--set: no scenario has a variable \"rat\"\n");
}

TEST_F(SimulatorProgram, endsWhenAsked)
{
    for (const int signal : {SIGTERM, SIGINT}) {
        starts({u"demo"_qs});
        port();
        kill(static_cast<pid_t>(process_.processId()), signal);
        EXPECT_EQ(exitCode(), 0);
        EXPECT_TRUE(process_.readAllStandardOutput().startsWith("{\"event\":\"done\","));
    }
}

TEST_F(SimulatorProgram, hasFailedWhenItIsEndedBeforeOnceIsFulfilled)
{
    starts({u"--once"_qs, u"demo"_qs});
    port();
    process_.terminate();
    EXPECT_EQ(exitCode(), 1);
}

TEST_F(SimulatorProgram, endsWhenItsTimeIsOver)
{
    starts({u"--timeout"_qs, u"0.01"_qs, u"demo"_qs});
    EXPECT_EQ(exitCode(), 0);
    starts({u"--once"_qs, u"--timeout"_qs, u"0.01"_qs, u"demo"_qs});
    EXPECT_EQ(exitCode(), 1);
}

TEST_F(SimulatorProgram, goesOnWhenNobodyReadsItsReport)
{
    write(u"good.scenario"_qs, "expect \"a\" within 60\n");
    starts({u"--once"_qs, u"good.scenario"_qs});
    const std::uint16_t open = port();
    process_.closeReadChannel(QProcess::StandardOutput);
    visit(open, "a");
    EXPECT_EQ(exitCode(), 0);
}

TEST_F(SimulatorProgram, informs)
{
    starts({u"--version"_qs});
    EXPECT_EQ(exitCode(), 0);
    EXPECT_EQ(process_.readAllStandardOutput(), "spotwell-simulator " SIMULATOR_VERSION "\n");
    starts({u"--help"_qs});
    EXPECT_EQ(exitCode(), 0);
    EXPECT_TRUE(process_.readAllStandardOutput().startsWith("Usage: spotwell-simulator "));
    starts({u"--list"_qs});
    EXPECT_EQ(exitCode(), 0);
    EXPECT_TRUE(process_.readAllStandardOutput().contains("\ndemo  "));
}

} // namespace
} // namespace spotwell
