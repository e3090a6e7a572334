// SPDX-FileCopyrightText: 2026 the spotwell developers
// SPDX-License-Identifier: MIT

#include "platform/linux/web/UrlTransfer.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <utility>

namespace spotwell
{

int timerInterval(Seconds span)
{
    return static_cast<int>(std::clamp(std::ceil(span.count() * 1000.0), 1.0,
                                       static_cast<double>(std::numeric_limits<int>::max())));
}

bool isHttpStatusError(QNetworkReply::NetworkError error, int status)
{
    switch (error) {
    case QNetworkReply::ProtocolInvalidOperationError:
    case QNetworkReply::AuthenticationRequiredError:
    case QNetworkReply::ProxyAuthenticationRequiredError:
    case QNetworkReply::ContentAccessDenied:
    case QNetworkReply::ContentOperationNotPermittedError:
    case QNetworkReply::ContentNotFoundError:
    case QNetworkReply::ContentReSendError:
    case QNetworkReply::ContentConflictError:
    case QNetworkReply::ContentGoneError:
    case QNetworkReply::UnknownContentError:
    case QNetworkReply::InternalServerError:
    case QNetworkReply::OperationNotImplementedError:
    case QNetworkReply::ServiceUnavailableError:
    case QNetworkReply::UnknownServerError:
        return status >= 400;
    default:
        return false;
    }
}

QString whole(const QString& errorText)
{
    return errorText.endsWith(QLatin1String(": ")) ? errorText.chopped(2) : errorText;
}

UrlTransfer::UrlTransfer(QNetworkReply& reply, const UrlSessionConfiguration& configuration,
                         const UrlSessionLimits& limits, UrlBooking booking, UrlCallbackQueue& callbacks,
                         UrlSession::CompletionHandler completionHandler,
                         std::function<void(UrlTransfer&)> ended)
    : QObject(&reply),
      reply_(reply),
      configuration_(configuration),
      limits_(limits),
      booking_(std::move(booking)),
      callbacks_(callbacks),
      completionHandler_(std::move(completionHandler)),
      ended_(std::move(ended))
{
}

void UrlTransfer::start()
{
    reply_.setReadBufferSize(limits_.buffer);
    // By their names, since Qt may free a function connected to a reply on the HTTP client's thread.
    connect(&reply_, SIGNAL(readyRead()), SLOT(takeBody()));
    connect(&reply_, SIGNAL(finished()), SLOT(finish()));
    connect(&reply_, SIGNAL(errorOccurred(QNetworkReply::NetworkError)),
            SLOT(noteError(QNetworkReply::NetworkError)));
    connect(&resourceTimer_, &QTimer::timeout, this, [this] {
        fail(QStringLiteral("The transfer did not end within %1 seconds.")
                 .arg(configuration_.timeoutIntervalForResource.count()));
    });
    resourceTimer_.setSingleShot(true);
    resourceTimer_.setTimerType(Qt::PreciseTimer);
    resourceTimer_.start(timerInterval(configuration_.timeoutIntervalForResource));
}

void UrlTransfer::takeBody()
{
    // In small pieces, for a few compressed bytes can stand for any number of others.
    char piece[16384];
    // An aborted reply is not open any more.
    while (failure_.isNull() && reply_.isOpen()) {
        const qint64 count = reply_.read(piece, sizeof piece);
        if (count <= 0)
            return;
        taken_ += count;
        if (count > limits_.body - body_.size())
            fail(QStringLiteral("The answer is larger than %1 bytes.").arg(limits_.body));
        else if (!booking_.addBody(count))
            fail(QStringLiteral("Too many answers are waiting to be handled."));
        else
            body_.append(piece, count);
    }
}

void UrlTransfer::fail(const QString& description)
{
    failure_ = description;
    reply_.abort();
}

void UrlTransfer::finish()
{
    if (std::exchange(finished_, true))
        return;
    resourceTimer_.stop();
    takeBody();
    if (failure_.isNull() && isCutOff())
        failure_ = QStringLiteral("Connection closed");
    UrlResult result;
    if (failure_.isNull()) {
        body_.squeeze();
        result.body = std::exchange(body_, {});
        result.response = {reply_.attribute(QNetworkRequest::HttpStatusCodeAttribute).toInt()};
    } else {
        result.error = failure_;
        body_ = {};
        booking_.dropBody();
    }
    callbacks_.push(std::move(completionHandler_), std::move(result), std::move(booking_));
    reply_.deleteLater();
    ended_(*this);
}

void UrlTransfer::noteError(QNetworkReply::NetworkError error)
{
    const int status = reply_.attribute(QNetworkRequest::HttpStatusCodeAttribute).toInt();
    if (!failure_.isNull() || isHttpStatusError(error, status))
        return;
    // This class notes a failure of its own before it aborts; all other aborts are the request time-out's.
    if (error == QNetworkReply::OperationCanceledError)
        failure_ = QStringLiteral("No data came for %1 seconds.")
                       .arg(configuration_.timeoutIntervalForRequest.count());
    else
        failure_ = whole(reply_.errorString());
}

bool UrlTransfer::isCutOff() const
{
    const int status = reply_.attribute(QNetworkRequest::HttpStatusCodeAttribute).toInt();
    const bool hasBody = status != 204 && status != 304;
    bool isNumber = false;
    const qint64 announced = reply_.rawHeader("Content-Length").toLongLong(&isNumber);
    return hasBody && isNumber && !reply_.hasRawHeader("Content-Encoding") &&
           !reply_.hasRawHeader("Transfer-Encoding") && body_.size() < announced;
}

} // namespace spotwell
