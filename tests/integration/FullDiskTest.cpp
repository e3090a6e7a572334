// SPDX-FileCopyrightText: 2026 the spotwell developers
// SPDX-License-Identifier: MIT

#include "tests/integration/support/UserFixture.h"
#include "tests/integration/support/WindowPing.h"

#include <QDir>
#include <QFile>
#include <QProcess>

#include <fcntl.h>
#include <unistd.h>

namespace spotwell
{
namespace
{

using namespace Qt::StringLiterals;

/// The program with its settings and its log on a disk of their own, a small one that gets full. It is a
/// tmpfs that the program's mount namespace alone has; the test reaches it by a descriptor.
class FullDiskTest : public UserFixture
{
protected:
    void SetUp() override
    {
        QProcess attempt;
        attempt.start(u"unshare"_s, unshared({u"true"_s}));
        if (!attempt.waitForFinished() || attempt.exitCode() != 0)
            GTEST_SKIP() << "NOT TESTED: this machine permits no mounts of a process's own: "
                         << attempt.readAllStandardError().constData();
    }
    void TearDown() override
    {
        UserFixture::TearDown();
        if (HasFailure())
            std::cerr << "What is on its disk:\n" << log().constData() << settings().constData();
        ::close(disk_);
    }

    /// Starts the program with a disk of these mount options, after what the shell does on it in
    /// `preparation`. Its settings are there, in another form than they are saved in.
    void openOn(const QString& options, const QString& preparation = u":"_s)
    {
        const QString disk = home.filePath(u"disk"_s);
        ASSERT_TRUE(QDir().mkpath(disk + u"/../config/tarnbrooksoftware"_s) && QDir().mkpath(disk));
        QFile file(home.settingsFile());
        ASSERT_TRUE(file.open(QIODevice::WriteOnly) && file.write(oldFile) == oldFile.size());
        file.close();
        const QString script = u"mount -t tmpfs -o %1 tmpfs %2 && cd %2 && cp -r ../config . || exit; %3; "
                               "XDG_CONFIG_HOME=%2/config XDG_STATE_HOME=%2/state exec \"$0\""_s;
        launcher =
            QStringList(u"unshare"_s) + unshared({u"sh"_s, u"-c"_s, script.arg(options, disk, preparation)});
        open();
        const QString outside = u"/proc/%1/root%2"_s.arg(program->processId()).arg(disk);
        disk_ = ::open(QFile::encodeName(outside).constData(), O_PATH | O_DIRECTORY | O_CLOEXEC);
        ASSERT_GE(disk_, 0);
        ASSERT_EQ(settings(), oldFile);
    }
    void fill() const
    {
        QFile file(onDisk(u"filling"_s));
        ASSERT_TRUE(file.open(QIODevice::WriteOnly | QIODevice::Unbuffered));
        while (file.write(QByteArray(4096, 'x')) > 0) {
        }
    }
    void makeRoom() const { ASSERT_TRUE(QFile::remove(onDisk(u"filling"_s))); }

    QByteArray settings() const { return contentOf(onDisk(u"config/tarnbrooksoftware/spotwell.conf"_s)); }
    QStringList settingsFiles() const
    {
        return QDir(onDisk(u"config/tarnbrooksoftware"_s)).entryList(QDir::Files | QDir::Hidden);
    }
    QByteArray log() const
    {
        const QDir directory(onDisk(u"state/tarnbrooksoftware/Logwright/debug_log_files"_s));
        const QStringList names = directory.entryList(QDir::Files);
        return names.isEmpty() ? QByteArray() : contentOf(directory.filePath(names.first()));
    }
    QStringList logged(const QString& pattern) const
    {
        QStringList lines = QString::fromUtf8(log()).split(u'\n');
        for (QString& line : lines)
            line.remove(entryFront());
        return lines.filter(QRegularExpression(u'^' + pattern + u'$'));
    }
    QString failedSave() const
    {
        return u"save: could not write %1/config/tarnbrooksoftware/spotwell.conf - No space left on device"_s
            .arg(home.filePath(u"disk"_s));
    }
    /// The file when all settings are saved.
    QByteArray newFile(bool dark) const
    {
        SettingsTexts expected = settingsFor(node.port());
        for (const char* key : {"wsprnet", "dxsummit", "pota", "skimmers", "dxsexclusive", "dark"})
            expected.insert(QString::fromLatin1(key), QStringLiteral("false"));
        expected[u"dark"_s] = dark ? u"true"_s : u"false"_s;
        home.writeSettings(expected);
        return contentOf(home.settingsFile());
    }
    /// Waits until the click that makes it so was taken; what it saves was tried before that is painted.
    void expectDark(bool dark) const
    {
        EXPECT_TRUE(waitUntil([&] { return (luminance(console().background) < 0.5) == dark; })) << dark;
    }
    void logIn()
    {
        ASSERT_TRUE(node.accept());
        say("login: ");
        ASSERT_TRUE(waitUntil([this] { return node.heard().endsWith("N0CALL\n"); }));
    }
    /// A line goes to a logger that comes for it, and the window answers.
    void expectADelivery()
    {
        const auto logger = makeLogger(u"6.50"_s);
        const QByteArray line = spotLine(101);
        say(line + "\r\n");
        QStringList delivered;
        do { // earlier lines may still be on their way
            delivered = next(*logger, u"signal"_s);
        } while (!delivered.isEmpty() && delivered != notificationOf(line));
        EXPECT_EQ(delivered, notificationOf(line));
        EXPECT_TRUE(ping.answers());
    }

