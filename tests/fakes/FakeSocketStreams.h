// SPDX-FileCopyrightText: 2026 the spotwell developers
// SPDX-License-Identifier: MIT

#pragma once

#include "platform/SocketStreams.h"
#include "tests/fakes/Note.h"

#include <QByteArray>
#include <QStringList>

#include <algorithm>
#include <cstring>
#include <deque>
#include <memory>
#include <utility>
#include <vector>

namespace spotwell
{

/// What a pair of fake streams shares with the test; outlives the streams.
struct FakeConnection {
    QString host;
    std::uint32_t port = 0;
    /// "input.open", "output.close", ... in the order the calls came.
    QStringList calls;
    /// Each element is what one read gives; empty for the end.
    std::deque<QByteArray> toRead;
    /// When set, the next read answers with it.
    std::ptrdiff_t readError = 0;
    QByteArray written;
    bool spaceAvailable = true;
    /// The most bytes one write takes.
    std::ptrdiff_t writeLimit = 1 << 20;
    QString error;
    bool held = false;
    StreamDelegate* inputDelegate = nullptr;
    StreamDelegate* outputDelegate = nullptr;
    InputStream* input = nullptr;
    OutputStream* output = nullptr;

    void inputEvent(StreamEvent event) { inputEvent(static_cast<int>(event)); }
    void inputEvent(int code)
    {
        if (inputDelegate)
            inputDelegate->handleEvent(*input, code);
    }
    void outputEvent(StreamEvent event) { outputEvent(static_cast<int>(event)); }
    void outputEvent(int code)
    {
        if (outputDelegate)
            outputDelegate->handleEvent(*output, code);
    }
    /// Lets the session read `bytes` in one read.
    void receive(const QByteArray& bytes)
    {
        toRead.push_back(bytes);
        inputEvent(StreamEvent::hasBytesAvailable);
    }
};

class FakeInputStream final : public InputStream
{
public:
    explicit FakeInputStream(std::shared_ptr<FakeConnection> c) : c_(std::move(c)) { c_->input = this; }
    ~FakeInputStream() override { c_->input = nullptr, c_->inputDelegate = nullptr; }
    FakeInputStream(const FakeInputStream&) = delete;
    FakeInputStream& operator=(const FakeInputStream&) = delete;

    void setDelegate(StreamDelegate* delegate) override
    {
        c_->inputDelegate = delegate;
        c_->calls.append(QStringLiteral("input.setDelegate"));
    }
    void open() override
    {
        c_->calls.append(QStringLiteral("input.open"));
        status_ = StreamStatus::opening;
    }
    void close() override
    {
        c_->calls.append(QStringLiteral("input.close"));
        c_->inputDelegate = nullptr;
        status_ = StreamStatus::closed;
    }
    [[nodiscard]] StreamStatus status() const override { return status_; }
    [[nodiscard]] QString errorDescription() const override { return c_->error; }
    std::ptrdiff_t read(std::span<std::byte> buffer) override
    {
        if (c_->readError != 0)
            return std::exchange(c_->readError, 0);
        if (c_->toRead.empty())
            return 0;
        QByteArray& front = c_->toRead.front();
        const auto n = std::min<std::size_t>(buffer.size(), static_cast<std::size_t>(front.size()));
        std::memcpy(buffer.data(), front.constData(), n);
        front.remove(0, static_cast<qsizetype>(n));
        if (front.isEmpty())
            c_->toRead.pop_front();
        return static_cast<std::ptrdiff_t>(n);
    }
    void holdEvents(bool hold) override { c_->held = hold; }

private:
    std::shared_ptr<FakeConnection> c_;
    StreamStatus status_ = StreamStatus::notOpen;
};

class FakeOutputStream final : public OutputStream
{
public:
    explicit FakeOutputStream(std::shared_ptr<FakeConnection> c) : c_(std::move(c)) { c_->output = this; }
    ~FakeOutputStream() override { c_->output = nullptr, c_->outputDelegate = nullptr; }
    FakeOutputStream(const FakeOutputStream&) = delete;
    FakeOutputStream& operator=(const FakeOutputStream&) = delete;

    void setDelegate(StreamDelegate* delegate) override
    {
        c_->outputDelegate = delegate;
        c_->calls.append(QStringLiteral("output.setDelegate"));
    }
    void open() override
    {
        c_->calls.append(QStringLiteral("output.open"));
        status_ = StreamStatus::opening;
    }
    void close() override
    {
        c_->calls.append(QStringLiteral("output.close"));
        c_->outputDelegate = nullptr;
        status_ = StreamStatus::closed;
    }
    [[nodiscard]] StreamStatus status() const override { return status_; }
    [[nodiscard]] QString errorDescription() const override { return c_->error; }
    [[nodiscard]] bool hasSpaceAvailable() const override { return c_->spaceAvailable; }
    std::ptrdiff_t write(std::span<const char> bytes) override
    {
        const auto n = std::min(c_->writeLimit, static_cast<std::ptrdiff_t>(bytes.size()));
        c_->written.append(bytes.data(), n);
        c_->calls.append(QStringLiteral("write:%1").arg(n));
        return n;
    }

private:
    std::shared_ptr<FakeConnection> c_;
    StreamStatus status_ = StreamStatus::notOpen;
};

/// Makes fake pairs and keeps the test's side of each.
class FakeSocketStreams final : public SocketStreams
{
public:
    StreamPair createPairWithSocketToHost(const QString& host, std::uint32_t port) override
    {
        note(QStringLiteral("streams to ") + host);
        auto connection = std::make_shared<FakeConnection>();
        connection->host = host;
        connection->port = port;
        connections.push_back(connection);
        StreamPair pair;
        if (makeInput)
            pair.input = std::make_unique<FakeInputStream>(connection);
        if (makeOutput)
            pair.output = std::make_unique<FakeOutputStream>(connection);
        return pair;
    }
    /// The newest connection asked for.
    FakeConnection& last() { return *connections.back(); }

    std::vector<std::shared_ptr<FakeConnection>> connections;
    bool makeInput = true;
    bool makeOutput = true;
    Note note = ignore;
};

} // namespace spotwell
