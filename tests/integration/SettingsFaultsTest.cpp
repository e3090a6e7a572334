// SPDX-FileCopyrightText: 2026 the spotwell developers
// SPDX-License-Identifier: MIT

#include "tests/integration/support/FileFaultFixture.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>

#include <csignal>
#include <random>
#include <sys/stat.h>
#include <unistd.h>

namespace spotwell
{
namespace
{

class SettingsFaultsTest : public FileFaultFixture
{
protected:
    SettingsFaultsTest() { home.writeSettings(fullSettings()); }

    QByteArray name() const { return QFile::encodeName(home.settingsFile()); }
    QString reading(const char* reason) const
    {
        return QStringLiteral("read: could not read all of %1 - %2")
            .arg(home.settingsFile(), QLatin1String(reason));
    }
    QString saving(const char* reason) const
    {
        return QStringLiteral("save: could not write %1 - %2")
            .arg(home.settingsFile(), QLatin1String(reason));
    }
    QStringList settingsEntries() const
    {
        QStringList found = entries();
        found.removeIf([](const QString& entry) {
            return !entry.startsWith(QStringLiteral("read:")) && !entry.startsWith(QStringLiteral("save:"));
        });
        return found;
    }
    /// The program starts as if it had never been started, and works; what it has logged of its settings.
    QStringList startEmpty()
    {
        launch();
        EXPECT_TRUE(waitUntil([this] { return home.log().contains("applicationDidFinishLaunching:v"); }));
        expectTheWindowAnswers();
        end();
        return settingsEntries();
    }
    static SettingsTexts firstSettings()
    {
        SettingsTexts settings;
        for (const char* key : {"dxcluster", "port", "callsign", "password"})
            settings.insert(QString::fromLatin1(key), QString());
        for (const char* key :
             {"reconnect", "wsprnet", "dxsummit", "pota", "skimmers", "dxsexclusive", "dark"})
            settings.insert(QString::fromLatin1(key), QStringLiteral("false"));
        return settings;
    }
};

TEST_F(SettingsFaultsTest, ofRandomBytesTheProgramTakesNothingAndWritesAWholeFile)
{
    std::mt19937 random(7300);
    QByteArray bytes(20'000, '\0');
    for (char& byte : bytes)
        byte = static_cast<char>(random());
    put(home.settingsFile(), bytes);
    EXPECT_EQ(startEmpty(), QStringList(reading("Damaged")));
    EXPECT_TRUE(contentOf(home.settingsFile()).contains("\ncallsign=\n"));
    EXPECT_EQ(startEmpty(), QStringList(reading("Damaged"))) << "said again";
}

TEST_F(SettingsFaultsTest, ofAHalfWrittenFileItTakesTheHalfThatIsThere)
{
    put(home.settingsFile(), "[General]\ncallsign=N0CALL\ndxcluster=127.0.0.1\nport=" +
                                 QByteArray::number(node.port()) + "\nreconnect=true\npassw");
    launch();
    expectLogin();
    expectTheNodeGoesOn();
    end();
    SettingsTexts expected = fullSettings();
    expected[QStringLiteral("password")].clear();
    EXPECT_EQ(home.settings(), expected);
}

TEST_F(SettingsFaultsTest, otherTypesAreTakenAsTexts)
{
    put(home.settingsFile(), "[General]\ncallsign=N0CALL\ndxcluster=127.0.0.1\nport=@Variant(\\0\\0\\0\\x2)\n"
                             "password=@ByteArray(x)\nreconnect=maybe\ndark=@Invalid()\npota=0\n");
    launch();
    EXPECT_TRUE(logs(QStringLiteral("openTelnetConnection")));
    expectTheWindowAnswers();
    end();
    EXPECT_EQ(home.settings().value(QStringLiteral("password")), QStringLiteral("x"));
    EXPECT_EQ(home.settings().value(QStringLiteral("dark")), QStringLiteral("false"));
    EXPECT_EQ(home.settings().value(QStringLiteral("pota")), QStringLiteral("false"));
}

TEST_F(SettingsFaultsTest, aFileOfAHundredMegabytesIsNotRead)
{
    ASSERT_EQ(::truncate(name().constData(), 100'000'000), 0);
    launch();
    EXPECT_LT(program->residentKiB(), 100'000 * slowness);
    end();
    EXPECT_EQ(settingsEntries(), QStringList(reading("Larger than 1048576 bytes")));
    EXPECT_EQ(home.settings(), firstSettings()) << "it has a file of its own again";
}

TEST_F(SettingsFaultsTest, aDirectoryInTheFilesPlaceStays)
{
    ASSERT_EQ(::unlink(name().constData()), 0);
    ASSERT_EQ(::mkdir(name().constData(), 0700), 0);
    EXPECT_EQ(startEmpty(), (QStringList{reading("Not a regular file"), saving("Not a regular file")}));
    EXPECT_TRUE(QFileInfo(home.settingsFile()).isDir());
}

TEST_F(SettingsFaultsTest, nobodyWaitsForAPipeInTheFilesPlace)
{
    ASSERT_EQ(::unlink(name().constData()), 0);
    ASSERT_EQ(::mkfifo(name().constData(), 0600), 0);
    EXPECT_EQ(startEmpty(), (QStringList{reading("Not a regular file"), saving("Not a regular file")}));
}

TEST_F(SettingsFaultsTest, aLinkThatLeadsNowhereIsFilled)
{
    ASSERT_EQ(::unlink(name().constData()), 0);
    ASSERT_EQ(::symlink("elsewhere.conf", name().constData()), 0);
    EXPECT_EQ(startEmpty(), QStringList());
    EXPECT_TRUE(QFileInfo(home.settingsFile()).isSymLink());
    EXPECT_EQ(home.settings(), firstSettings());
}

TEST_F(SettingsFaultsTest, aLinkToItselfGivesWay)
{
    ASSERT_EQ(::unlink(name().constData()), 0);
    ASSERT_EQ(::symlink("spotwell.conf", name().constData()), 0);
    EXPECT_EQ(startEmpty(), QStringList(reading("Too many levels of symbolic links")));
    EXPECT_EQ(home.settings(), firstSettings());
}

TEST_F(SettingsFaultsTest, aLeftLockOfAnyKindHoldsNobodyUp)
{
    const QByteArray lock = name() + ".lock";
    ASSERT_EQ(::mkdir(lock.constData(), 0700), 0);
    launch();
    expectLogin();
    expectTheNodeGoesOn();
    end();
    EXPECT_EQ(home.settings(), fullSettings());
    ASSERT_EQ(::rmdir(lock.constData()), 0);
    ASSERT_EQ(::mkfifo(lock.constData(), 0600), 0);
    program.reset();
    launch();
    end();
    EXPECT_EQ(home.settings(), fullSettings());
}

TEST_F(SettingsFaultsTest, aFileThatMayNotBeReadIsTold)
{
    ASSERT_EQ(::chmod(name().constData(), 0), 0);
    launch(withoutPrivileges());
    end();
    EXPECT_EQ(settingsEntries().value(0), reading("Permission denied"));
}

TEST_F(SettingsFaultsTest, whereNothingMayBeWrittenTheOldFileStays)
{
    const QString directory = QFileInfo(home.settingsFile()).path();
    const QByteArray before = contentOf(home.settingsFile());
    ASSERT_EQ(::chmod(QFile::encodeName(directory).constData(), 0500), 0);
    launch(withoutPrivileges());
    expectLogin();
    expectTheNodeGoesOn();
    end();
    ASSERT_EQ(::chmod(QFile::encodeName(directory).constData(), 0700), 0);
    EXPECT_EQ(settingsEntries(), QStringList(saving("Permission denied")));
    EXPECT_EQ(contentOf(home.settingsFile()), before);
}

TEST_F(SettingsFaultsTest, whereThereIsNoRoomTheOldFileStays)
{
    const QByteArray before = contentOf(home.settingsFile());
    launch({QStringLiteral("prlimit"), QStringLiteral("--fsize=60")});
    expectLogin();
    expectTheNodeGoesOn();
    end();
    EXPECT_EQ(contentOf(home.settingsFile()), before);
    EXPECT_EQ(QDir(QFileInfo(home.settingsFile()).path()).entryList(QDir::Files | QDir::Hidden).size(), 1);
    // The log has no more room either, and what it has of the last entry is a part.
    EXPECT_EQ(home.log().size(), 60);
}

TEST_F(SettingsFaultsTest, aFileThatAllCouldReadIsForTheUserAloneAfterwards)
{
    ASSERT_EQ(::chmod(name().constData(), 0644), 0);
    launch();
    end();
    EXPECT_EQ(modeOf(home.settingsFile()), 0600U);
}

TEST_F(SettingsFaultsTest, whatReplacesTheFileMeanwhileIsReplacedAtTheEnd)
{
    launch();
    expectLogin();
    SettingsTexts others = fullSettings();
    others[QStringLiteral("callsign")] = QStringLiteral("N1CALL");
    home.writeSettings(others);
    expectTheNodeGoesOn();
    end();
    EXPECT_EQ(home.settings(), fullSettings());
}

TEST_F(SettingsFaultsTest, aKillAtAnyMomentLeavesTheOldFileOrTheNewOne)
{
    const QByteArray newFile = contentOf(home.settingsFile());
    const QByteArray oldFile = "[General]\nport=" + QByteArray::number(node.port()) +
                               "\ncallsign=N0CALL\ndxcluster=127.0.0.1\npassword=secret\nreconnect=true\n";
    std::mt19937 random(1);
    std::uniform_int_distribution<int> microseconds(0, 6000 * slowness);
    for (int time = 0; time < (sanitized ? 8 : 30); ++time) {
        put(home.settingsFile(), oldFile);
        program.reset();
        launch();
        // It saves at its end, and is killed before, in or after that.
        program->signal(SIGTERM);
        ::usleep(static_cast<useconds_t>(microseconds(random)));
        program->signal(SIGKILL);
        ASSERT_TRUE(waitUntil([this] { return !program->isRunning(); }, std::chrono::seconds{60}));
        const QByteArray found = contentOf(home.settingsFile());
        EXPECT_TRUE(found == oldFile || found == newFile) << time << ": " << found.constData();
    }
    program.reset();
    node.stopListening();
    launch();
    end();
    EXPECT_EQ(settingsEntries(), QStringList());
    EXPECT_EQ(contentOf(home.settingsFile()), newFile);
}

TEST_F(SettingsFaultsTest, withoutAHomeItWorksAndSaysWhatItCannotKeep)
{
    ASSERT_EQ(::mkdir(QFile::encodeName(home.filePath(QStringLiteral("locked"))).constData(), 0500), 0);
    const QString gone = home.filePath(QStringLiteral("locked/gone"));
    launch(withoutPrivileges(), {QStringLiteral("HOME=") + gone, QStringLiteral("XDG_CONFIG_HOME="),
                                 QStringLiteral("XDG_STATE_HOME=")});
    end();
    const QString error = QString::fromUtf8(program->standardError());
    EXPECT_TRUE(error.contains(QStringLiteral("applicationDidFinishLaunching: error creating: ") + gone +
                               QStringLiteral("/.local/state/tarnbrooksoftware/Logwright/debug_log_files - "
                                              "Permission denied\n")))
        << error.toStdString();
    EXPECT_TRUE(error.contains(QStringLiteral("save: could not write ") + gone +
                               QStringLiteral("/.config/tarnbrooksoftware/spotwell.conf - ")))
        << error.toStdString();
}

} // namespace
} // namespace spotwell
