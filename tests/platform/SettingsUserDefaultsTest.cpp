#include "platform/linux/SettingsUserDefaults.h"

#include "platform/linux/Directories.h"
#include "tests/fakes/FakeServices.h"
#include "tests/fakes/Printers.h"

#include <QFile>
#include <QTemporaryDir>
#include <gtest/gtest.h>

namespace spotwell
{

namespace
{

struct SettingsUserDefaultsTest : testing::Test {
    SettingsUserDefaultsTest()
    {
        QSettings::setPath(QSettings::NativeFormat, QSettings::UserScope, directory.path());
    }
    [[nodiscard]] std::unique_ptr<SettingsUserDefaults> store()
    {
        return std::make_unique<SettingsUserDefaults>(QStringLiteral("tarnbrooksoftware"),
                                                      QStringLiteral("spotwell"), log);
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

TEST_F(SettingsUserDefaultsTest, ReadsNoOtherFileOfItsMaker)
{
    QFile file(directory.filePath(QStringLiteral("tarnbrooksoftware.conf")));
    ASSERT_TRUE(file.open(QIODevice::WriteOnly));
    file.write("[General]\ndark=true\nport=7300\n");
    file.close();
    const auto defaults = store();
    EXPECT_FALSE(defaults->boolean(QStringLiteral("dark")));
    EXPECT_EQ(defaults->string(QStringLiteral("port")), std::nullopt);
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
    EXPECT_EQ(log.lines, QStringList{QStringLiteral("save: could not write ") + path()});
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

} // namespace spotwell
