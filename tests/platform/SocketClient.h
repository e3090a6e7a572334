// SPDX-FileCopyrightText: 2026 the spotwell developers
// SPDX-License-Identifier: MIT

#pragma once

#include "platform/linux/PosixSocketStreams.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <functional>
#include <string>
#include <vector>

namespace spotwell
{

inline const QString loopback = QStringLiteral("127.0.0.1");

/// Keeps the events of a pair, and reads what comes unless told otherwise.
struct SocketClient final : StreamDelegate {
    explicit SocketClient(std::uint32_t port, const QString& host = loopback)
        : pair(streams.createPairWithSocketToHost(host, port))
    {
        pair.input->setDelegate(this);
        pair.input->open();
        pair.output->setDelegate(this);
        pair.output->open();
    }

    void handleEvent(Stream& stream, int eventCode) override
    {
        const bool isInput = &stream == pair.input.get();
        EXPECT_TRUE(isInput || &stream == pair.output.get());
        events.push_back((isInput ? "in " : "out ") + std::to_string(eventCode));
        if (eventCode == static_cast<int>(StreamEvent::errorOccurred))
            error = stream.errorDescription();
        if (onEvent)
            onEvent(eventCode);
        if (pair.input && isInput && eventCode == static_cast<int>(StreamEvent::hasBytesAvailable) && reads)
            read(readSize);
    }
    std::ptrdiff_t read(std::size_t size)
    {
        std::vector<std::byte> buffer(size);
        const std::ptrdiff_t n = pair.input->read(buffer);
        if (n > 0)
            received.append(reinterpret_cast<const char*>(buffer.data()), n);
        readCounts.push_back(n);
        return n;
    }
    bool saw(const std::string& event) const { return std::count(events.begin(), events.end(), event) > 0; }
    void close()
    {
        pair.output->close();
        pair.output.reset();
        pair.input->close();
        pair.input.reset();
    }
    void write(const QByteArray& text)
    {
        EXPECT_EQ(pair.output->write({text.constData(), static_cast<std::size_t>(text.size())}), text.size());
    }

    PosixSocketStreams streams;
    StreamPair pair;
    std::vector<std::string> events;
    std::vector<std::ptrdiff_t> readCounts;
    QByteArray received;
    QString error;
    bool reads = true;
    std::size_t readSize = 16383;
    std::function<void(int)> onEvent;
};

} // namespace spotwell
