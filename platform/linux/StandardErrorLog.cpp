#include "platform/linux/StandardErrorLog.h"

#include "platform/linux/SystemClock.h"

#include <QtGlobal>

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <mutex>
#include <unistd.h>

namespace spotwell
{

namespace
{

constexpr qsizetype maximumEntryLength = 32768;

bool isUnsafe(char16_t unit)
{
    return (unit < 0x20 && unit != u'\t') || (unit >= 0x7F && unit <= 0x9F) || unit == 0x2028 ||
           unit == 0x2029 || (unit >= 0x202A && unit <= 0x202E) || (unit >= 0x2066 && unit <= 0x2069) ||
           unit == 0x200E || unit == 0x200F;
}

QString escaped(QStringView text)
{
    QString result;
    result.reserve(text.size());
    for (const QChar character : text) {
        const char16_t unit = character.unicode();
        if (unit == u'\n')
            result += QStringLiteral("\n\t");
        else if (!isUnsafe(unit))
            result += character;
        else if (unit < 0x100)
            result += QStringLiteral("\\x%1").arg(static_cast<uint>(unit), 2, 16, QLatin1Char('0'));
        else
            result += QStringLiteral("\\u%1").arg(static_cast<uint>(unit), 4, 16, QLatin1Char('0'));
    }
    return result;
}

void writeWhole(const QByteArray& entry)
{
    const char* from = entry.constData();
    auto left = static_cast<std::size_t>(entry.size());
    while (left > 0) {
        const ssize_t written = ::write(STDERR_FILENO, from, left);
        if (written < 0 && errno == EINTR)
            continue;
        if (written <= 0)
            return;
        from += written;
        left -= static_cast<std::size_t>(written);
    }
}

void writeEntry(const QString& text)
{
    // Standard error belongs to the process, and so does its lock: it keeps entries whole and their times in
    // order.
    static std::mutex lock;
    const LogOrigin origin{QByteArrayLiteral("spotwell"), ::getpid(), ::gettid()};
    const std::lock_guard guard(lock);
    writeWhole(logEntry(text, SystemClock().now(), origin));
}

void handleQtMessage(QtMsgType type, const QMessageLogContext&, const QString& message)
{
    writeEntry(QStringLiteral("Qt:") + message);
    if (type == QtFatalMsg)
        std::abort();
}

} // namespace

QByteArray logEntry(const QString& text, TimePoint time, const LogOrigin& origin)
{
    const auto wholeSeconds = std::chrono::floor<std::chrono::seconds>(time);
    const std::time_t seconds = wholeSeconds.time_since_epoch().count();
    std::tm local{};
    ::localtime_r(&seconds, &local);
    char date[32];
    char offset[8];
    std::strftime(date, sizeof date, "%Y-%m-%d %H:%M:%S", &local);
    std::strftime(offset, sizeof offset, "%z", &local);
    const int milliseconds = static_cast<int>((time - wholeSeconds).count() / 1000);

    QStringView shown = text;
    QString note;
    if (shown.size() > maximumEntryLength) {
        note = QStringLiteral(" [%1 characters more]").arg(shown.size() - maximumEntryLength);
        shown = shown.first(maximumEntryLength);
    }
    // The entry's own line feed is the one that ends it; a text's last one is not doubled.
    if (shown.endsWith(u'\n'))
        shown.chop(1);

    char front[128];
    std::snprintf(front, sizeof front, "%s.%03d%s %s[%d:%d] ", date, milliseconds, offset,
                  origin.process.constData(), origin.processId, origin.threadId);
    QByteArray entry(front);
    entry += escaped(shown).toUtf8();
    entry += note.toUtf8();
    entry += '\n';
    return entry;
}

void StandardErrorLog::line(const QString& text)
{
    writeEntry(text);
}

void StandardErrorLog::takeQtMessages()
{
    qInstallMessageHandler(handleQtMessage);
}

} // namespace spotwell
