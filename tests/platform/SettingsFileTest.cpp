// SPDX-FileCopyrightText: 2026 the spotwell developers
// SPDX-License-Identifier: MIT

#include "platform/linux/SettingsFile.h"

#include "tests/platform/FileSizeLimit.h"
#include "tests/support/Printers.h"

#include <QDir>
#include <QFile>
#include <QSettings>
#include <QTemporaryDir>
#include <gtest/gtest.h>

#include <sys/stat.h>
#include <unistd.h>

namespace spotwell
{

namespace
{

struct SettingsFileTest : testing::Test {
    [[nodiscard]] static QByteArray contentOf(const QString& path)
    {
        QFile file(path);
        return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
    }
    void put(const QByteArray& content) const
    {
        QFile file(path);
        ASSERT_TRUE(file.open(QIODevice::WriteOnly));
        ASSERT_EQ(file.write(content), content.size());
    }
    [[nodiscard]] QStringList filesBeside() const
    {
        return QDir(directory.path()).entryList(QDir::AllEntries | QDir::Hidden | QDir::NoDotAndDotDot);
    }

    QTemporaryDir directory;
    const QString path = directory.filePath(QStringLiteral("spotwell.conf"));
    const QByteArray name = QFile::encodeName(path);
    const SettingsTexts port{{QStringLiteral("port"), QStringLiteral("7300")}};
    const QByteArray portText = "[General]\nport=7300\n";
};

} // namespace

TEST_F(SettingsFileTest, WhatIsWrittenIsReadAndQSettingsReadsItTheSame)
{
    int files = 0;
    for (const QString& text : {QString(),
                                QStringLiteral("7300"),
                                QStringLiteral("a,b"),
                                QStringLiteral("a;b"),
                                QStringLiteral("a=b"),
                                QStringLiteral("a\"b\""),
                                QStringLiteral("\"a\""),
                                QStringLiteral("a\\"),
                                QStringLiteral("\\\\x41"),
                                QStringLiteral("%20%"),
                                QStringLiteral("#a"),
                                QStringLiteral("[a]"),
                                QStringLiteral("@Invalid()"),
                                QStringLiteral("@@"),
                                QStringLiteral("@ByteArray(x)"),
                                QStringLiteral(" a"),
                                QStringLiteral("a "),
                                QStringLiteral(" "),
                                QStringLiteral("\ta\t"),
                                QStringLiteral("a\nb\r"),
                                QStringLiteral("\x1f\x30"),
                                QStringLiteral("\x01\x01"
                                               "af"),
                                QString(QChar(u'\0')),
                                QStringLiteral("\u007f1"),
                                QStringLiteral("\u00e4\u20ac\u2028"),
                                QStringLiteral("\U0001F600a"),
                                QString(QChar(0xD83D)) + QLatin1Char('a'),
                                QStringLiteral("\uFEFFa\uFEFF"),
                                QStringLiteral("\uFEFF")}) {
        // Of a file that it knows QSettings reads no change of the same moment and length.
        const QString own = directory.filePath(QString::number(++files));
        const SettingsTexts texts{{QStringLiteral("password"), text}};
        ASSERT_EQ(writeSettingsFile(own, texts), QString());
        const SettingsContent content = readSettingsFile(own);
        EXPECT_EQ(content.texts, texts) << contentOf(own).constData();
        EXPECT_EQ(content.trouble, QString());
        const QSettings settings(own, QSettings::IniFormat);
        EXPECT_EQ(settings.value(QStringLiteral("password")), QVariant(text)) << contentOf(own).constData();
    }
}

TEST_F(SettingsFileTest, LooksAsQSettingsWritesIt)
{
    EXPECT_EQ(settingsFileText({}), "[General]\n");
    EXPECT_EQ(settingsFileText({{QStringLiteral("port"), QStringLiteral("7300")},
                                {QStringLiteral("dark"), QStringLiteral("true")},
                                {QStringLiteral("callsign"), QString()},
                                {QStringLiteral("password"), QStringLiteral("a,\"b\\c")},
                                {QStringLiteral("dxcluster"), QStringLiteral("d\u00fcsseldorf.example")},
                                {QStringLiteral("a b/\u00e4\u20ac_-.9"), QStringLiteral("@x\x01\x31\x7f")}}),
              "[General]\na%20b%2F%E4%U20AC_-.9=@@x\\x1\\x31\\x7f\ncallsign=\ndark=true\n"
              "dxcluster=d\xc3\xbcsseldorf.example\npassword=\"a,\\\"b\\\\c\"\nport=7300\n");
}

TEST_F(SettingsFileTest, OddKeysComeBack)
{
    const SettingsTexts texts{{QStringLiteral("a b"), QStringLiteral("1")},
                              {QStringLiteral("\u00e4\u20ac=;"), QStringLiteral("2")}};
    ASSERT_EQ(writeSettingsFile(path, texts), QString());
    EXPECT_EQ(readSettingsFile(path).texts, texts);
}

TEST_F(SettingsFileTest, NoFileIsNoTrouble)
{
    const SettingsContent content = readSettingsFile(directory.filePath(QStringLiteral("none/at/all")));
    EXPECT_EQ(content.texts, SettingsTexts());
    EXPECT_EQ(content.trouble, QString());
}

TEST_F(SettingsFileTest, TakesWhatItCanOfADamagedFile)
{
    put("port=7300\nrubbish\n\0\xff\x01\n[Other]\nport=1\n[General\ndark=true\n");
    const SettingsContent content = readSettingsFile(path);
    EXPECT_EQ(content.texts.value(QStringLiteral("port")), QStringLiteral("7300"));
    EXPECT_EQ(content.trouble, QStringLiteral("Damaged"));
}

TEST_F(SettingsFileTest, ReadsAMebibyteAndNoMore)
{
    const QByteArray front = "[General]\nport=7300\n;";
    put(front + QByteArray(1024 * 1024 - front.size(), 'x'));
    EXPECT_EQ(readSettingsFile(path).texts, port);
    put(front + QByteArray(1024 * 1024 - front.size() + 1, 'x'));
    EXPECT_EQ(readSettingsFile(path).texts, SettingsTexts());
    EXPECT_EQ(readSettingsFile(path).trouble, QStringLiteral("Larger than 1048576 bytes"));
    EXPECT_EQ(writeSettingsFile(path, port), QString());
    EXPECT_EQ(contentOf(path), portText);
}

TEST_F(SettingsFileTest, KeepsAwayFromWhatIsNoFile)
{
    const QString reason = QStringLiteral("Not a regular file");
    ASSERT_EQ(::mkfifo(name.constData(), 0600), 0);
    EXPECT_EQ(readSettingsFile(path).trouble, reason);
    EXPECT_EQ(writeSettingsFile(path, port), reason);
    ASSERT_EQ(::unlink(name.constData()), 0);
    ASSERT_EQ(::mkdir(name.constData(), 0700), 0);
    EXPECT_EQ(readSettingsFile(path).trouble, reason);
    EXPECT_EQ(writeSettingsFile(path, port), reason);
    ASSERT_EQ(::rmdir(name.constData()), 0);
    ASSERT_EQ(::symlink("/dev/zero", name.constData()), 0);
    EXPECT_EQ(readSettingsFile(path).trouble, reason);
    EXPECT_EQ(writeSettingsFile(path, port), reason);
}

TEST_F(SettingsFileTest, FollowsLinksAndLeavesThemAsTheyAre)
{
    const QString target = directory.filePath(QStringLiteral("target"));
    ASSERT_EQ(::symlink("target", name.constData()), 0);
    EXPECT_EQ(readSettingsFile(path).trouble, QString()) << "leads nowhere";
    for (int time = 0; time < 2; ++time) {
        ASSERT_EQ(writeSettingsFile(path, port), QString());
        EXPECT_TRUE(QFileInfo(path).isSymLink());
        EXPECT_EQ(contentOf(target), portText);
        EXPECT_EQ(readSettingsFile(path).texts, port);
    }
}

TEST_F(SettingsFileTest, ALinkToItselfIsToldAndReplaced)
{
    ASSERT_EQ(::symlink("spotwell.conf", name.constData()), 0);
    EXPECT_EQ(readSettingsFile(path).trouble, QStringLiteral("Too many levels of symbolic links"));
    EXPECT_EQ(writeSettingsFile(path, port), QString());
    EXPECT_EQ(contentOf(path), portText);
    EXPECT_EQ(filesBeside(), QStringList(QStringLiteral("spotwell.conf")));
}

TEST_F(SettingsFileTest, IsForTheUserAlone)
{
    put("[General]\nport=1\n");
    ASSERT_EQ(::chmod(name.constData(), 0644), 0);
    ASSERT_EQ(writeSettingsFile(path, port), QString());
    struct stat status {
    };
    ASSERT_EQ(::stat(name.constData(), &status), 0);
    EXPECT_EQ(status.st_mode & 07777U, 0600U);
}

TEST_F(SettingsFileTest, AWriteThatFailsCostsNothing)
{
    put(portText);
    for (const int size : {100, 5000, 100'000}) {
        const SettingsTexts longer{{QStringLiteral("port"), QString(size, u'x')}};
        for (const rlim_t most : {0, 50}) {
            const FileSizeLimit limit(most);
            EXPECT_EQ(writeSettingsFile(path, longer), QStringLiteral("File too large"))
                << size << ' ' << most;
            EXPECT_EQ(contentOf(path), portText) << size << ' ' << most;
        }
        EXPECT_EQ(filesBeside(), QStringList(QStringLiteral("spotwell.conf")));
        EXPECT_EQ(writeSettingsFile(path, longer), QString());
        EXPECT_EQ(readSettingsFile(path).texts, longer);
        put(portText);
    }
}

} // namespace spotwell
