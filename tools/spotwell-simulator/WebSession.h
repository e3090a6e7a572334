// SPDX-FileCopyrightText: 2026 the spotwell developers
// SPDX-License-Identifier: MIT

#pragma once

#include "tools/spotwell-simulator/Connection.h"
#include "tools/spotwell-simulator/WebFeeds.h"
#include "tools/spotwell-simulator/WebReply.h"
#include "tools/spotwell-simulator/WebRequest.h"

#include <functional>
#include <optional>

namespace spotwell::simulator
{

/// What the connections of a service have in common.
struct WebService {
    WebFeeds feeds;
    /// Requests that came, and those that have their answer.
    qint64 requests = 0;
    qint64 answered = 0;
};

/// Answers the requests of one client, one after the other. A failed check ends the connection without an
/// answer.
class WebSession final : public Connection
{
public:
    /// `service` outlives the session. `answered` is called after each answer.
    WebSession(std::unique_ptr<PeerSocket> socket, int number, const Setting& setting, WebService& service,
               std::function<void()> answered, std::function<void()> over);

private:
    /// The answer that is going out.
    struct Playing {
        const WebAnswer& answer;
        WebReply reply;
        qint64 number;
        std::size_t step = 0;
        /// Bytes of the step that are in the queue, and of the whole answer.
        qint64 done = 0;
        qint64 bytes = 0;
        std::optional<Moment> stepAt = std::nullopt;
    };

    void play() override;
    void received(const QByteArray& bytes) override;
    void reportSent() override {}

    /// Takes the next request and begins its answer; false when there is none.
    bool takeRequest();
    void refuse(const QString& fault);
    bool holds(const WebCheck& check, const WebRequest& request);
    // Each goes on with the answer as far as it goes now; whether that is finished.
    bool advance();
    bool advance(const WebPause& pause);
    bool advance(const QByteArray& bytes);
    bool advance(const WebFiller& filler);
    bool staySilent();
    /// How many bytes of the present step may go into the queue now; waits where that is none.
    qint64 allowance();
    void finish();

    WebService& service_;
    std::function<void()> answered_;
    std::optional<Playing> playing_;
};

} // namespace spotwell::simulator
