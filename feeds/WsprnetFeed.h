// SPDX-FileCopyrightText: 2026 the spotwell developers
// SPDX-License-Identifier: MIT

#pragma once

#include "feeds/FeedHost.h"
#include "platform/Log.h"
#include "platform/Time.h"

#include <QByteArray>
#include <QByteArrayView>
#include <QSet>

namespace spotwell
{

/// Turns the spots page of WSPRnet (an HTML table, a report a row) into spots.
///
/// The page is expected to be ASCII; a byte above 127 is taken as Latin-1, so that it costs nothing and rows
/// that differ stay different. One parse at a time, on the URL session's callback queue.
class WsprnetFeed
{
public:
    /// The length in bytes up to which a row is remembered as it is; of a longer one its digest is, so that
    /// no page can make the memory of rows large.
    static constexpr qsizetype longestKept = 4096;

    WsprnetFeed(FeedHost& host, const Clock& clock, Log& log) : host_(host), clock_(clock), log_(log) {}

    /// Forwards the reports of the page `body` that are new, from its last row to its first.
    void parseWsprnetData(const QByteArray& body);
    /// Forwards the report in `row`, the text of one table row, unless it was sent before. False when the
    /// program is ending.
    bool parseWsprnetLine(QByteArrayView row);

    /// The rows that were sent: their text, or the SHA-256 digest in hexadecimal digits of a row longer than
    /// longestKept.
    [[nodiscard]] const QSet<QByteArray>& remembered() const { return _wsprnet_objects; }

private:
    FeedHost& host_;
    const Clock& clock_;
    Log& log_;
    QSet<QByteArray> _wsprnet_objects;
};

} // namespace spotwell
