// SPDX-FileCopyrightText: 2026 the spotwell developers
// SPDX-License-Identifier: MIT

#include "tests/integration/support/FeedsFixture.h"
#include "tests/integration/support/UserInput.h"
#include "tests/integration/support/VirtualScreen.h"
#include "tests/integration/support/WindowPing.h"

#include <QDir>
#include <QFile>
#include <QTemporaryDir>

#include <sys/stat.h>
#include <unistd.h>

namespace spotwell
{
namespace
{

using namespace Qt::StringLiterals;

/// The shipped program as the service of an ordinary user, under systemd and confined by the shipped unit. On
/// the same network as the feeds' tests.
class ConfinementTest : public FeedsFixture
{
protected:
    void SetUp() override
    {
        FeedsFixture::SetUp();
        if (IsSkipped())
            return;
        ChildProcess manager({USER_MANAGER});
        const auto reason = manager.readLine();
        if (manager.wait() != 0)
            GTEST_SKIP() << "NOT TESTED: this machine permits no service manager of a user's own: "
                         << reason.value_or(std::string());
        // The usual places, for the unit knows no others.
        const QDir directory(home.filePath(QString()));
        ASSERT_TRUE(directory.mkpath(u".config/systemd/user/spotwell.service.d"_s));
        ASSERT_TRUE(directory.mkpath(u".local"_s));
        ASSERT_TRUE(directory.mkpath(u".ssh"_s));
        ASSERT_EQ(::symlink(".config", name(u"config"_s).constData()), 0);
        ASSERT_EQ(::symlink(".local/state", name(u"state"_s).constData()), 0);
        put(u".ssh/id_ed25519"_s, "a key");
        put(u".Xauthority"_s, "");
        // As it is installed, with the probe beside it.
        ChildProcess installing({"cmake", "--install", BUILD_DIRECTORY, "--component", "Unspecified",
                                 "--prefix", installed_.path().toStdString()});
        while (installing.readLine()) {
        }
        ASSERT_EQ(installing.wait(), 0);
        ASSERT_TRUE(
            QFile::copy(QStringLiteral(CONFINEMENT_PROBE), installed_.filePath(u"bin/confinement_probe"_s)));
        // The probe runs before the program, in the same confinement and, as "+" says, in none.
        put(u".config/systemd/user/spotwell.service.d/test.conf"_s,
            "[Service]\n"
            "Environment=QT_QPA_PLATFORM=xcb\n"
            "StandardOutput=append:%h/output\n"
            "StandardError=append:%h/output\n"
            "ExecStartPre=+" INSTALL_PREFIX "/bin/confinement_probe free\n"
            "ExecStartPre=" INSTALL_PREFIX "/bin/confinement_probe confined leave\n"
            "ExecStopPost=+/bin/sh -c 'echo $$SERVICE_RESULT $$EXIT_STATUS > %h/ended'\n");
        launcher = QStringList{QStringLiteral(USER_MANAGER), home.filePath(QString()),
                               QStringLiteral(INSTALL_PREFIX), installed_.path(), u"/run/user/5"_s};
    }
    void TearDown() override
    {
        FeedsFixture::TearDown();
        if (HasFailure())
            std::cerr << "What came on its standard output:\n"
                      << content(u"output"_s).constData() << content(u"ended"_s).constData();
    }

    QByteArray name(const QString& file) const { return QFile::encodeName(home.filePath(file)); }
    void put(const QString& file, const QByteArray& text) const
    {
        QFile made(home.filePath(file));
        ASSERT_TRUE(made.open(QIODevice::WriteOnly) && made.write(text) == text.size());
    }
    QByteArray content(const QString& file) const
    {
        QFile found(home.filePath(file));
        return found.open(QIODevice::ReadOnly) ? found.readAll() : QByteArray();
    }
    /// Everything on: the three services have a spot each, a node waits.
    void startAll()
    {
        services.answer(potaAddress, answering("200 OK", potaAnswer(1)));
        services.answer(dxSummitAddress, answering("200 OK", dxSummitAnswer(1)));
        services.answer(wsprnetAddress, answering("200 OK", wsprnetPage(1)));
        SettingsTexts settings = feedSettings();
        settings.insert(settingsFor(PrivateNetwork::nodePort));
        startWith(settings, {u"DISPLAY="_s + screen.display()});
        serve();
        distantNode.emplace(::dup(listeners->node));
    }
    /// What the probe said of its attempts, by their names.
    QMap<QString, QString> attempts(const QString& probe) const
    {
        QMap<QString, QString> results;
        for (const QString& line : QString::fromUtf8(content(u"output"_s)).split(u'\n')) {
            const QStringList parts = line.split(u": "_s);
            if (parts.size() == 3 && parts[0] == probe)
                results.insert(parts[1], parts[2]);
        }
        return results;
    }

