// SPDX-FileCopyrightText: 2026 the spotwell developers
// SPDX-License-Identifier: MIT

#pragma once

#include "platform/linux/WakeUp.h"
#include "platform/linux/web/ServerConnections.h"
#include "platform/linux/web/UrlCallbackQueue.h"

#include <QByteArray>
#include <QString>
#include <QTimer>

#include <deque>
#include <memory>
#include <set>

class QNetworkAccessManager;
class QNetworkRequest;
class QUrl;

namespace spotwell
{

class UrlTransfer;

/// A transfer that was asked for and is not started yet.
struct UrlTask {
    QString url;
    UrlSession::CompletionHandler completionHandler;
};

/// What holds for every transfer of a session.
struct UrlTransferRules {
    UrlSessionConfiguration configuration;
    QByteArray userAgent;
    UrlSessionLimits limits;
};

/// Whether `url` is one that a session fetches.
[[nodiscard]] bool isWebAddress(const QUrl& url);

/// Tells hosts apart: scheme, host and port of `url`; empty for what is no web address.
[[nodiscard]] QString urlHostKey(const QString& url);

/// One host's line of tasks and the transfers that run. They have an HTTP client of their own, which means a
/// thread of Qt's of their own, so that no server can hold up another's answers. Lives on the network thread.
class UrlHost
{
public:
    /// `released` is woken when startTasks() is to be called again.
    UrlHost(const UrlTransferRules& rules, UrlCallbackQueue& callbacks, WakeUp& released);
    /// Aborts what runs.
    ~UrlHost();
    UrlHost(const UrlHost&) = delete;
    UrlHost& operator=(const UrlHost&) = delete;

    /// Adds a task to the end of the line.
    void add(UrlTask task);
    /// Starts tasks in their order as far as there is room.
    void startTasks();

private:
    void start(UrlTask task);
    /// Ends the client, which has nothing to do any more, or what it does is aborted.
    void endClient();
    void noteEnd(UrlTransfer& transfer);
    [[nodiscard]] QNetworkRequest requestFor(const QUrl& url) const;
    /// Ends what runs when the client reads and reads without handing anything over.
    void lookAtConnections();

    const UrlTransferRules& rules_;
    UrlCallbackQueue& callbacks_;
    WakeUp& released_;
    const std::shared_ptr<UrlAccount> account_;
    std::deque<UrlTask> line_;
    std::set<UrlTransfer*> running_;
    ServerConnections connections_;
    QTimer watch_;
    /// Bytes that transfers have taken since the last look.
    qint64 taken_ = 0;
    /// Bytes read from the connections beyond what was handed over.
    qint64 unseen_ = 0;
    std::unique_ptr<QNetworkAccessManager> manager_;
    /// Whether the next transfer takes a new client; nothing runs then.
    bool isClientSpent_ = false;
};

} // namespace spotwell
