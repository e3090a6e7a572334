// SPDX-FileCopyrightText: 2026 the spotwell developers
// SPDX-License-Identifier: MIT

#pragma once

#include "platform/Log.h"
#include "platform/Queues.h"
#include "platform/Time.h"
#include "platform/UrlSession.h"

#include <QByteArray>
#include <QString>

#include <atomic>
#include <functional>

namespace spotwell
{

/// What tells the poller of one web feed from that of another.
struct WebPollerValues {
    /// When the time stamp is renewed.
    enum class Stamp {
        whenIssued,  ///< as soon as a poll was issued
        whenHandled, ///< when the handling of an answer has ended; until then each tick polls again
    };

    /// The name that begins its log lines, "potaTimer" say.
    QString name;
    /// What it fetches, whole.
    QString address;
    /// A poll needs more than this since the stamp.
    Seconds gap;
    Stamp stamp;
};

/// The values of the three feeds' pollers, which fetch `address`.
[[nodiscard]] WebPollerValues potaPollerValues(const QString& address);
[[nodiscard]] WebPollerValues dxsummitPollerValues(const QString& address);
[[nodiscard]] WebPollerValues wsprnetPollerValues(const QString& address);

/// What a poller needs of the program around it.
struct WebPollerHost {
    /// Whether the feed is switched on. Main thread.
    std::function<bool()> isOn;
    /// The state of the feed's option, handed to the parser of the answer. Main thread.
    std::function<bool()> option;
    /// Where transfers are started. Main thread.
    std::function<SerialQueue&()> queue;
    /// Who transfers; null for nobody. On the queue.
    std::function<UrlSession*()> session;
    /// Takes an answer's body, which is not empty, and the option as it was when the poll was issued. On the
    /// session's callback queue.
    std::function<void(const QByteArray& body, bool option)> parse;
};

/// Polls one web service while its feed is switched on. There is no other retry than the next poll.
class WebPoller
{
public:
    /// Polls that may be issued and not handled yet; beyond that ticks issue none, so that a service that is
    /// faster than its spots can be forwarded does not fill the memory with requests.
    static constexpr int mostUnhandled = 4096;

    /// `stamp` is when the feed was last polled; nobody else writes it while polls are under way.
    WebPoller(WebPollerValues values, WebPollerHost host, std::atomic<TimePoint>& stamp, const Clock& clock,
              Log& log);

    /// To be called every second. Main thread.
    void tick();

private:
    [[nodiscard]] bool hasRoom();
    void startTransfer(bool option);
    void handle(const UrlResult& result, bool option);

    const WebPollerValues values_;
    const WebPollerHost host_;
    std::atomic<TimePoint>& stamp_;
    const Clock& clock_;
    Log& log_;
    std::atomic<int> unhandled_ = 0;
    /// Whether the log has been told that too many answers wait.
    bool told_ = false;
};

} // namespace spotwell
