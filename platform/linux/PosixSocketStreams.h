// SPDX-FileCopyrightText: 2026 the spotwell developers
// SPDX-License-Identifier: MIT

#pragma once

#include "platform/SocketStreams.h"

#include <memory>

namespace spotwell
{

class HostResolver;

/// Stream pairs on non-blocking TCP sockets, driven by Qt's event loop on the main thread.
///
/// Names are resolved on threads of their own. The addresses of a host are tried in the resolver's order,
/// each 250 ms after the one before (RFC 8305, section 5), and the first that answers is kept.
class PosixSocketStreams final : public SocketStreams
{
public:
    PosixSocketStreams();
    ~PosixSocketStreams() override;
    PosixSocketStreams(const PosixSocketStreams&) = delete;
    PosixSocketStreams& operator=(const PosixSocketStreams&) = delete;

    StreamPair createPairWithSocketToHost(const QString& host, std::uint32_t port) override;

private:
    std::shared_ptr<HostResolver> resolver_;
};

} // namespace spotwell
