// SPDX-FileCopyrightText: 2026 the spotwell developers
// SPDX-License-Identifier: MIT

#include "platform/linux/StandardErrorLog.h"

#include "platform/linux/PosixProcessServices.h"
#include "tests/platform/FileSizeLimit.h"
#include "tests/support/Printers.h"

#include <QFile>
#include <QRegularExpression>
#include <QTemporaryDir>
#include <gtest/gtest.h>

#include <fcntl.h>
#include <sys/stat.h>
#include <thread>
#include <unistd.h>
#include <vector>

namespace spotwell
{

namespace
{

using namespace std::chrono_literals;

const TimePoint moment =
    std::chrono::sys_days{std::chrono::year{2027} / 2 / 3} + 9h + 5min + 7s + 12ms + 345us;

/// Sets the process's time zone for one test.
class TimeZone
{
public:
    explicit TimeZone(const char* name) : before_(qgetenv("TZ"))
    {
        qputenv("TZ", name);
        ::tzset();
    }
    ~TimeZone()
    {
        if (before_.isNull())
            qunsetenv("TZ");
        else
            qputenv("TZ", before_);
        ::tzset();
    }
    TimeZone(const TimeZone&) = delete;
    TimeZone& operator=(const TimeZone&) = delete;

private:
    QByteArray before_;
};

/// Leads standard error into a file for one test and back afterwards.
class RedirectedStandardError
{
public:
    explicit RedirectedStandardError(const QString& path) : before_(::dup(STDERR_FILENO))
    {
        PosixProcessServices().reopenStandardError(path);
    }
    ~RedirectedStandardError()
    {
        ::dup2(before_, STDERR_FILENO);
        ::close(before_);
    }
    RedirectedStandardError(const RedirectedStandardError&) = delete;
    RedirectedStandardError& operator=(const RedirectedStandardError&) = delete;

private:
    int before_;
};

QByteArray contents(const QString& path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

QByteArray shown(const QString& text)
{
    const QByteArray front = "2027-02-03 09:05:07.012+0000 spotwell[12:34] ";
    const QByteArray entry = logEntry(text, moment, {"spotwell", 12, 34});
    EXPECT_TRUE(entry.startsWith(front)) << entry.constData();
    EXPECT_TRUE(entry.endsWith('\n'));
    return entry.mid(front.size()).chopped(1);
}

const QRegularExpression entryForm(QStringLiteral(
    "^\\d{4}-\\d\\d-\\d\\d \\d\\d:\\d\\d:\\d\\d\\.\\d{3}[+-]\\d{4} spotwell\\[\\d+:\\d+\\] (.*)$"));

} // namespace

TEST(LogEntry, BearsDateTimeProcessAndThread)
{
    const TimeZone zone("UTC");
    EXPECT_EQ(logEntry(QStringLiteral("openTelnetConnection"), moment, {"spotwell", 12, 34}),
              QByteArray("2027-02-03 09:05:07.012+0000 spotwell[12:34] openTelnetConnection\n"));
}

TEST(LogEntry, ShowsLocalTimeWithItsOffset)
{
    const TimeZone zone("Asia/Kolkata");
    EXPECT_TRUE(logEntry(QString(), moment, {"spotwell", 1, 2}).startsWith("2027-02-03 14:35:07.012+0530 "));
}

TEST(LogEntry, KeepsTextAsItIs)
{
    const TimeZone zone("UTC");
    EXPECT_EQ(shown(QStringLiteral("100% %s %n \\x41 caf\u00e9 \u20ac\ttab")),
              QByteArray("100% %s %n \\x41 caf\xc3\xa9 \xe2\x82\xac\ttab"));
    EXPECT_EQ(shown(QString()), QByteArray());
}

TEST(LogEntry, AFurtherLineCannotPassForAnEntry)
{
    const TimeZone zone("UTC");
    EXPECT_EQ(shown(QStringLiteral("a\n2027-02-03 09:05:07.012+0000 spotwell[12:34] forged\nb")),
              QByteArray("a\n\t2027-02-03 09:05:07.012+0000 spotwell[12:34] forged\n\tb"));
    EXPECT_EQ(shown(QStringLiteral("characters:quit\n")), QByteArray("characters:quit"));
    EXPECT_EQ(shown(QStringLiteral("\n\n")), QByteArray("\n\t"));
}

TEST(LogEntry, EscapesWhatWouldActOnATerminalOrReorderALine)
{
    const TimeZone zone("UTC");
    EXPECT_EQ(shown(QStringLiteral("\x1b[2J\r\a") + QChar(u'\0') + QStringLiteral("\x7f\u0085\u009b")),
              QByteArray("\\x1b[2J\\x0d\\x07\\x00\\x7f\\x85\\x9b"));
    EXPECT_EQ(shown(QStringLiteral("\u2028\u2029\u202e\u2066\u200f")),
              QByteArray("\\u2028\\u2029\\u202e\\u2066\\u200f"));
}

TEST(LogEntry, CutsATextWithoutEnd)
{
    const TimeZone zone("UTC");
    EXPECT_EQ(shown(QString(32768, u'x')).size(), 32768);
    const QByteArray cut = shown(QString(32768 + 5, u'x'));
    EXPECT_TRUE(cut.endsWith("x [5 characters more]"));
    EXPECT_EQ(cut.count('x'), 32768);
}

TEST(StandardErrorLog, WritesToTheFileOfTheRun)
{
    const QTemporaryDir directory;
    const QString path = directory.filePath(QStringLiteral("20270203_090507 spotwell.txt"));
    StandardErrorLog log;
    {
        const RedirectedStandardError redirected(path);
        log.line(QStringLiteral("one"));
    }
    {
        const RedirectedStandardError again(path);
        log.line(QStringLiteral("two"));
    }
    const QStringList lines = QString::fromUtf8(contents(path)).split(QLatin1Char('\n'));
    ASSERT_EQ(lines.size(), 3) << "a second start in the same second appends";
    EXPECT_EQ(entryForm.match(lines[0]).captured(1), QStringLiteral("one"));
    EXPECT_EQ(entryForm.match(lines[1]).captured(1), QStringLiteral("two"));
}

TEST(StandardErrorLog, TakesQtsMessagesInTheSameForm)
{
    const QTemporaryDir directory;
    const QString path = directory.filePath(QStringLiteral("log"));
    const QtMessageHandler before = qInstallMessageHandler(nullptr);
    StandardErrorLog::takeQtMessages();
    {
        const RedirectedStandardError redirected(path);
        qWarning("from\nQt");
    }
    qInstallMessageHandler(before);
    const QStringList lines = QString::fromUtf8(contents(path)).split(QLatin1Char('\n'));
    ASSERT_EQ(lines.size(), 3);
    EXPECT_EQ(entryForm.match(lines[0]).captured(1), QStringLiteral("Qt:from"));
    EXPECT_EQ(lines[1], QStringLiteral("\tQt"));
}

TEST(StandardErrorLog, KeepsEntriesOfManyThreadsWholeAndInOrder)
{
    const QTemporaryDir directory;
    const QString path = directory.filePath(QStringLiteral("log"));
    constexpr int threads = 4;
    constexpr int each = 500;
    {
        const RedirectedStandardError redirected(path);
        std::vector<std::thread> writers;
        for (int t = 0; t < threads; ++t) {
            writers.emplace_back([t] {
                StandardErrorLog log;
                for (int i = 0; i < each; ++i)
                    log.line(QStringLiteral("%1 %2 %3").arg(t).arg(i).arg(QString(300, u'x')));
            });
        }
        for (std::thread& writer : writers)
            writer.join();
    }
    std::vector<int> next(threads, 0);
    QString lastTime;
    const QStringList lines = QString::fromUtf8(contents(path)).split(QLatin1Char('\n'), Qt::SkipEmptyParts);
    ASSERT_EQ(lines.size(), threads * each);
    for (const QString& line : lines) {
        const QRegularExpressionMatch match = entryForm.match(line);
        ASSERT_TRUE(match.hasMatch()) << line.toStdString();
        const QStringList words = match.captured(1).split(QLatin1Char(' '));
        ASSERT_EQ(words.size(), 3);
        EXPECT_EQ(words[1].toInt(), next[words[0].toUInt()]++);
        EXPECT_EQ(words[2].size(), 300);
        EXPECT_GE(line.left(23), lastTime) << "the times never go back";
        lastTime = line.left(23);
    }
}

TEST(StandardErrorLog, TellsAfterAFullDiskWhatWasLost)
{
    const TimeZone zone("UTC");
    const QTemporaryDir directory;
    const QString path = directory.filePath(QStringLiteral("log"));
    StandardErrorLog log;
    const RedirectedStandardError redirected(path);
    {
        const FileSizeLimit limit(1000);
        log.line(QStringLiteral("one"));
        log.line(QStringLiteral("two") + QString(2000, u'x'));
        log.line(QStringLiteral("three"));
        log.line(QStringLiteral("four"));
    }
    EXPECT_EQ(contents(path).size(), 1000);
    log.line(QStringLiteral("five"));
    log.line(QStringLiteral("six"));
    const QStringList lines = QString::fromUtf8(contents(path)).split(QLatin1Char('\n'));
    ASSERT_EQ(lines.size(), 6);
    EXPECT_EQ(entryForm.match(lines[0]).captured(1), QStringLiteral("one"));
    EXPECT_TRUE(entryForm.match(lines[1]).captured(1).startsWith(QStringLiteral("twoxxx"))) << "torn";
    EXPECT_EQ(entryForm.match(lines[2]).captured(1), QStringLiteral("StandardErrorLog: 3 entries were lost"));
    EXPECT_EQ(entryForm.match(lines[3]).captured(1), QStringLiteral("five"));
    EXPECT_EQ(entryForm.match(lines[4]).captured(1), QStringLiteral("six"));
}

TEST(StandardErrorLog, DoesNotWaitForWhoeverShouldRead)
{
    int ends[2];
    ASSERT_EQ(::pipe2(ends, O_CLOEXEC), 0);
    const int before = ::dup(STDERR_FILENO);
    ::dup2(ends[1], STDERR_FILENO);
    StandardErrorLog log;
    constexpr int entries = 3000;
    for (int i = 0; i < entries; ++i)
        log.line(QStringLiteral("entry %1 ").arg(i) + QString(100, u'x'));
    // A page has to be free before a pipe takes anything.
    QByteArray taken(64 * 1024, '\0');
    const ssize_t first = ::read(ends[0], taken.data(), static_cast<std::size_t>(taken.size()));
    taken.truncate(first);
    log.line(QStringLiteral("behind"));
    ::dup2(before, STDERR_FILENO);
    ::close(before);
    ::close(ends[1]);
    QByteArray rest(64 * 1024, '\0');
    rest.truncate(::read(ends[0], rest.data(), static_cast<std::size_t>(rest.size())));
    ::close(ends[0]);
    const QStringList lines = QString::fromUtf8(taken + rest).split(QLatin1Char('\n'), Qt::SkipEmptyParts);
    ASSERT_GT(lines.size(), 100);
    const auto textOf = [](const QString& line) { return entryForm.match(line).captured(1); };
    EXPECT_EQ(textOf(lines.last()), QStringLiteral("behind"));
    const auto written = lines.size() - 2;
    // The last one that was begun may have been cut; it counts as lost.
    const QString notice = QStringLiteral("StandardErrorLog: %1 entries were lost");
    const QString said = textOf(lines[lines.size() - 2]);
    EXPECT_TRUE(said == notice.arg(entries - written) || said == notice.arg(entries - written + 1))
        << said.toStdString();
}

TEST(PosixProcessServices, AFileThatCannotBeOpenedLeavesTheStreamAsItWas)
{
    const QTemporaryDir directory;
    const QString path = directory.filePath(QStringLiteral("log"));
    const RedirectedStandardError redirected(path);
    PosixProcessServices().reopenStandardError(directory.filePath(QStringLiteral("no/such/directory/log")));
    StandardErrorLog().line(QStringLiteral("still here"));
    EXPECT_TRUE(contents(path).contains("still here"));
}

TEST(PosixProcessServices, TellsTheCallStackFrameByFrame)
{
    const QStringList symbols = PosixProcessServices().callStackSymbols();
    EXPECT_GE(symbols.size(), 3);
    for (const QString& symbol : symbols)
        EXPECT_FALSE(symbol.contains(QLatin1Char('\n')));
}

} // namespace spotwell
