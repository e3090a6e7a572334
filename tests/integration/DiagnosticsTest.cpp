// SPDX-FileCopyrightText: 2026 the spotwell developers
// SPDX-License-Identifier: MIT

#include "tests/integration/support/ProgramFixture.h"

#include <QDateTime>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QTimeZone>

#include <sys/stat.h>

namespace spotwell
{
namespace
{

class DiagnosticsTest : public ProgramFixture
{
protected:
    static mode_t modeOf(const QString& path)
    {
        struct stat status {
        };
        return ::stat(QFile::encodeName(path).constData(), &status) == 0 ? status.st_mode & 07777U : 0;
    }
    void runOnce(const QStringList& variables = {})
    {
        node.forget();
        startConnected(variables);
        say("login: ");
        ASSERT_TRUE(hears("N0CALL\n"));
        end();
    }
};

/// A zone as TZ says it, and how far it is ahead of UTC.
struct Zone {
    const char* variable;
    int aheadMinutes;
    const char* offset;
};

void PrintTo(const Zone& zone, std::ostream* out)
{
    *out << zone.variable;
}

class ZoneTest : public DiagnosticsTest, public testing::WithParamInterface<Zone>
{
};

TEST_P(ZoneTest, namesTheLogAfterTheLocalTimeOfTheStart)
{
    const Zone& zone = GetParam();
    const auto now = [&zone] { return QDateTime::currentDateTimeUtc().addSecs(60 * zone.aheadMinutes); };
    const QString before = now().toString(QStringLiteral("yyyyMMdd_HHmmss"));
    runOnce({QString::fromLatin1(zone.variable)});
    const QString after = now().toString(QStringLiteral("yyyyMMdd_HHmmss"));
    ASSERT_EQ(home.logFiles().size(), 1);
    const QString name = QFileInfo(home.logFiles().first()).fileName();
    ASSERT_TRUE(name.endsWith(QStringLiteral(" spotwell.txt"))) << name.toStdString();
    const QString stamp = name.chopped(13);
    EXPECT_EQ(stamp.size(), 15);
    EXPECT_LE(before, stamp);
    EXPECT_LE(stamp, after);
    for (const QByteArray& line : home.log().split('\n')) {
        if (!line.isEmpty() && !line.startsWith('\t')) {
            EXPECT_EQ(line.mid(23, 5), QByteArray(zone.offset)) << line.constData();
        }
    }
}

INSTANTIATE_TEST_SUITE_P(Zones, ZoneTest,
                         testing::Values(Zone{"TZ=UTC0", 0, "+0000"}, Zone{"TZ=ABC-5:45", 345, "+0545"},
                                         Zone{"TZ=XYZ3:30", -210, "-0330"}),
                         [](const auto& zone) { return "zone" + std::to_string(zone.index); });

TEST_F(DiagnosticsTest, writesEveryLineInTheFormOfAnEntry)
{
    runOnce();
    const QByteArray log = home.log();
    ASSERT_TRUE(log.endsWith('\n'));
    for (const QByteArray& line : log.chopped(1).split('\n'))
        EXPECT_TRUE(line.startsWith('\t') || entryFront().match(QString::fromUtf8(line)).hasMatch())
            << line.constData();
    EXPECT_TRUE(entries().first().startsWith(QStringLiteral("applicationDidFinishLaunching:v")));
}

TEST_F(DiagnosticsTest, keepsEverythingForTheUserAlone)
{
    // The settings' directory is the program's own work, too.
    start();
    ASSERT_TRUE(waitUntil([this] { return home.log().contains("applicationDidFinishLaunching:v"); }));
    end();
    EXPECT_EQ(modeOf(home.settingsFile()), 0600U);
    EXPECT_EQ(modeOf(home.filePath(QStringLiteral("config/tarnbrooksoftware"))), 0700U);
    for (QString directory = home.logDirectory(); directory.size() > home.filePath(QString()).size();
         directory = QFileInfo(directory).path())
        EXPECT_EQ(modeOf(directory), 0700U) << directory.toStdString();
    ASSERT_EQ(home.logFiles().size(), 1);
    EXPECT_EQ(modeOf(home.logFiles().first()), 0600U);
}

TEST_F(DiagnosticsTest, saysOnceWhereTheStartedProgramCanBeSeenThatTheDirectoryIsNew)
{
    const QByteArray created =
        "applicationDidFinishLaunching: created: " + QFile::encodeName(home.logDirectory()) + '\n';
    runOnce();
    const QByteArray error = program->standardError();
    EXPECT_TRUE(error.endsWith(created)) << error.constData();
    EXPECT_EQ(error.count('\n'), 1) << error.constData();
    EXPECT_FALSE(home.log().contains("created:"));
    runOnce();
    EXPECT_EQ(program->standardError(), QByteArray());
    EXPECT_FALSE(home.log().contains("created:"));
}

TEST_F(DiagnosticsTest, worksWithoutALogDirectory)
{
    QDir().mkpath(home.filePath(QStringLiteral("state")));
    QFile file(home.filePath(QStringLiteral("state/tarnbrooksoftware")));
    ASSERT_TRUE(file.open(QIODevice::WriteOnly));
    runOnce();
    const QByteArray error = program->standardError();
    EXPECT_TRUE(error.contains("applicationDidFinishLaunching: error creating: " +
                               QFile::encodeName(home.logDirectory()) + " - Not a directory\n"))
        << error.constData();
    EXPECT_TRUE(error.contains("DXClusterController:sendTelnet:[7]characters:N0CALL\n"));
    EXPECT_EQ(home.settings().value(QStringLiteral("callsign")), QStringLiteral("N0CALL"));
}

} // namespace
} // namespace spotwell
