// SPDX-FileCopyrightText: 2026 the spotwell developers
// SPDX-License-Identifier: MIT

#pragma once

#include "feeds/FeedHost.h"
#include "platform/Log.h"

#include <QByteArray>
#include <QJsonValue>
#include <QSet>

namespace spotwell
{

/// Turns the answers of the DXSummit service (a JSON array of spots) into spots.
///
/// One parse at a time, on the URL session's callback queue.
class DxSummitFeed
{
public:
    DxSummitFeed(FeedHost& host, Log& log) : host_(host), log_(log) {}

    /// Forwards what is new in `body`, from its last element to its first; with `dxsExclusive` only the spots
    /// that were given to the service itself, whose spotter ends with "-@". What is no array is told to the
    /// log and changes nothing.
    void parseDxSummitData(const QByteArray& body, bool dxsExclusive);

    /// What all spots that were seen are known by, forwarded or not, see idOf().
    [[nodiscard]] const QSet<QJsonValue>& remembered() const { return _dxsummit_objects; }

private:
    FeedHost& host_;
    Log& log_;
    QSet<QJsonValue> _dxsummit_objects;
};

} // namespace spotwell
