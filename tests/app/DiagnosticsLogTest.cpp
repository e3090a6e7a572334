// SPDX-FileCopyrightText: 2026 the spotwell developers
// SPDX-License-Identifier: MIT

#include "app/DiagnosticsLog.h"

#include "tests/app/FakeProgram.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <gtest/gtest.h>

#include <cerrno>
#include <cstring>
#include <ctime>

namespace spotwell
{

namespace
{

struct DiagnosticsLogTest : testing::Test {
    DiagnosticsLogTest() : zone(qgetenv("TZ")) { setZone("UTC"); }
    ~DiagnosticsLogTest() override { setZone(zone); }
    DiagnosticsLogTest(const DiagnosticsLogTest&) = delete;
    DiagnosticsLogTest& operator=(const DiagnosticsLogTest&) = delete;
    static void setZone(const QByteArray& name)
    {
        if (name.isNull())
            qunsetenv("TZ");
        else
            qputenv("TZ", name);
        ::tzset();
    }

    const QByteArray zone;
    QTemporaryDir directory;
    FakeClock clock;
    FakeMainQueue mainQueue{clock};
    FakeProcessServices process;
    FakeLog log;
    DiagnosticsLog diagnostics{log, clock, mainQueue, process, QStringLiteral("1.2.3")};
};

} // namespace

TEST_F(DiagnosticsLogTest, StampsTheLocalTime)
{
    EXPECT_EQ(diagnostics.debugTimeStamp(), QStringLiteral("20270203_090507"));
    setZone("Asia/Tokyo");
    EXPECT_EQ(diagnostics.debugTimeStamp(), QStringLiteral("20270203_180507"));
    setZone("America/New_York");
    EXPECT_EQ(diagnostics.debugTimeStamp(), QStringLiteral("20270203_040507"));
    clock.advance(Seconds{13 * 3600.0 + 0.999999});
    EXPECT_EQ(diagnostics.debugTimeStamp(), QStringLiteral("20270203_170507"));
}

TEST_F(DiagnosticsLogTest, NamesTheFileOfTheRunAfterItsStart)
{
    diagnostics.setDebugPath(QStringLiteral("/state/debug_log_files"));
    EXPECT_TRUE(diagnostics.debugLogFilePath().isEmpty());
    diagnostics.redirectConsoleLogToDocumentFolder();
    EXPECT_EQ(diagnostics.debugLogFilePath(),
              QStringLiteral("/state/debug_log_files/20270203_090507 spotwell.txt"));
    EXPECT_EQ(process.reopened, QStringList{diagnostics.debugLogFilePath()});
    EXPECT_TRUE(log.lines.isEmpty());
}

TEST_F(DiagnosticsLogTest, MakesItsDirectoryOnce)
{
    const QString path = directory.filePath(QStringLiteral("a/b/\u00fc c"));
    diagnostics.setDebugPath(path);
    diagnostics.createDebugDirectory();
    EXPECT_TRUE(QFileInfo(path).isDir());
    EXPECT_EQ(log.lines, QStringList{QStringLiteral("applicationDidFinishLaunching: created: ") + path});
    diagnostics.createDebugDirectory();
    EXPECT_EQ(log.lines.size(), 1);
}

TEST_F(DiagnosticsLogTest, LeavesAFileInItsPlaceAlone)
{
    const QString path = directory.filePath(QStringLiteral("file"));
    QFile file(path);
    ASSERT_TRUE(file.open(QIODevice::WriteOnly));
    diagnostics.setDebugPath(path);
    diagnostics.createDebugDirectory();
    EXPECT_TRUE(log.lines.isEmpty()) << "something exists there";
}

TEST_F(DiagnosticsLogTest, SaysWhenItsDirectoryCannotBeMade)
{
    QFile file(directory.filePath(QStringLiteral("file")));
    ASSERT_TRUE(file.open(QIODevice::WriteOnly));
    const QString path = directory.filePath(QStringLiteral("file/below"));
    diagnostics.setDebugPath(path);
    diagnostics.createDebugDirectory();
    EXPECT_EQ(log.lines, QStringList{QStringLiteral("applicationDidFinishLaunching: error creating: %1 - %2")
                                         .arg(path, QString::fromLocal8Bit(std::strerror(ENOTDIR)))});
}

TEST_F(DiagnosticsLogTest, ShowsItsVersionBehindAV)
{
    EXPECT_EQ(diagnostics.displayLongVersionString(), QStringLiteral("v1.2.3"));
}

TEST_F(DiagnosticsLogTest, WarnsOffTheMainThreadOnly)
{
    diagnostics.threadCheckWarning();
    EXPECT_TRUE(log.lines.isEmpty());
    mainQueue.onMainThread = false;
    diagnostics.threadCheckWarning();
    EXPECT_EQ(log.lines, QStringList{QStringLiteral(
                             "threadCheckWarning: called on background thread:\nframe 0\nframe 1")});
}

} // namespace spotwell
