// SPDX-FileCopyrightText: 2026 the spotwell developers
// SPDX-License-Identifier: MIT

#include "platform/linux/PosixSocketStreams.h"

#include "platform/linux/SocketConnection.h"

#include <limits>
#include <utility>

namespace spotwell
{

namespace
{

class SocketInputStream final : public InputStream
{
public:
    explicit SocketInputStream(std::shared_ptr<SocketConnection> connection)
        : connection_(std::move(connection))
    {
        connection_->input.stream = this;
    }
    ~SocketInputStream() override
    {
        close();
        connection_->input = {nullptr, nullptr, StreamStatus::closed};
    }
    SocketInputStream(const SocketInputStream&) = delete;
    SocketInputStream& operator=(const SocketInputStream&) = delete;

    void setDelegate(StreamDelegate* delegate) override { connection_->input.delegate = delegate; }
    void open() override { connection_->open(connection_->input); }
    void close() override { connection_->closeInput(); }
    [[nodiscard]] StreamStatus status() const override { return connection_->input.status; }
    [[nodiscard]] QString errorDescription() const override { return connection_->error(); }
    std::ptrdiff_t read(std::span<std::byte> buffer) override { return connection_->read(buffer); }
    void holdEvents(bool hold) override { connection_->holdInput(hold); }

private:
    std::shared_ptr<SocketConnection> connection_;
};

class SocketOutputStream final : public OutputStream
{
public:
    explicit SocketOutputStream(std::shared_ptr<SocketConnection> connection)
        : connection_(std::move(connection))
    {
        connection_->output.stream = this;
    }
    ~SocketOutputStream() override
    {
        close();
        connection_->output = {nullptr, nullptr, StreamStatus::closed};
    }
    SocketOutputStream(const SocketOutputStream&) = delete;
    SocketOutputStream& operator=(const SocketOutputStream&) = delete;

    void setDelegate(StreamDelegate* delegate) override { connection_->output.delegate = delegate; }
    void open() override { connection_->open(connection_->output); }
    void close() override { connection_->closeOutput(); }
    [[nodiscard]] StreamStatus status() const override { return connection_->output.status; }
    [[nodiscard]] QString errorDescription() const override { return connection_->error(); }
    [[nodiscard]] bool hasSpaceAvailable() const override { return connection_->hasSpaceAvailable(); }
    std::ptrdiff_t write(std::span<const char> bytes) override { return connection_->write(bytes); }

private:
    std::shared_ptr<SocketConnection> connection_;
};

} // namespace

PosixSocketStreams::PosixSocketStreams() : resolver_(std::make_shared<HostResolver>()) {}

PosixSocketStreams::~PosixSocketStreams() = default;

StreamPair PosixSocketStreams::createPairWithSocketToHost(const QString& host, std::uint32_t port)
{
    if (port > std::numeric_limits<std::uint16_t>::max())
        return {};
    const auto connection =
        std::make_shared<SocketConnection>(resolver_, host, static_cast<std::uint16_t>(port));
    return {std::make_unique<SocketInputStream>(connection),
            std::make_unique<SocketOutputStream>(connection)};
}

} // namespace spotwell
