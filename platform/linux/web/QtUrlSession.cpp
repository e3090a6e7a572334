// SPDX-FileCopyrightText: 2026 the spotwell developers
// SPDX-License-Identifier: MIT

#include "platform/linux/web/QtUrlSession.h"

#include <QEventLoop>
#include <QSocketNotifier>

#include <system_error>
#include <utility>

namespace spotwell
{

QtUrlSession::QtUrlSession(const UrlSessionConfiguration& configuration, const QString& userAgent,
                           const UrlSessionLimits& limits)
    : rules_{configuration, userAgent.toLatin1(), limits}
{
}

QtUrlSession::~QtUrlSession()
{
    // First, so that no handler hears of the transfers that are aborted.
    callbacks_.end();
    {
        const std::lock_guard lock(mutex_);
        ending_ = true;
    }
    wakeUp_.wake();
    if (network_.joinable())
        network_.join();
}

void QtUrlSession::dataTask(const QString& url, CompletionHandler completionHandler)
{
    callbacks_.begin();
    const std::lock_guard lock(mutex_);
    tasks_.push_back({url, std::move(completionHandler)});
    beginNetwork();
    wakeUp_.wake();
}

bool QtUrlSession::pause(Seconds duration)
{
    return callbacks_.pause(duration);
}

void QtUrlSession::beginNetwork()
{
    if (network_.joinable())
        return;
    try {
        network_ = std::thread([this] { runNetwork(); });
    } catch (const std::system_error&) {
        // Out of threads for now: the task waits, and the next one tries again.
        return;
    }
}

void QtUrlSession::runNetwork()
{
    QEventLoop loop;
    Hosts hosts;
    QSocketNotifier notifier(wakeUp_.descriptor(), QSocketNotifier::Read);
    QObject::connect(&notifier, &QSocketNotifier::activated, &loop, [&] {
        wakeUp_.clear();
        if (takeTasks(hosts)) {
            for (auto& [key, host] : hosts)
                host.startTasks();
        } else {
            loop.quit();
        }
    });
    loop.exec();
}

bool QtUrlSession::takeTasks(Hosts& hosts)
{
    std::deque<UrlTask> tasks;
    {
        const std::lock_guard lock(mutex_);
        if (ending_)
            return false;
        tasks.swap(tasks_);
    }
    for (UrlTask& task : tasks) {
        UrlHost& host = hostOf(task, hosts);
        host.add(std::move(task));
    }
    return true;
}

UrlHost& QtUrlSession::hostOf(const UrlTask& task, Hosts& hosts)
{
    const QString key = urlHostKey(task.url);
    const bool isNew = hosts.find(key) == hosts.end();
    const QString own = isNew && hosts.size() >= rules_.limits.hosts ? QStringLiteral("others") : key;
    return hosts.try_emplace(own, rules_, callbacks_, wakeUp_).first->second;
}

} // namespace spotwell
