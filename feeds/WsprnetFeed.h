#pragma once

#include "feeds/FeedHost.h"
#include "platform/Log.h"
#include "platform/Time.h"

#include <QByteArray>
#include <QSet>
#include <QString>

namespace spotwell
{

/// Turns the spots page of WSPRnet (an HTML table, a report a row) into spots.
///
/// One parse at a time, on the URL session's callback queue.
class WsprnetFeed
{
public:
    WsprnetFeed(FeedHost& host, const Clock& clock, Log& log) : host_(host), clock_(clock), log_(log) {}

    /// Forwards the reports of the page `body` that are new, from its last row to its first.
    void parseWsprnetData(const QByteArray& body);
    /// Forwards the report in `row`, the text of one table row, unless it was sent before. False when the
    /// program is ending.
    bool parseWsprnetLine(const QString& row);

    /// The rows that were sent.
    [[nodiscard]] const QSet<QString>& remembered() const { return _wsprnet_objects; }

private:
    FeedHost& host_;
    const Clock& clock_;
    Log& log_;
    QSet<QString> _wsprnet_objects;
};

} // namespace spotwell
