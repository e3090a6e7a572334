// SPDX-FileCopyrightText: 2026 the spotwell developers
// SPDX-License-Identifier: MIT

#include "tests/integration/support/FileFaultFixture.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>

#include <fcntl.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>

namespace spotwell
{
namespace
{

class LogFaultsTest : public FileFaultFixture
{
protected:
    LogFaultsTest() { home.writeSettings(fullSettings()); }

    void expectAllWell()
    {
        expectLogin();
        expectTheNodeGoesOn();
    }
};

TEST_F(LogFaultsTest, whereTheDirectoryMayNotBeWrittenTheLogGoesToStandardError)
{
    QDir().mkpath(home.logDirectory());
    ASSERT_EQ(::chmod(QFile::encodeName(home.logDirectory()).constData(), 0500), 0);
    launch(withoutPrivileges());
    expectAllWell();
    end();
    EXPECT_TRUE(home.logFiles().isEmpty());
    EXPECT_TRUE(program->standardError().contains("DXClusterController:sendTelnet:[7]characters:N0CALL\n"));
    EXPECT_EQ(home.settings(), fullSettings());
}

TEST_F(LogFaultsTest, aDirectoryThatGoesAwayTakesTheLogWithItAndNothingElse)
{
    launch();
    expectAllWell();
    ASSERT_TRUE(QDir(home.logDirectory()).removeRecursively());
    expectTheNodeGoesOn();
    end();
    EXPECT_TRUE(home.logFiles().isEmpty());
    EXPECT_EQ(home.settings(), fullSettings());
}

TEST_F(LogFaultsTest, aPipeThatNobodyReadsHoldsNobodyUp)
{
    // No log directory: the log goes to the pipe that the program was started with, which is full.
    put(home.filePath(QStringLiteral("state")), "in the way");
    int ends[2];
    ASSERT_EQ(::pipe(ends), 0);
    const QString script = QStringLiteral("exec 2>/proc/%1/fd/%2; exec \"$0\"").arg(::getpid()).arg(ends[1]);
    const QByteArray filling(4096, 'x');
    ASSERT_EQ(::fcntl(ends[1], F_SETFL, O_NONBLOCK), 0);
    while (::write(ends[1], filling.constData(), static_cast<std::size_t>(filling.size())) > 0) {
    }
    launch({QStringLiteral("sh"), QStringLiteral("-c"), script});
    expectAllWell();
    end();
    ::close(ends[0]);
    ::close(ends[1]);
    EXPECT_EQ(home.settings(), fullSettings());
}

TEST_F(LogFaultsTest, afterADiskWasFullTheLogSaysWhatItLost)
{
    launch({QStringLiteral("prlimit"), QStringLiteral("--fsize=400:unlimited")});
    expectAllWell();
    EXPECT_EQ(home.log().size(), 400);
    // There is room again.
    const rlimit plenty{RLIM_INFINITY, RLIM_INFINITY};
    ASSERT_EQ(::prlimit(static_cast<pid_t>(program->processId()), RLIMIT_FSIZE, &plenty, nullptr), 0);
    end();
    const QRegularExpression notice(QStringLiteral("^StandardErrorLog: [1-9][0-9]* entries were lost$"));
    const QStringList all = entries();
    EXPECT_EQ(all.filter(notice).size(), 1) << all.join(u'\n').toStdString();
    EXPECT_TRUE(all.contains(QStringLiteral("DXClusterController:sendTelnet:[5]characters:quit")));
    EXPECT_EQ(home.settings(), fullSettings());
}

} // namespace
} // namespace spotwell
