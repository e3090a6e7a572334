// SPDX-FileCopyrightText: 2026 the spotwell developers
// SPDX-License-Identifier: MIT

#include "platform/linux/SettingsFile.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QSaveFile>
#include <QSettings>

#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace spotwell
{

namespace
{

constexpr off_t mostBytes = off_t{1024} * 1024;

QString systemError()
{
    return QString::fromLocal8Bit(std::strerror(errno));
}

/// What speaks against reading the file; empty when nothing does, or when there is none.
QString obstacleToReading(const QString& path)
{
    // A pipe without a writer does not hold up an opening of this kind.
    const int file = ::open(QFile::encodeName(path).constData(), O_RDONLY | O_NONBLOCK | O_CLOEXEC);
    if (file < 0)
        return errno == ENOENT ? QString() : systemError();
    struct stat status {
    };
    const bool isKnown = ::fstat(file, &status) == 0;
    ::close(file);
    if (!isKnown || !S_ISREG(status.st_mode))
        return QStringLiteral("Not a regular file");
    return status.st_size > mostBytes ? QStringLiteral("Larger than %1 bytes").arg(mostBytes) : QString();
}

bool isPlainInKeys(char16_t unit)
{
    return (unit >= u'a' && unit <= u'z') || (unit >= u'A' && unit <= u'Z') ||
           (unit >= u'0' && unit <= u'9') || unit == u'_' || unit == u'-' || unit == u'.';
}

QByteArray escapedKey(const QString& key)
{
    QByteArray result;
    for (const QChar character : key) {
        const char16_t unit = character.unicode();
        if (isPlainInKeys(unit))
            result += static_cast<char>(unit);
        else if (unit <= 0xFF)
            result += '%' + QByteArray::number(unit, 16).rightJustified(2, '0').toUpper();
        else
            result += "%U" + QByteArray::number(unit, 16).rightJustified(4, '0').toUpper();
    }
    return result;
}

/// What a file in UTF-8 does not carry as it is: QSettings drops a byte order mark.
bool needsEscape(QChar character)
{
    return character < u' ' || character == QChar(0x7F) || character.isSurrogate() ||
           character == QChar::ByteOrderMark;
}

bool isHexDigit(char16_t unit)
{
    return (unit >= u'0' && unit <= u'9') || (unit >= u'a' && unit <= u'f') || (unit >= u'A' && unit <= u'F');
}

QByteArray escapedValue(const QString& text)
{
    QString result;
    bool needsQuotes = text.startsWith(u' ') || text.endsWith(u' ');
    // A digit behind the digits of an escape would belong to it.
    bool followsEscape = false;
    const auto escape = [&](char16_t unit) {
        result += QStringLiteral("\\x%1").arg(static_cast<uint>(unit), 0, 16);
        followsEscape = true;
    };
    // At a value's beginning it announces another type.
    if (text.startsWith(u'@'))
        result += u'@';
    for (const QChar character : text) {
        const char16_t unit = character.unicode();
        needsQuotes = needsQuotes || unit == u';' || unit == u',' || unit == u'=';
        if (needsEscape(character) || (followsEscape && isHexDigit(unit))) {
            escape(unit);
            continue;
        }
        followsEscape = false;
        if (unit == u'"' || unit == u'\\')
            result += u'\\';
        result += character;
    }
    return needsQuotes ? '"' + result.toUtf8() + '"' : result.toUtf8();
}

} // namespace

SettingsContent readSettingsFile(const QString& path)
{
    if (const QString obstacle = obstacleToReading(path); !obstacle.isEmpty())
        return {{}, obstacle};
    QSettings settings(path, QSettings::IniFormat);
    SettingsContent content;
    for (const QString& key : settings.childKeys()) {
        const QVariant value = settings.value(key);
        // A hand-edited text with a bare comma is read as a list.
        const bool isList = value.typeId() == QMetaType::QStringList;
        if (value.isValid())
            content.texts.insert(key,
                                 isList ? value.toStringList().join(QLatin1Char(',')) : value.toString());
    }
    if (settings.status() != QSettings::NoError)
        content.trouble = QStringLiteral("Damaged");
    return content;
}

QByteArray settingsFileText(const SettingsTexts& texts)
{
    QByteArray result = "[General]\n";
    for (auto text = texts.cbegin(); text != texts.cend(); ++text)
        result += escapedKey(text.key()) + '=' + escapedValue(text.value()) + '\n';
    return result;
}

QString writeSettingsFile(const QString& path, const SettingsTexts& texts)
{
    struct stat status {
    };
    const QByteArray name = QFile::encodeName(path);
    if (::stat(name.constData(), &status) == 0 && !S_ISREG(status.st_mode))
        return QStringLiteral("Not a regular file");
    QDir().mkpath(QFileInfo(path).path());
    QSaveFile file(path);
    // Not buffered: what fails when a buffer is emptied, commit() does not notice.
    if (!file.open(QIODevice::WriteOnly | QIODevice::Unbuffered))
        return file.errorString();
    file.setPermissions(QFile::ReadOwner | QFile::WriteOwner);
    const QByteArray text = settingsFileText(texts);
    // A disk that becomes full takes a part and says so with the next one.
    for (qint64 done = 0, more = 0; done < text.size(); done += more) {
        more = file.write(text.constData() + done, text.size() - done);
        if (more <= 0)
            return file.errorString();
    }
    return file.commit() ? QString() : file.errorString();
}

} // namespace spotwell
