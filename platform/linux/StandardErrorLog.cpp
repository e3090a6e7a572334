// SPDX-FileCopyrightText: 2026 the spotwell developers
// SPDX-License-Identifier: MIT

#include "platform/linux/StandardErrorLog.h"

#include "platform/linux/SystemClock.h"

#include <QtGlobal>

#include <algorithm>
#include <cerrno>
#include <climits>
#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <mutex>
#include <poll.h>
#include <sys/stat.h>
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

/// Whether what waits for a reader, a pipe or a terminal, takes so many bytes now (at most PIPE_BUF). It may
/// never do again, and nobody here waits for that.
bool takes(bool isKnownToBeStuck)
{
    constexpr int graceMilliseconds = 50;
    pollfd standardError{STDERR_FILENO, POLLOUT, 0};
    return ::poll(&standardError, 1, isKnownToBeStuck ? 0 : graceMilliseconds) == 1 &&
           (standardError.revents & POLLOUT) != 0;
}

/// How many bytes were written.
qsizetype write(const QByteArray& entry, bool isKnownToBeStuck)
{
    struct stat status {
    };
    const bool isFile = ::fstat(STDERR_FILENO, &status) == 0 && S_ISREG(status.st_mode);
    qsizetype done = 0;
    while (done < entry.size()) {
        if (!isFile && !takes(isKnownToBeStuck))
            break;
        const qsizetype left = entry.size() - done;
        const qsizetype piece = isFile ? left : std::min<qsizetype>(left, PIPE_BUF);
        const ssize_t written =
            ::write(STDERR_FILENO, entry.constData() + done, static_cast<std::size_t>(piece));
        if (written < 0 && errno == EINTR)
            continue;
        if (written <= 0)
            break;
        done += written;
    }
    return done;
}

/// Entries on their way to standard error, which belongs to the process.
class Entries
{
public:
    void write(const QString& text)
    {
        // Keeps entries whole and their times in order.
        const std::lock_guard guard(mutex_);
        if (lost_ > 0 && !writeWhole(QStringLiteral("StandardErrorLog: %1 entries were lost").arg(lost_))) {
            ++lost_;
            return;
        }
        lost_ = writeWhole(text) ? 0 : 1;
    }

private:
    bool writeWhole(const QString& text)
    {
        const LogOrigin origin{QByteArrayLiteral("spotwell"), ::getpid(), ::gettid()};
        QByteArray entry = logEntry(text, SystemClock().now(), origin);
        if (isTorn_)
            entry.prepend('\n');
        const qsizetype done = spotwell::write(entry, lost_ > 0);
        if (done > 0)
            isTorn_ = done < entry.size();
        return done == entry.size();
    }

    std::mutex mutex_;
    /// Since the last one that was written.
    qsizetype lost_ = 0;
    /// Whether the last one was written in part.
    bool isTorn_ = false;
};

void writeEntry(const QString& text)
{
    static Entries entries;
    entries.write(text);
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
