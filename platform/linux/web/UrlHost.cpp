// SPDX-FileCopyrightText: 2026 the spotwell developers
// SPDX-License-Identifier: MIT

#include "platform/linux/web/UrlHost.h"

#include "platform/linux/web/UrlTransfer.h"

#include <QNetworkAccessManager>
#include <QNetworkProxyFactory>
#include <QNetworkRequest>
#include <QUrl>

#include <algorithm>
#include <chrono>
#include <utility>

namespace spotwell
{

namespace
{

using namespace std::chrono_literals;

/// How often the connections of running transfers are looked at.
constexpr auto watchInterval = 100ms;
/// What a regular answer takes besides its body: its head, the ends of its chunks, the proof of identity.
constexpr qint64 usualOverhead = 65536;

class SystemProxyFactory final : public QNetworkProxyFactory
{
public:
    QList<QNetworkProxy> queryProxy(const QNetworkProxyQuery& query) override
    {
        return systemProxyForQuery(query);
    }
};

} // namespace

bool isWebAddress(const QUrl& url)
{
    return url.isValid() && !url.host().isEmpty() &&
           (url.scheme() == QLatin1String("http") || url.scheme() == QLatin1String("https"));
}

QString urlHostKey(const QString& url)
{
    const QUrl parsed(url, QUrl::StrictMode);
    if (!isWebAddress(parsed))
        return {};
    const int port = parsed.port(parsed.scheme() == QLatin1String("https") ? 443 : 80);
    return QStringLiteral("%1://%2:%3").arg(parsed.scheme(), parsed.host()).arg(port);
}

UrlHost::UrlHost(const UrlTransferRules& rules, UrlCallbackQueue& callbacks, WakeUp& released)
    : rules_(rules),
      callbacks_(callbacks),
      released_(released),
      account_(std::make_shared<UrlAccount>(rules.limits, released))
{
    watch_.setInterval(watchInterval);
    QObject::connect(&watch_, &QTimer::timeout, &watch_, [this] { lookAtConnections(); });
}

UrlHost::~UrlHost()
{
    line_.clear();
    endClient();
}

void UrlHost::endClient()
{
    // The client waits for its thread, and that for the connection it is reading from, be it one that was
    // made only after its transfer was given up.
    connections_.reset();
    manager_.reset();
}

void UrlHost::add(UrlTask task)
{
    line_.push_back(std::move(task));
}

void UrlHost::startTasks()
{
    while (!line_.empty() && running_.size() < rules_.limits.running && account_->hasRoomToStart()) {
        UrlTask task = std::move(line_.front());
        line_.pop_front();
        start(std::move(task));
    }
}

void UrlHost::start(UrlTask task)
{
    UrlBooking booking(account_);
    const QUrl url(task.url, QUrl::StrictMode);
    if (!isWebAddress(url)) {
        callbacks_.push(std::move(task.completionHandler),
                        {{}, {}, QStringLiteral("\"%1\" is no web address.").arg(task.url)},
                        std::move(booking));
        return;
    }
    if (std::exchange(isClientSpent_, false))
        endClient();
    if (!manager_) {
        manager_ = std::make_unique<QNetworkAccessManager>();
        manager_->setProxyFactory(new SystemProxyFactory);
    }
    connections_.add(url);
    QNetworkReply* const reply = manager_->get(requestFor(url));
    QObject::connect(reply, SIGNAL(redirected(QUrl)), &connections_, SLOT(add(QUrl)));
    auto* const transfer =
        new UrlTransfer(*reply, rules_.configuration, rules_.limits, std::move(booking), callbacks_,
                        std::move(task.completionHandler), [this](UrlTransfer& ended) { noteEnd(ended); });
    running_.insert(transfer);
    transfer->start();
    if (!watch_.isActive()) {
        watch_.start();
        unseen_ = 0;
        taken_ = 0;
        // What came before is no business of these transfers.
        static_cast<void>(connections_.countRead());
    }
}

void UrlHost::noteEnd(UrlTransfer& transfer)
{
    running_.erase(&transfer);
    taken_ += transfer.takeCount() + usualOverhead;
    if (running_.empty()) {
        watch_.stop();
        // Qt's thread can go on with an aborted transfer as long as the server does, and what it has to say
        // of a connection that broke it would say of the next transfer.
        if (transfer.hasFailed()) {
            connections_.reset();
            isClientSpent_ = true;
        }
    }
    // Not from within a signal of the client that is to end.
    released_.wake();
}

void UrlHost::lookAtConnections()
{
    for (UrlTransfer* const transfer : running_)
        taken_ += transfer->takeCount();
    unseen_ = std::max<qint64>(0, unseen_ + connections_.countRead() - std::exchange(taken_, 0));
    if (unseen_ <= rules_.limits.unseen)
        return;
    unseen_ = 0;
    connections_.reset();
    for (UrlTransfer* const transfer : std::set(running_))
        transfer->fail(QStringLiteral("The server sends too much that is no answer."));
}

QNetworkRequest UrlHost::requestFor(const QUrl& url) const
{
    QNetworkRequest request(url);
    request.setRawHeader("User-Agent", rules_.userAgent);
    request.setTransferTimeout(timerInterval(rules_.configuration.timeoutIntervalForRequest));
    // Each transfer counts what it takes, decompressed; Qt's own check cannot say what is wrong.
    request.setDecompressedSafetyCheckThreshold(-1);
    request.setAttribute(QNetworkRequest::RedirectPolicyAttribute, QNetworkRequest::NoLessSafeRedirectPolicy);
    // The manager has no cache; this asks the proxies on the way to do without theirs.
    if (rules_.configuration.requestCachePolicy ==
        UrlSessionConfiguration::CachePolicy::reloadIgnoringLocalCacheData)
        request.setAttribute(QNetworkRequest::CacheLoadControlAttribute, QNetworkRequest::AlwaysNetwork);
    // A server could fill the memory with cookies.
    request.setAttribute(QNetworkRequest::CookieLoadControlAttribute, QNetworkRequest::Manual);
    request.setAttribute(QNetworkRequest::CookieSaveControlAttribute, QNetworkRequest::Manual);
    request.setAttribute(QNetworkRequest::Http2AllowedAttribute, false);
    return request;
}

} // namespace spotwell
