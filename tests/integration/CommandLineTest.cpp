// SPDX-FileCopyrightText: 2026 the spotwell developers
// SPDX-License-Identifier: MIT

#include "tests/integration/support/Home.h"
#include "tests/integration/support/RunningProgram.h"
#include "tests/support/LoopbackPeer.h"

#include <QDir>
#include <QProcess>
#include <gtest/gtest.h>

namespace spotwell
{
namespace
{

using namespace Qt::StringLiterals;

/// What the program says when it is asked for something else than its window: where there is no display, and
/// without leaving a trace.
class CommandLineProgramTest : public testing::Test
{
protected:
    struct Answer {
        int exitCode;
        QByteArray output;
        QByteArray errors;

        bool operator==(const Answer&) const = default;
    };

    Answer ask(const QStringList& arguments)
    {
        const std::string address = "tcp:host=127.0.0.1,port=" + std::to_string(bus_.port());
        QProcessEnvironment environment = programEnvironment(home_, address, {});
        environment.remove(u"DISPLAY"_s);
        QProcess program;
        program.setProcessEnvironment(environment);
        program.start(QStringLiteral(SPOTWELL), arguments);
        EXPECT_TRUE(program.waitForFinished());
        EXPECT_EQ(program.exitStatus(), QProcess::NormalExit);
        EXPECT_FALSE(bus_.acceptNow()) << "the bus was asked";
        EXPECT_EQ(
            QDir(home_.filePath(QString())).entryList(QDir::AllEntries | QDir::Hidden | QDir::NoDotAndDotDot),
            QStringList(u"runtime"_s));
        EXPECT_TRUE(QDir(home_.filePath(u"runtime"_s)).isEmpty());
        return {program.exitCode(), program.readAllStandardOutput(), program.readAllStandardError()};
    }

private:
    const Home home_;
    /// What there is of a bus: a place that can be connected to.
    LoopbackPeer bus_;
};

TEST_F(CommandLineProgramTest, tellsItsVersionWithoutADisplay)
{
    EXPECT_EQ(ask({u"--version"_s}), (Answer{0, "spotwell " SPOTWELL_VERSION "\n", ""}));
    EXPECT_EQ(ask({u"-platform"_s, u"xcb"_s, u"--version"_s}),
              (Answer{0, "spotwell " SPOTWELL_VERSION "\n", ""}));
}

TEST_F(CommandLineProgramTest, helpsWithoutADisplay)
{
    const Answer answer = ask({u"--help"_s});
    EXPECT_EQ(answer.exitCode, 0);
    EXPECT_TRUE(answer.output.contains("\n  --version ")) << answer.output.constData();
    EXPECT_EQ(answer.errors, "");
}

TEST_F(CommandLineProgramTest, endsWithTwoForWhatItDoesNotKnow)
{
    EXPECT_EQ(ask({u"--port"_s, u"7300"_s}), (Answer{2, "", "spotwell: Unknown option 'port'.\n"}));
    EXPECT_EQ(ask({u"node"_s}), (Answer{2, "", "spotwell: Unexpected argument 'node'.\n"}));
}

} // namespace
} // namespace spotwell
