// SPDX-FileCopyrightText: 2026 the spotwell developers
// SPDX-License-Identifier: MIT

#pragma once

#include "platform/Time.h"

#include <QByteArray>
#include <QString>

#include <functional>
#include <memory>
#include <optional>

namespace spotwell
{

/// How a session's transfers behave.
struct UrlSessionConfiguration {
    enum class CachePolicy { useProtocolCachePolicy = 0, reloadIgnoringLocalCacheData = 1 };

    CachePolicy requestCachePolicy = CachePolicy::useProtocolCachePolicy;
    /// The longest time without a byte.
    Seconds timeoutIntervalForRequest{60.0};
    /// The longest time for a whole transfer.
    Seconds timeoutIntervalForResource{604800.0};
};

/// A transfer's response head.
struct UrlResponse {
    int statusCode = 0;
};

/// The end of a transfer: the body and the response, or the error's description.
struct UrlResult {
    QByteArray body;
    std::optional<UrlResponse> response;
    std::optional<QString> error;
};

/// Plain GET transfers.
///
/// Completion handlers of all transfers run one at a time, in the order the transfers end, on one callback
/// queue that is neither the main thread nor the one that does the network I/O: a handler may take its time.
class UrlSession
{
public:
    using CompletionHandler = std::function<void(const UrlResult&)>;

    virtual ~UrlSession() = default;
    /// Starts a GET of `url` and returns. An HTTP error status is no error. From any thread.
    virtual void dataTask(const QString& url, CompletionHandler completionHandler) = 0;
    /// Holds the calling completion handler for `duration`. Returns false when the session is ending, in
    /// which case the handler should return without further work.
    virtual bool pause(Seconds duration) = 0;
};

/// Makes a session with the given configuration.
using UrlSessionMaker = std::function<std::unique_ptr<UrlSession>(const UrlSessionConfiguration&)>;

} // namespace spotwell
