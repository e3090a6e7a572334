// SPDX-FileCopyrightText: 2026 the spotwell developers
// SPDX-License-Identifier: MIT

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

ThreadWakeUps switchesOf(qint64 process, const QByteArray& key)
{
    ThreadWakeUps switches;
    for (const QString& thread : threadFoldersOf(process))
        switches[thread] = numberBehind(key, contents(thread + QStringLiteral("/status")));
    return switches;
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
    const QByteArray now = contents(folderOf(process) + QStringLiteral("/smaps_rollup"));
    MemoryFigures figures;
    figures.peak = numberBehind("VmHWM", contents(folderOf(process) + QStringLiteral("/status")));
    figures.proportional = numberBehind("Pss", now);
    figures.anonymous = numberBehind("Anonymous", now);
    figures.unshared = numberBehind("Private_Clean", now) + numberBehind("Private_Dirty", now);
    figures.resident = numberBehind("Rss", now);
    return figures;
}

qint64 descriptorsOf(qint64 process)
{
    const QDir open(folderOf(process) + QStringLiteral("/fd"));
    return open.entryList(QDir::AllEntries | QDir::System | QDir::NoDotAndDotDot).size();
}

qint64 threadsOf(qint64 process)
{
    return threadFoldersOf(process).size();
}

qint64 residentOf(qint64 process)
{
    return numberBehind("VmRSS", contents(folderOf(process) + QStringLiteral("/status")));
}

ThreadWakeUps wakeUpsOf(qint64 process)
{
    return switchesOf(process, "voluntary_ctxt_switches");
}

ThreadWakeUps preemptionsOf(qint64 process)
{
    return switchesOf(process, "nonvoluntary_ctxt_switches");
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

std::vector<qint64> familyOf(qint64 process)
{
    std::vector<qint64> family{process};
    for (std::size_t i = 0; i < family.size(); ++i) {
        for (const QString& thread : threadFoldersOf(family[i])) {
            const QByteArray children = contents(thread + QStringLiteral("/children")).simplified();
            for (const QByteArray& child : children.split(' ')) {
                if (!child.isEmpty())
                    family.push_back(child.toLongLong());
            }
        }
    }
    return family;
}

} // namespace spotwell::bench
