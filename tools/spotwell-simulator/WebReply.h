// SPDX-FileCopyrightText: 2026 the spotwell developers
// SPDX-License-Identifier: MIT

#pragma once

#include "platform/Time.h"
#include "tools/spotwell-simulator/WebAnswer.h"
#include "tools/spotwell-simulator/WebFeeds.h"
#include "tools/spotwell-simulator/WebRequest.h"

#include <QByteArray>

#include <optional>
#include <variant>
#include <vector>

namespace spotwell::simulator
{

/// An answer as it goes out.
struct WebReply {
    struct Step {
        std::variant<WebPause, QByteArray, WebFiller> what;
        /// Whether it belongs to the body, which may drip.
        bool isBody = false;
    };

    /// 0 where nothing is said.
    int status = 0;
    std::vector<Step> steps;
    /// The most bytes of a chunk of filler; absent where the body's length is announced. Other bytes of the
    /// body are in chunks already.
    std::optional<int> chunk;
    /// Whether the connection stays open for another request.
    bool keepsOpen = false;
};

/// What `answer` says to `request` at `now`.
WebReply makeReply(const WebAnswer& answer, const WebRequest& request, WebFeeds& feeds, TimePoint now);

/// What a malformed request gets.
QByteArray badRequestReply();

/// The next bytes of a filler of which `left` bytes remain, 1 at least: some 5 KiB of lines, in a chunk of
/// their own of at most `chunk` bytes if that is given.
QByteArray fillerBytes(qint64 left, std::optional<int> chunk, qint64* taken);

/// `body` in the gzip format (RFC 1952).
QByteArray gzipped(const QByteArray& body);

} // namespace spotwell::simulator