    const QByteArray oldFile = "[General]\nport=" + QByteArray::number(node.port()) +
                               "\ncallsign=N0CALL\ndxcluster=127.0.0.1\npassword=secret\nreconnect=true\n";
    WindowPing ping{screen.display()};
    const QString lostEntries = u"StandardErrorLog: [1-9][0-9]* entries were lost"_s;

private:
    static QStringList unshared(const QStringList& command)
    {
        if (::geteuid() == 0)
            return QStringList(u"--mount"_s) + command;
        return QStringList{u"--mount"_s, u"--user"_s, u"--map-current-user"_s, u"--keep-caps"_s} + command;
    }
    QString onDisk(const QString& name) const { return u"/proc/self/fd/%1/%2"_s.arg(disk_).arg(name); }

    int disk_ = -1;
};

TEST_F(FullDiskTest, thatGetsFullCostsASaveAndEntriesUntilThereIsRoom)
{
    openOn(u"size=128k"_s);
    logIn();
    fill();
    click(u"darkCheckBox"_s);
    ASSERT_TRUE(waitUntil([this] { return logged(QRegularExpression::escape(failedSave())).size() == 1; }));
    click(u"darkCheckBox"_s);
    expectDark(false);
    click(u"darkCheckBox"_s);
    expectDark(true);
    EXPECT_TRUE(ping.answers());
    EXPECT_EQ(settings(), oldFile);
    EXPECT_EQ(settingsFiles(), QStringList(u"spotwell.conf"_s)) << "nothing beside it";

    // No logger is there, which makes an entry of each line: more than fits into what the log's last page has
    // left.
    for (int number = 1; number <= 80; ++number)
        say(spotLine(number) + "\r\n");
    EXPECT_TRUE(waitUntil([this] { return log().size() % 4096 == 0; })) << log().size();
    expectADelivery();
    EXPECT_EQ(logged(lostEntries), QStringList());

    makeRoom();
    click(u"darkCheckBox"_s);
    ASSERT_TRUE(waitUntil([this] { return settings() == newFile(false); }));
    click(u"darkCheckBox"_s);
    ASSERT_TRUE(waitUntil([this] { return settings() == newFile(true); }));
    expectADelivery();
    end();
    EXPECT_EQ(settings(), newFile(true));
    EXPECT_EQ(settingsFiles(), QStringList(u"spotwell.conf"_s));
    EXPECT_EQ(logged(lostEntries).size(), 1);
    EXPECT_EQ(logged(QRegularExpression::escape(failedSave())).size(), 1);
    EXPECT_EQ(logged(u"DXClusterController:sendTelnet:\\[5\\]characters:quit"_s).size(), 1);
}

TEST_F(FullDiskTest, thatIsFullAtTheStartLeavesTheOldSettingsAndAnEmptyLog)
{
    openOn(u"size=64k"_s, u"cat /dev/zero > filling 2>&-"_s);
    logIn();
    expectADelivery();
    EXPECT_EQ(log(), QByteArray());
    click(u"darkCheckBox"_s);
    expectDark(true);
    EXPECT_TRUE(ping.answers());
    EXPECT_EQ(settings(), oldFile);
    end();
    EXPECT_EQ(settings(), oldFile);
    EXPECT_EQ(settingsFiles(), QStringList(u"spotwell.conf"_s));
    EXPECT_EQ(log(), QByteArray());
}

TEST_F(FullDiskTest, withoutRoomForAnotherFileLogsToStandardError)
{
    openOn(u"size=64k,nr_inodes=5"_s, u"touch filling"_s);
    logIn();
    expectADelivery();
    click(u"darkCheckBox"_s);
    EXPECT_TRUE(
        waitUntil([this] { return program->standardError().contains(failedSave().toUtf8() + '\n'); }));
    EXPECT_EQ(settings(), oldFile);
    makeRoom();
    click(u"darkCheckBox"_s);
    EXPECT_TRUE(waitUntil([this] { return settings() == newFile(false); }));
    end();
    EXPECT_TRUE(program->standardError().contains(u"applicationDidFinishLaunching: error creating: "
                                                  u"%1/state/tarnbrooksoftware/Logwright/debug_log_files - "
                                                  "No space left on device\n"_s.arg(home.filePath(u"disk"_s))
                                                      .toUtf8()));
    EXPECT_EQ(program->standardError().count("save: could not write"), 1);
}

} // namespace
} // namespace spotwell
