#include "bench/ProcessFigures.h"

#include <QByteArray>
#include <QDir>
#include <QFile>

#include <ctime>
#include <unistd.h>

namespace spotwell::bench
{

namespace
{

QString folderOf(qint64 process)
{
    return QStringLiteral("/proc/%1").arg(process);
}

QByteArray contents(const QString& path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

QStringList threadFoldersOf(qint64 process)
{
    QStringList folders;
    const QDir tasks(folderOf(process) + QStringLiteral("/task"));
    for (const QString& entry : tasks.entryList(QDir::Dirs | QDir::NoDotAndDotDot))
        folders += tasks.filePath(entry);
    return folders;
}

/// proc(5): the process's or thread's name in parentheses is the second field, utime the 14th, stime the
/// 15th.
double cpuInStat(const QByteArray& stat)
{
    const QList<QByteArray> fields = stat.mid(stat.lastIndexOf(')') + 2).split(' ');
    constexpr int utime = 14 - 3;
    if (fields.size() <= utime + 1)
        return 0;
    return static_cast<double>(fields[utime].toLongLong() + fields[utime + 1].toLongLong()) /
           static_cast<double>(::sysconf(_SC_CLK_TCK));
}

/// The number behind "KEY:" in the text of a status file.
qint64 numberBehind(const QByteArray& key, const QByteArray& status)
{
    for (const QByteArray& line : status.split('\n')) {
        if (line.startsWith(key + ':'))
            return line.mid(key.size() + 1).simplified().split(' ').constFirst().toLongLong();
    }
    return 0;
}

} // namespace

CpuFigures cpuOf(qint64 process)
{
    CpuFigures figures;
    figures.seconds = cpuInStat(contents(folderOf(process) + QStringLiteral("/stat")));
    for (const QString& thread : threadFoldersOf(process)) {
        const QByteArray stat = contents(thread + QStringLiteral("/stat"));
        const auto name = stat.mid(stat.indexOf('(') + 1, stat.lastIndexOf(')') - stat.indexOf('(') - 1);
        figures.threads[QString::fromUtf8(name)] += cpuInStat(stat);
    }
    return figures;
}

CpuFigures operator-(const CpuFigures& later, const CpuFigures& earlier)
{
    CpuFigures used = later;
    used.seconds -= earlier.seconds;
    for (auto& [name, seconds] : used.threads) {
        const auto before = earlier.threads.find(name);
        if (before != earlier.threads.end())
            seconds -= before->second;
    }
    return used;
}

double cpuSecondsOf(qint64 process)
{
    clockid_t clock{};
    timespec time{};
    if (::clock_getcpuclockid(static_cast<pid_t>(process), &clock) != 0 || ::clock_gettime(clock, &time) != 0)
        return 0;
    return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_nsec) * 1e-9;
}

MemoryFigures memoryOf(qint64 process)
{
    return {numberBehind("VmHWM", contents(folderOf(process) + QStringLiteral("/status"))),
            numberBehind("Pss", contents(folderOf(process) + QStringLiteral("/smaps_rollup")))};
}

qint64 residentOf(qint64 process)
{
    return numberBehind("VmRSS", contents(folderOf(process) + QStringLiteral("/status")));
}

ThreadWakeUps wakeUpsOf(qint64 process)
{
    ThreadWakeUps wakeUps;
    for (const QString& thread : threadFoldersOf(process))
        wakeUps[thread] =
            numberBehind("voluntary_ctxt_switches", contents(thread + QStringLiteral("/status")));
    return wakeUps;
}

qint64 operator-(const ThreadWakeUps& later, const ThreadWakeUps& earlier)
{
    qint64 count = 0;
    for (const auto& [thread, wakeUps] : later) {
        const auto before = earlier.find(thread);
        count += before == earlier.end() ? wakeUps : wakeUps - before->second;
    }
    return count;
}

} // namespace spotwell::bench
