#pragma once

#include "feeds/FeedHost.h"
#include "platform/Log.h"

#include <QByteArray>
#include <QJsonValue>
#include <QSet>

namespace spotwell
{

/// Turns the answers of the Parks on the Air activator service (a JSON array of spots) into spots.
///
/// One parse at a time, on the URL session's callback queue.
class PotaFeed
{
public:
    PotaFeed(FeedHost& host, Log& log) : host_(host), log_(log) {}

    /// Forwards what is new in `body`, the oldest first; with `showSkimmers` also what automatic receivers
    /// heard.
    void parsePotaData(const QByteArray& body, bool showSkimmers);

    /// The ids of the spots that were forwarded.
    [[nodiscard]] const QSet<QJsonValue>& remembered() const { return _pota_objects; }

private:
    FeedHost& host_;
    Log& log_;
    QSet<QJsonValue> _pota_objects;
};

} // namespace spotwell
