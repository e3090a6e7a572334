// SPDX-FileCopyrightText: 2026 the spotwell developers
// SPDX-License-Identifier: MIT

#pragma once

#include "platform/linux/web/UrlCallbackQueue.h"

#include <QNetworkReply>
#include <QTimer>

#include <functional>
#include <utility>

namespace spotwell
{

/// `span` as Qt's time-outs count it: whole milliseconds, at least one.
[[nodiscard]] int timerInterval(Seconds span);

/// Whether `error` says no more than that the server answered with `status`, an HTTP error (RFC 9110, 15.5
/// and 15.6).
[[nodiscard]] bool isHttpStatusError(QNetworkReply::NetworkError error, int status);

/// The client's `errorText` without the colon of a reason that it does not give.
[[nodiscard]] QString whole(const QString& errorText);

/// One transfer, from its start to the handing over of its end. Belongs to its reply and lives on the network
/// thread.
class UrlTransfer final : public QObject
{
    Q_OBJECT

public:
    /// `reply` must have been made with the request time-out of `configuration`. `ended` is called when the
    /// end was handed over.
    UrlTransfer(QNetworkReply& reply, const UrlSessionConfiguration& configuration,
                const UrlSessionLimits& limits, UrlBooking booking, UrlCallbackQueue& callbacks,
                UrlSession::CompletionHandler completionHandler, std::function<void(UrlTransfer&)> ended);
    ~UrlTransfer() override = default;
    UrlTransfer(const UrlTransfer&) = delete;
    UrlTransfer& operator=(const UrlTransfer&) = delete;

    /// To be called once, before the reply can have ended.
    void start();
    /// Ends the transfer with an error.
    void fail(const QString& description);
    /// Bytes of body, decoded, that Qt's client has handed over since the last call.
    [[nodiscard]] qint64 takeCount() { return std::exchange(taken_, 0); }
    /// Whether it ended with an error.
    [[nodiscard]] bool hasFailed() const { return !failure_.isNull(); }

private:
    Q_SLOT void takeBody();
    Q_SLOT void finish();
    Q_SLOT void noteError(QNetworkReply::NetworkError error);
    /// Whether less came than the head announced, which Qt does not report beside an error status.
    [[nodiscard]] bool isCutOff() const;

    QNetworkReply& reply_;
    const UrlSessionConfiguration configuration_;
    const UrlSessionLimits limits_;
    UrlBooking booking_;
    UrlCallbackQueue& callbacks_;
    UrlSession::CompletionHandler completionHandler_;
    const std::function<void(UrlTransfer&)> ended_;
    QTimer resourceTimer_;
    QByteArray body_;
    qint64 taken_ = 0;
    /// Null while there is none.
    QString failure_;
    bool finished_ = false;
};

} // namespace spotwell
