#pragma once

#include "platform/UrlSession.h"
#include "platform/linux/UrlCallbackQueue.h"
#include "platform/linux/WakeUp.h"

#include <deque>
#include <mutex>
#include <thread>

class QNetworkAccessManager;
class QNetworkRequest;
class QUrl;

namespace spotwell
{

/// A URL session by Qt's HTTP client, on a network thread of its own that begins with the first transfer.
///
/// Compressed answers are decoded. Redirections are followed, but never from https to http. The proxy is the
/// system's. A server must prove its identity over https. There is no cache, and no cookie is kept. What is
/// larger than `limits` allows ends with an error.
///
/// Needs a QCoreApplication that lives longer. Destroying it aborts the transfers, drops the answers that
/// wait and waits for the running handler only.
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
    struct Task {
        QString url;
        CompletionHandler completionHandler;
    };

    void runNetwork();
    void startTasks(QNetworkAccessManager& manager);
    [[nodiscard]] QNetworkRequest requestFor(const QUrl& url) const;

    const UrlSessionConfiguration configuration_;
    const QByteArray userAgent_;
    const UrlSessionLimits limits_;
    UrlCallbackQueue callbacks_;
    std::mutex mutex_;
    std::deque<Task> tasks_;
    bool ending_ = false;
    WakeUp wakeUp_;
    std::thread network_;
};

} // namespace spotwell
