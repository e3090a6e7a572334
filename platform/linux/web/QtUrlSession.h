// SPDX-FileCopyrightText: 2026 the spotwell developers
// SPDX-License-Identifier: MIT

#pragma once

#include "platform/UrlSession.h"
#include "platform/linux/WakeUp.h"
#include "platform/linux/web/UrlCallbackQueue.h"
#include "platform/linux/web/UrlHost.h"

#include <deque>
#include <map>
#include <mutex>
#include <thread>

namespace spotwell
{

/// A URL session by Qt's HTTP client, on a network thread of its own that begins with the first transfer.
///
/// Compressed answers are decoded. Redirections are followed, but never from https to http. The proxy is the
/// system's. A server must prove its identity over https. There is no cache, and no cookie is kept.
///
/// Each host has a line of its own, from which tasks are started in their order while `limits` leave room for
/// their answers. An answer that is larger than `limits` allow ends with an error.
///
/// Needs a QCoreApplication that lives longer. Destroying it aborts the transfers, drops the tasks and
/// answers that wait and waits for the running handler only.
class QtUrlSession final : public UrlSession
{
public:
    QtUrlSession(const UrlSessionConfiguration& configuration, const QString& userAgent,
                 const UrlSessionLimits& limits = {});
    ~QtUrlSession() override;
    QtUrlSession(const QtUrlSession&) = delete;
    QtUrlSession& operator=(const QtUrlSession&) = delete;

    void dataTask(const QString& url, CompletionHandler completionHandler) override;
    bool pause(Seconds duration) override;

private:
    using Hosts = std::map<QString, UrlHost>;

    void beginNetwork();
    void runNetwork();
    /// Puts the tasks in line at their hosts; false when the session is ending.
    bool takeTasks(Hosts& hosts);
    UrlHost& hostOf(const UrlTask& task, Hosts& hosts);

    const UrlTransferRules rules_;
    WakeUp wakeUp_;
    UrlCallbackQueue callbacks_;
    std::mutex mutex_;
    std::deque<UrlTask> tasks_;
    bool ending_ = false;
    std::thread network_;
};

} // namespace spotwell
