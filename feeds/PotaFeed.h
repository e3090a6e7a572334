// SPDX-FileCopyrightText: 2026 the spotwell developers
// SPDX-License-Identifier: MIT

#pragma once

#include "feeds/FeedHost.h"
#include "platform/Log.h"

#include <QByteArray>
#include <QJsonArray>
#include <QJsonValue>
#include <QSet>

#include <compare>
#include <vector>

namespace spotwell
{

/// Turns the answers of the Parks on the Air activator service (a JSON array of spots) into spots.
///
/// One parse at a time, on the URL session's callback queue.
class PotaFeed
{
public:
    PotaFeed(FeedHost& host, Log& log) : host_(host), log_(log) {}

    /// Forwards what is new in `body`, the oldest first and those without a readable time last, in the
    /// answer's order where times are equal; with `showSkimmers` also what automatic receivers heard. What is
    /// no array is told to the log and changes nothing.
    void parsePotaData(const QByteArray& body, bool showSkimmers);

    /// What the spots that were forwarded are known by, see idOf().
    [[nodiscard]] const QSet<QJsonValue>& remembered() const { return _pota_objects; }

private:
    /// An element of an answer that is to be forwarded at its turn.
    struct Candidate {
        /// The last of all times when there is none that can be read.
        TimePoint time;
        qsizetype index;
    };

    /// What of `spots` was not forwarded before and is wanted, the oldest first.
    [[nodiscard]] std::vector<Candidate> oldestFirst(const QJsonArray& spots, bool showSkimmers) const;

    FeedHost& host_;
    Log& log_;
    QSet<QJsonValue> _pota_objects;
};

} // namespace spotwell
