#include "platform/linux/QtUrlSession.h"

#include "platform/linux/UrlTransfer.h"

#include <QEventLoop>
#include <QNetworkAccessManager>
#include <QNetworkProxyFactory>
#include <QNetworkRequest>
#include <QSocketNotifier>
#include <QUrl>

#include <utility>

namespace spotwell
{

namespace
{

class SystemProxyFactory final : public QNetworkProxyFactory
{
public:
    QList<QNetworkProxy> queryProxy(const QNetworkProxyQuery& query) override
    {
        return systemProxyForQuery(query);
    }
};

bool isWebAddress(const QUrl& url)
{
    return url.isValid() && !url.host().isEmpty() &&
           (url.scheme() == QLatin1String("http") || url.scheme() == QLatin1String("https"));
}

} // namespace

QtUrlSession::QtUrlSession(const UrlSessionConfiguration& configuration, const QString& userAgent,
                           const UrlSessionLimits& limits)
    : configuration_(configuration), userAgent_(userAgent.toLatin1()), limits_(limits), callbacks_(limits)
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
    const std::lock_guard lock(mutex_);
    tasks_.push_back({url, std::move(completionHandler)});
    if (!network_.joinable())
        network_ = std::thread([this] { runNetwork(); });
    wakeUp_.wake();
}

bool QtUrlSession::pause(Seconds duration)
{
    return callbacks_.pause(duration);
}

void QtUrlSession::runNetwork()
{
    QEventLoop loop;
    QNetworkAccessManager manager;
    manager.setProxyFactory(new SystemProxyFactory);
    QSocketNotifier notifier(wakeUp_.descriptor(), QSocketNotifier::Read);
    QObject::connect(&notifier, &QSocketNotifier::activated, &loop, [&] {
        wakeUp_.clear();
        startTasks(manager);
        const std::lock_guard lock(mutex_);
        if (ending_)
            loop.quit();
    });
    loop.exec();
}

void QtUrlSession::startTasks(QNetworkAccessManager& manager)
{
    std::deque<Task> tasks;
    {
        const std::lock_guard lock(mutex_);
        if (!ending_)
            tasks.swap(tasks_);
    }
    for (Task& task : tasks) {
        const QUrl url(task.url, QUrl::StrictMode);
        if (!isWebAddress(url)) {
            callbacks_.push(std::move(task.completionHandler),
                            {{}, {}, QStringLiteral("\"%1\" is no web address.").arg(task.url)});
            continue;
        }
        QNetworkReply* const reply = manager.get(requestFor(url));
        (new UrlTransfer(*reply, configuration_, limits_, callbacks_, std::move(task.completionHandler)))
            ->start();
    }
}

QNetworkRequest QtUrlSession::requestFor(const QUrl& url) const
{
    QNetworkRequest request(url);
    request.setRawHeader("User-Agent", userAgent_);
    request.setTransferTimeout(timerInterval(configuration_.timeoutIntervalForRequest));
    request.setDecompressedSafetyCheckThreshold(limits_.body);
    request.setAttribute(QNetworkRequest::RedirectPolicyAttribute, QNetworkRequest::NoLessSafeRedirectPolicy);
    // The manager has no cache; this asks the proxies on the way to do without theirs.
    if (configuration_.requestCachePolicy ==
        UrlSessionConfiguration::CachePolicy::reloadIgnoringLocalCacheData)
        request.setAttribute(QNetworkRequest::CacheLoadControlAttribute, QNetworkRequest::AlwaysNetwork);
    // A server could fill the memory with cookies.
    request.setAttribute(QNetworkRequest::CookieLoadControlAttribute, QNetworkRequest::Manual);
    request.setAttribute(QNetworkRequest::CookieSaveControlAttribute, QNetworkRequest::Manual);
    request.setAttribute(QNetworkRequest::Http2AllowedAttribute, false);
    return request;
}

} // namespace spotwell
