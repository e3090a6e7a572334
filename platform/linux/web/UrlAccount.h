// SPDX-FileCopyrightText: 2026 the spotwell developers
// SPDX-License-Identifier: MIT

#pragma once

#include "platform/linux/WakeUp.h"

#include <QtGlobal>

#include <cstddef>
#include <memory>
#include <mutex>

namespace spotwell
{

/// What a URL session holds and does at most, whatever the servers send and however long the handlers take.
/// All but the first and the last hold for each host by itself.
struct UrlSessionLimits {
    static constexpr qint64 mebibyte = 1 << 20;

    /// Bytes of one body, decoded.
    qsizetype body = 32 * mebibyte;
    /// Bytes held from which on no transfer is started: bodies that arrive, that wait and that are handled.
    qsizetype start = 16 * mebibyte;
    /// Bytes held beyond which a running transfer ends with an error.
    qsizetype held = start + body;
    /// Bytes held for an answer or error besides its body, from the start of its transfer on.
    qsizetype answer = 512;
    /// Transfers that run at once. Qt's client has no more connections; what runs beyond that would only wait
    /// in line there while its time-outs run.
    std::size_t running = 6;
    /// Bytes of one body that Qt's client keeps until they are taken; then it slows the server down. What is
    /// not taken as it comes, the body of a redirection or refusal, should be smaller.
    qint64 buffer = mebibyte / 2;
    /// Bytes that Qt's client may have read and not handed over; more than `running` buffers.
    qint64 unseen = 4 * mebibyte;
    /// Hosts with a line, an account and a client of their own; all others share one more.
    std::size_t hosts = 8;
};

/// The bytes that a session holds for one host. Callable from any thread.
class UrlAccount
{
public:
    /// `released` is woken when transfers may be started again.
    UrlAccount(const UrlSessionLimits& limits, WakeUp& released) : limits_(limits), released_(released) {}

    /// Whether another transfer may be started.
    [[nodiscard]] bool hasRoomToStart() const;
    /// Books `bytes` of a body; false when that would be more than may be held.
    [[nodiscard]] bool bookBody(qsizetype bytes);
    /// Books what every answer costs, room or not.
    void bookAnswer();
    void releaseBody(qsizetype bytes);
    void releaseAnswer();

private:
    const UrlSessionLimits limits_;
    WakeUp& released_;
    mutable std::mutex mutex_;
    qsizetype held_ = 0;
};

/// What one transfer has booked, from its start until its answer was handled. One thread at a time.
class UrlBooking
{
public:
    UrlBooking() = default;
    explicit UrlBooking(std::shared_ptr<UrlAccount> account);
    UrlBooking(const UrlBooking&) = delete;
    UrlBooking& operator=(const UrlBooking&) = delete;
    UrlBooking(UrlBooking&& other) noexcept;
    UrlBooking& operator=(UrlBooking&& other) noexcept;
    ~UrlBooking();

    /// Books `bytes` more of the body; false when there is no room.
    [[nodiscard]] bool addBody(qsizetype bytes);
    void dropBody();

private:
    std::shared_ptr<UrlAccount> account_;
    qsizetype body_ = 0;
};

} // namespace spotwell
