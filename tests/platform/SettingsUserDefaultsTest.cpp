// SPDX-FileCopyrightText: 2026 the spotwell developers
// SPDX-License-Identifier: MIT

#include "platform/linux/SettingsUserDefaults.h"

#include "platform/linux/Directories.h"
#include "tests/fakes/FakeServices.h"
#include "tests/support/Printers.h"
#include "tests/support/WaitUntil.h"

#include <QDir>
#include <QFile>
#include <QTemporaryDir>
#include <gtest/gtest.h>

namespace spotwell
{

namespace
{

struct SettingsUserDefaultsTest : testing::Test {
    [[nodiscard]] std::unique_ptr<SettingsUserDefaults> store()
    {
        return std::make_unique<SettingsUserDefaults>(path(), log);
    }
    [[nodiscard]] QString path() const
    {
        return directory.filePath(QStringLiteral("tarnbrooksoftware/spotwell.conf"));
    }

    QTemporaryDir directory;
    FakeLog log;
};

} // namespace

TEST_F(SettingsUserDefaultsTest, TellsNeverWrittenFromEmpty)
{
    {
        const auto defaults = store();
        EXPECT_EQ(defaults->string(QStringLiteral("port")), std::nullopt);
        EXPECT_FALSE(defaults->boolean(QStringLiteral("dark")));
        defaults->setString(QStringLiteral("port"), QString());
    }
    const auto defaults = store();
    EXPECT_EQ(defaults->string(QStringLiteral("port")), std::optional{QString()});
    EXPECT_EQ(defaults->string(QStringLiteral("callsign")), std::nullopt);
}

TEST_F(SettingsUserDefaultsTest, KeepsTextsAndBooleansAcrossRuns)
{
    const QString odd[] = {QStringLiteral("7300"),
                           QStringLiteral("a,b;c=d\"e\\f%20"),
                           QStringLiteral("@Invalid()"),
                           QStringLiteral(" lead and trail "),
                           QStringLiteral("p\u00e4ssw\u00f6rd \u20ac \U0001F600"),
                           QStringLiteral("true"),
                           QStringLiteral("line\nbreak")};
    for (const QString& text : odd) {
        {
            const auto defaults = store();
            defaults->setString(QStringLiteral("password"), text);
            defaults->setBoolean(QStringLiteral("dark"), true);
            defaults->setBoolean(QStringLiteral("pota"), false);
        }
        const auto defaults = store();
        EXPECT_EQ(defaults->string(QStringLiteral("password")), std::optional{text});
        EXPECT_TRUE(defaults->boolean(QStringLiteral("dark")));
        EXPECT_FALSE(defaults->boolean(QStringLiteral("pota")));
    }
}

TEST_F(SettingsUserDefaultsTest, WritesPlainKeysAtTopLevel)
{
    {
        const auto defaults = store();
        defaults->setString(QStringLiteral("port"), QStringLiteral("7300"));
        defaults->setBoolean(QStringLiteral("dark"), true);
    }
    QFile file(path());
    ASSERT_TRUE(file.open(QIODevice::ReadOnly));
    const QByteArray text = file.readAll();
    EXPECT_TRUE(text.contains("[General]\n")) << text.constData();
    EXPECT_TRUE(text.contains("\nport=7300\n")) << text.constData();
    EXPECT_TRUE(text.contains("\ndark=true\n")) << text.constData();
}

TEST_F(SettingsUserDefaultsTest, ReadsWhatAPersonWrote)
{
    QDir(directory.path()).mkdir(QStringLiteral("tarnbrooksoftware"));
    QFile file(path());
    ASSERT_TRUE(file.open(QIODevice::WriteOnly));
    file.write("[General]\ndxcluster=dxc.example.org\nport=7300\npassword=a, b\ndark=1\npota=yes\nrubbish\n");
    file.close();
    const auto defaults = store();
    EXPECT_EQ(defaults->string(QStringLiteral("dxcluster")),
              std::optional{QStringLiteral("dxc.example.org")});
    EXPECT_EQ(defaults->string(QStringLiteral("port")), std::optional{QStringLiteral("7300")});
    EXPECT_EQ(defaults->string(QStringLiteral("password")), std::optional{QStringLiteral("a,b")});
    EXPECT_TRUE(defaults->boolean(QStringLiteral("dark")));
}

TEST_F(SettingsUserDefaultsTest, SavesWhenTold)
{
    const auto defaults = store();
    defaults->setString(QStringLiteral("port"), QStringLiteral("7300"));
    defaults->save();
    QFile file(path());
    ASSERT_TRUE(file.open(QIODevice::ReadOnly));
    EXPECT_TRUE(file.readAll().contains("port=7300"));
}

TEST_F(SettingsUserDefaultsTest, SaysWhenItCannotWrite)
{
    QFile inTheWay(directory.filePath(QStringLiteral("tarnbrooksoftware")));
    ASSERT_TRUE(inTheWay.open(QIODevice::WriteOnly));
    store()->setBoolean(QStringLiteral("dark"), true);
    const QString reason = path() + QStringLiteral(" - Not a directory");
    EXPECT_EQ(log.lines, (QStringList{QStringLiteral("read: could not read all of ") + reason,
                                      QStringLiteral("save: could not write ") + reason}));
}

TEST_F(SettingsUserDefaultsTest, SaysOnceWhyItCannotWriteAndKeepsWhatWasSet)
{
    const auto defaults = store();
    EXPECT_EQ(defaults->string(QStringLiteral("port")), std::nullopt);
    QFile inTheWay(directory.filePath(QStringLiteral("tarnbrooksoftware")));
    ASSERT_TRUE(inTheWay.open(QIODevice::WriteOnly));
    const QString line = QStringLiteral("save: could not write ") + path();
    for (const bool dark : {true, false}) {
        defaults->setBoolean(QStringLiteral("dark"), dark);
        defaults->save();
        defaults->save();
    }
    EXPECT_EQ(log.lines, QStringList(line + QStringLiteral(" - Not a directory")));
    inTheWay.remove();
    QDir(directory.path()).mkpath(path());
    defaults->save();
    EXPECT_EQ(log.lines.mid(1), QStringList(line + QStringLiteral(" - Not a regular file")));
    QDir(directory.path()).rmdir(path());
    defaults->save();
    EXPECT_EQ(readSettingsFile(path()).texts,
              (SettingsTexts{{QStringLiteral("dark"), QStringLiteral("false")}}));
    QFile::remove(path());
    defaults->save();
    EXPECT_FALSE(QFile::exists(path())) << "nothing was set since";
    QDir(directory.path()).mkpath(path());
    defaults->setBoolean(QStringLiteral("dark"), true);
    defaults->save();
    EXPECT_EQ(log.lines.size(), 3) << "it had been well";
}

TEST_F(SettingsUserDefaultsTest, SaysWhyItCannotRead)
{
    QDir(directory.path()).mkpath(path());
    const auto defaults = store();
    EXPECT_EQ(log.lines, QStringList()) << "nobody has asked";
    EXPECT_EQ(defaults->string(QStringLiteral("port")), std::nullopt);
    EXPECT_FALSE(defaults->boolean(QStringLiteral("dark")));
    EXPECT_EQ(log.lines, QStringList{QStringLiteral("read: could not read all of ") + path() +
                                     QStringLiteral(" - Not a regular file")});
}

TEST_F(SettingsUserDefaultsTest, SavesAtTheEndOfTheTurn)
{
    const auto defaults = store();
    defaults->setString(QStringLiteral("port"), QStringLiteral("7300"));
    defaults->setBoolean(QStringLiteral("dark"), true);
    EXPECT_FALSE(QFile::exists(path()));
    ASSERT_TRUE(waitUntil([this] { return QFile::exists(path()); }));
    EXPECT_EQ(readSettingsFile(path()).texts.size(), 2);
}

TEST_F(SettingsUserDefaultsTest, KeepsWhatItDoesNotKnow)
{
    ASSERT_EQ(writeSettingsFile(path(), {{QStringLiteral("colour"), QStringLiteral("blue")},
                                         {QStringLiteral("port"), QStringLiteral("23")}}),
              QString());
    store()->setString(QStringLiteral("port"), QStringLiteral("7300"));
    EXPECT_EQ(readSettingsFile(path()).texts,
              (SettingsTexts{{QStringLiteral("colour"), QStringLiteral("blue")},
                             {QStringLiteral("port"), QStringLiteral("7300")}}));
}

TEST(DebugLogDirectory, FollowsTheStateDirectory)
{
    const QString tail = QStringLiteral("/tarnbrooksoftware/Logwright/debug_log_files");
    const QString home = QStringLiteral("/home/op");
    EXPECT_EQ(debugLogDirectory(QString(), home), QStringLiteral("/home/op/.local/state") + tail);
    EXPECT_EQ(debugLogDirectory(QStringLiteral("/var/state"), home), QStringLiteral("/var/state") + tail);
    EXPECT_EQ(debugLogDirectory(QStringLiteral("relative"), home),
              QStringLiteral("/home/op/.local/state") + tail);
}

TEST(SettingsFilePath, FollowsTheConfigurationDirectory)
{
    const QString home = QStringLiteral("/home/op");
    const QString tail = QStringLiteral("/tarnbrooksoftware/spotwell.conf");
    EXPECT_EQ(settingsFilePath(QString(), home), QStringLiteral("/home/op/.config") + tail);
    EXPECT_EQ(settingsFilePath(QStringLiteral("/etc/op"), home), QStringLiteral("/etc/op") + tail);
    EXPECT_EQ(settingsFilePath(QStringLiteral("relative"), home), QStringLiteral("/home/op/.config") + tail);
}

} // namespace spotwell
