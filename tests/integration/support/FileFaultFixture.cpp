// SPDX-FileCopyrightText: 2026 the spotwell developers
// SPDX-License-Identifier: MIT

#include "tests/integration/support/FileFaultFixture.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>

#include <sys/stat.h>
#include <unistd.h>

namespace spotwell
{

void FileFaultFixture::launch(const QStringList& command, const QStringList& variables)
{
    program.emplace(home, bus.address(), variables, command);
    EXPECT_TRUE(ping.answers()) << "no window";
}

void FileFaultFixture::expectLogin()
{
    ASSERT_TRUE(node.accept());
    say("login: ");
    ASSERT_TRUE(waitUntil([this] { return node.heard().endsWith("N0CALL\n"); }, std::chrono::seconds{60}));
}

void FileFaultFixture::expectTheNodeGoesOn()
{
    const QByteArray line = spotLine(++lines_);
    say(line + "\r\n");
    EXPECT_EQ(next(*logger, QStringLiteral("signal")), notificationOf(line));
    expectTheWindowAnswers();
}

SettingsTexts FileFaultFixture::fullSettings() const
{
    SettingsTexts settings = settingsFor(node.port());
    for (const char* key : {"wsprnet", "dxsummit", "pota", "skimmers", "dxsexclusive", "dark"})
        settings.insert(QString::fromLatin1(key), QStringLiteral("false"));
    return settings;
}

void FileFaultFixture::put(const QString& path, const QByteArray& content) const
{
    QDir().mkpath(QFileInfo(path).path());
    QFile file(path);
    ASSERT_TRUE(file.open(QIODevice::WriteOnly));
    ASSERT_EQ(file.write(content), content.size());
}

unsigned FileFaultFixture::modeOf(const QString& path)
{
    struct stat status {
    };
    return ::stat(QFile::encodeName(path).constData(), &status) == 0 ? status.st_mode & 07777U : 0;
}

QStringList FileFaultFixture::withoutPrivileges()
{
    if (::geteuid() != 0)
        return {};
    return {QStringLiteral("setpriv"), QStringLiteral("--inh-caps=-all"),
            QStringLiteral("--bounding-set=-all")};
}

} // namespace spotwell
