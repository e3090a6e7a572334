// SPDX-FileCopyrightText: 2026 the spotwell developers
// SPDX-License-Identifier: MIT

#pragma once

#include <QByteArray>

#include <atomic>
#include <cstdint>
#include <thread>

namespace spotwell
{

/// Brings what comes over TLS to a plain server on loopback, and its answers back. A thread of its own.
class TlsFront
{
public:
    /// `listener` is a listening socket, closed in the end; `certificate` one for the loopbackKey, in PEM.
    TlsFront(int listener, QByteArray certificate, std::uint16_t plainPort);
    ~TlsFront();
    TlsFront(const TlsFront&) = delete;
    TlsFront& operator=(const TlsFront&) = delete;

    /// How many have begun to speak to it.
    [[nodiscard]] int handshakes() const { return handshakes_; }

private:
    void run();

    const int listener_;
    const QByteArray certificate_;
    const std::uint16_t plainPort_;
    const int ending_;
    std::atomic<int> handshakes_ = 0;
    std::thread thread_;
};

} // namespace spotwell