    VirtualScreen screen;
    UserInput user{screen, home.environment() + QStringList(QString::fromStdString(bus.environment()))};
    WindowPing ping{screen.display()};
    std::optional<LoopbackPeer> distantNode;

private:
    const QTemporaryDir installed_;
};

TEST_F(ConfinementTest, allThatTheProgramDoesItCanDo)
{
    std::unique_ptr<BusPeer> logger = makeLogger(u"6.50"_s);
    startAll();
    ASSERT_TRUE(distantNode->accept());
    EXPECT_TRUE(ping.answers());
    ASSERT_GT(distantNode->send("login: "), 0);
    EXPECT_TRUE(waitUntil([this] { return distantNode->heard() == "N0CALL\n"; }));

    distantNode->send(spotLine(1) + "\r\n");
    EXPECT_EQ(next(*logger, u"signal"_s), notificationOf(spotLine(1)));
    QStringList calls = nextCalls(3);
    calls.sort();
    EXPECT_EQ(calls, QStringList({u"N1A"_s, u"N1B"_s, u"N1C"_s}));

    logger->kill();
    logger = makeLogger(u"6.44"_s);
    distantNode->send(spotLine(2) + "\r\n");
    EXPECT_EQ(next(*logger, u"call"_s).value(2), u"processSpot"_s);

    // The log is shown by whoever shows files; without him nothing is, and that is all.
    ASSERT_TRUE(waitUntil([this] {
        const auto windows = user.windows();
        return windows.size() == 1 && user.activeWindow() == windows.first().id;
    }));
    user.press(u"alt+b"_s);
    EXPECT_TRUE(
        waitUntil([this] { return home.log().contains("selectFile: no file manager shows the file"); }));
    BusPeer fileManager(bus);
    fileManager.command({u"own"_s, u"org.freedesktop.FileManager1"_s});
    user.press(u"alt+b"_s);
    EXPECT_TRUE(
        next(fileManager, u"call"_s)
            .value(4)
            .startsWith(
                u"file:///home/operator/.local/state/tarnbrooksoftware/Logwright/debug_log_files/"_s));

    user.press(u"alt+d"_s);
    EXPECT_TRUE(waitUntil([this] { return home.settings().value(u"dark"_s) == u"true"; }));
    EXPECT_TRUE(ping.answers());
    end();
    EXPECT_EQ(content(u"ended"_s), "success 0\n");
    EXPECT_TRUE(waitUntil([this] { return distantNode->heard() == "N0CALL\nquit\n"; }));
    EXPECT_EQ(home.settings().value(u"password"_s), u"secret"_s);
}

TEST_F(ConfinementTest, whatItDoesNotDoItCannotDo)
{
    startAll();
    ASSERT_TRUE(distantNode->accept());
    end();
    EXPECT_EQ(content(u"ended"_s), "success 0\n");
    const QMap<QString, QString> confined{
        // Rights. The probe belongs to the superuser and is for everybody to run as he.
        {u"superuser"_s, u"no"_s},
        {u"CapInh"_s, u"0000000000000000"_s},
        {u"CapPrm"_s, u"0000000000000000"_s},
        {u"CapEff"_s, u"0000000000000000"_s},
        {u"CapBnd"_s, u"0000000000000000"_s},
        {u"CapAmb"_s, u"0000000000000000"_s},
        {u"NoNewPrivs"_s, u"1"_s},
        {u"Seccomp"_s, u"2"_s},
        {u"largest core"_s, u"0"_s},
        {u"setuid"_s, u"EPERM"_s},
        {u"chmod u+s"_s, u"EPERM"_s},
        // Files. What is written at home beside the two directories is in a home that goes with the program.
        {u"write in /home/operator"_s, u"done"_s},
        {u"write in /home/operator/.config"_s, u"done"_s},
        {u"write in /home/operator/.config/tarnbrooksoftware"_s, u"done"_s},
        {u"write in /home/operator/.local/state"_s, u"done"_s},
        {u"write in /home/operator/.local/state/tarnbrooksoftware"_s, u"done"_s},
        {u"write in /run/user/5"_s, u"EROFS"_s},
        {u"write in /tmp"_s, u"EROFS"_s},
        {u"write in /var/tmp"_s, u"EROFS"_s},
        {u"write in /dev/shm"_s, u"EROFS"_s},
        {u"read /home/operator/.ssh/id_ed25519"_s, u"ENOENT"_s},
        {u"read /home/operator/.Xauthority"_s, u"done"_s},
        {u"read /run/user/5/keyring/control"_s, u"EACCES"_s},
        // Calls.
        {u"new control group"_s, u"EROFS"_s},
        {u"AF_UNIX"_s, u"done"_s},
        {u"AF_INET"_s, u"done"_s},
        {u"AF_INET6"_s, u"done"_s},
        {u"AF_PACKET"_s, u"EAFNOSUPPORT"_s},
        {u"write and execute"_s, u"EPERM"_s},
        {u"execute what was written"_s, u"EPERM"_s},
        {u"personality"_s, u"EPERM"_s},
        {u"setpriority"_s, u"EPERM"_s},
        {u"add_key"_s, u"EPERM"_s},
        {u"ptrace"_s, u"EPERM"_s},
        {u"new user namespace"_s, u"EPERM"_s}};
    EXPECT_EQ(attempts(u"confined"_s), confined);
    QStringList found;
    for (const QString& directory : {u"."_s, u".config"_s, u".config/tarnbrooksoftware"_s, u".local/state"_s,
                                     u".local/state/tarnbrooksoftware"_s}) {
        if (QFile::exists(home.filePath(directory + u"/probe"_s)))
            found.append(directory);
    }
    EXPECT_EQ(found, QStringList({u".config/tarnbrooksoftware"_s, u".local/state/tarnbrooksoftware"_s}));

    // It is the unit that forbids it: without it, as good as everything can be done.
    QStringList failed;
    const QMap<QString, QString> free = attempts(u"free"_s);
    EXPECT_EQ(free.keys(), confined.keys());
    for (const QString& what : free.keys()) {
        if (free[what] == confined[what] && free[what] != u"done"_s)
            failed.append(what);
    }
    EXPECT_EQ(failed, QStringList({u"CapAmb"_s, u"CapEff"_s, u"CapInh"_s, u"CapPrm"_s, u"setuid"_s}));
    EXPECT_EQ(free[u"superuser"_s], u"yes"_s);
}

TEST(UnitTest, hasNothingThatSystemdComplainsOf)
{
    // The unit starts the program where it belongs; here it is elsewhere.
    const QTemporaryDir directory;
    QFile shipped(QStringLiteral(SPOTWELL_UNIT));
    ASSERT_TRUE(shipped.open(QIODevice::ReadOnly));
    QFile checked(directory.filePath(u"spotwell.service"_s));
    ASSERT_TRUE(checked.open(QIODevice::WriteOnly));
    checked.write(shipped.readAll().replace(INSTALL_PREFIX "/bin/spotwell", SPOTWELL));
    checked.close();
    const std::string runtime = "XDG_RUNTIME_DIR=" + directory.path().toStdString();
    ChildProcess verify({"systemd-analyze", "--user", "--man=no", "verify", checked.fileName().toStdString()},
                        {runtime, "LC_ALL=C.UTF-8"}, true);
    EXPECT_EQ(verify.readLine(), std::nullopt);
    EXPECT_EQ(verify.wait(), 0);
    // The exposure that systemd finds, of 100 at most.
    ChildProcess security({"systemd-analyze", "--user", "security", "--offline=yes", "--threshold=25",
                           checked.fileName().toStdString()},
                          {runtime, "LC_ALL=C.UTF-8"});
    while (security.readLine()) {
    }
    EXPECT_EQ(security.wait(), 0);
}

} // namespace
} // namespace spotwell
