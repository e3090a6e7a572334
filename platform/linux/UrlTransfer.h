#pragma once

#include "platform/linux/UrlCallbackQueue.h"

#include <QNetworkReply>
#include <QTimer>

namespace spotwell
{

/// `span` as Qt's time-outs count it: whole milliseconds, at least one.
[[nodiscard]] int timerInterval(Seconds span);

/// Whether `error` says no more than that the server answered with `status`, an HTTP error (RFC 9110, 15.5
/// and 15.6).
[[nodiscard]] bool isHttpStatusError(QNetworkReply::NetworkError error, int status);

/// One transfer, from its start to the handing over of its end. Belongs to its reply and lives on the network
/// thread.
class UrlTransfer final : public QObject
{
public:
    /// `reply` must have been made with the request time-out of `configuration`.
    UrlTransfer(QNetworkReply& reply, const UrlSessionConfiguration& configuration,
                const UrlSessionLimits& limits, UrlCallbackQueue& callbacks,
                UrlSession::CompletionHandler completionHandler);
    ~UrlTransfer() override;
    UrlTransfer(const UrlTransfer&) = delete;
    UrlTransfer& operator=(const UrlTransfer&) = delete;

    /// To be called once, before the reply can have ended.
    void start();

private:
    void takeBody();
    void fail(const QString& description);
    void finish();
    void noteError(QNetworkReply::NetworkError error);
    /// Whether less came than the head announced, which Qt does not report beside an error status.
    [[nodiscard]] bool isCutOff() const;
    void dropBody();

    QNetworkReply& reply_;
    const UrlSessionConfiguration configuration_;
    const UrlSessionLimits limits_;
    UrlCallbackQueue& callbacks_;
    UrlSession::CompletionHandler completionHandler_;
    QTimer resourceTimer_;
    /// Booked at `callbacks_`.
    QByteArray body_;
    /// Null while there is none.
    QString failure_;
    bool finished_ = false;
};

} // namespace spotwell
