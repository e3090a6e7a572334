// SPDX-FileCopyrightText: 2026 the spotwell developers
// SPDX-License-Identifier: MIT

#pragma once

#include "platform/Time.h"
#include "tools/spotwell-simulator/WebFeeds.h"

#include <QByteArray>
#include <QString>

#include <optional>
#include <variant>
#include <vector>

namespace spotwell::simulator
{

/// Checks a request's method and target, a blank between them.
struct ExpectRequest {
    QByteArray line;
};

/// Checks a header line of the request.
struct ExpectHeader {
    QByteArray name;
    /// Whether it has to be there.
    bool present;
    /// What it has to say; absent for anything.
    std::optional<QByteArray> value;
};

struct WebCheck {
    /// The line of the file it stands on, from 1.
    int line;
    std::variant<ExpectRequest, ExpectHeader> what;
};

/// Says nothing for that long.
struct WebPause {
    Seconds duration;
};

/// A generated list of spots.
struct WebList {
    WebFeed feed;
    int rows;
    int fresh;
};

/// Text without meaning.
struct WebFiller {
    qint64 bytes;
};

/// What a request gets: a list of facts, most of them absent by default, in no order but for the parts.
struct WebAnswer {
    using Part = std::variant<WebPause, QByteArray, WebList, WebFiller>;
    enum class End { keepAlive, close, reset, silence };

    /// The line of the file it begins on, from 1.
    int line = 0;
    std::vector<WebCheck> checks;
    std::optional<int> status;
    QByteArray reason;
    /// Header lines without their ends.
    std::vector<QByteArray> headers;
    /// The pauses and the body, in order.
    std::vector<Part> parts;
    bool gzip = false;
    /// The most bytes of a chunk; absent for a body whose length is announced.
    std::optional<int> chunk;
    /// Bytes of the body a second; absent for as fast as possible.
    std::optional<double> rate;
    /// Bytes at the body's end that are announced but not sent.
    qint64 missing = 0;
    End end = End::keepAlive;
    /// How long the silence lasts; absent for as long as the client stays.
    std::optional<Seconds> silence;

    /// Whether there is anything to send; the mere end of a connection is not.
    [[nodiscard]] bool saysSomething() const;
    [[nodiscard]] bool hasBody() const;
};

} // namespace spotwell::simulator
