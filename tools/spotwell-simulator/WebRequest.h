// SPDX-FileCopyrightText: 2026 the spotwell developers
// SPDX-License-Identifier: MIT

#pragma once

#include <QByteArray>
#include <QByteArrayView>
#include <QString>

#include <optional>
#include <utility>
#include <vector>

namespace spotwell::simulator
{

/// A request as HTTP/1.x says it (RFC 9112).
struct WebRequest {
    /// Bytes of a request's head, and of its body, at most.
    static constexpr qsizetype longestHead = 1 << 14;
    static constexpr qsizetype longestBody = 1 << 15;

    QByteArray method;
    QByteArray target;
    /// The number behind "HTTP/1.".
    int minorVersion = 1;
    /// Names as they came, values without the blanks around them.
    std::vector<std::pair<QByteArray, QByteArray>> headers;
    /// Bytes in all, the body included.
    qsizetype size = 0;

    /// What the first header line of that name says, whatever its case; absent when there is none.
    [[nodiscard]] std::optional<QByteArray> header(const QByteArray& name) const;
    /// Whether the client wants the connection to stay open.
    [[nodiscard]] bool keepsAlive() const;
    /// Method and target, a blank between them.
    [[nodiscard]] QByteArray line() const { return method + ' ' + target; }
};

/// The first request in what has come so far.
struct ReadRequest {
    /// Absent while it is not whole, and when it is malformed.
    std::optional<WebRequest> request;
    /// Why it is malformed; null when it is not.
    QString fault;
};

ReadRequest readRequest(const QByteArray& bytes);

} // namespace spotwell::simulator
