// SPDX-FileCopyrightText: 2026 the spotwell developers
// SPDX-License-Identifier: MIT

#pragma once

#include "platform/Time.h"
#include "tests/support/WaitUntil.h"

#include <QByteArray>
#include <gtest/gtest.h>

#include <algorithm>
#include <arpa/inet.h>
#include <array>
#include <cerrno>
#include <netinet/in.h>
#include <sys/ioctl.h>
#include <sys/socket.h>
#include <unistd.h>
#include <utility>
#include <vector>

namespace spotwell
{

/// A client on loopback that does what the test says, in the words of a dialogue. Each step waits for what it
/// needs, and runs the event loop meanwhile, the other side's too.
class ScriptedClient
{
public:
    /// `receiveBuffer` above 0 makes the system keep no more than about that many unread bytes.
    explicit ScriptedClient(std::uint16_t port, int receiveBuffer = 0)
        : descriptor_(socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0))
    {
        if (receiveBuffer > 0)
            setsockopt(descriptor_, SOL_SOCKET, SO_RCVBUF, &receiveBuffer, sizeof receiveBuffer);
        sockaddr_in address{};
        address.sin_family = AF_INET;
        address.sin_port = htons(port);
        address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
        EXPECT_EQ(connect(descriptor_, reinterpret_cast<sockaddr*>(&address), sizeof address), 0);
    }
    ~ScriptedClient() { leaves(); }
    ScriptedClient(const ScriptedClient&) = delete;
    ScriptedClient& operator=(const ScriptedClient&) = delete;

    /// The other side's next bytes are exactly these.
    void hears(const QByteArray& expected)
    {
        waitUntil([&] {
            read();
            return heard_.size() >= expected.size() || ended_;
        });
        EXPECT_EQ(heard_.left(expected.size()).toStdString(), expected.toStdString());
        heard_.remove(0, expected.size());
    }
    /// The other side's next bytes up to the first of these, which are among them.
    QByteArray hearsUpTo(const QByteArray& last)
    {
        EXPECT_TRUE(waitUntil([&] { return read(), heard_.contains(last) || ended_; }));
        const qsizetype at = heard_.indexOf(last);
        EXPECT_GE(at, 0) << last.constData();
        const QByteArray text = heard_.left(at + last.size());
        heard_.remove(0, text.size());
        return text;
    }
    /// The other side ended its direction, orderly, and said nothing before that.
    void hearsTheEnd()
    {
        EXPECT_TRUE(waitUntil([&] { return read(), ended_; }));
        EXPECT_FALSE(reset_);
        EXPECT_TRUE(heard_.isEmpty()) << heard_.left(200).toStdString();
    }
    void isReset()
    {
        EXPECT_TRUE(waitUntil([&] { return read(), ended_; }));
        EXPECT_TRUE(reset_);
    }
    void says(const QByteArray& bytes) const
    {
        qsizetype said = 0;
        EXPECT_TRUE(waitUntil([&] { return said += saysNow(bytes.sliced(said)), said == bytes.size(); }));
    }
    /// Says what the connection takes at once; how much that was.
    qsizetype saysNow(const QByteArray& bytes) const
    {
        const ssize_t count = send(descriptor_, bytes.constData(), static_cast<std::size_t>(bytes.size()),
                                   MSG_NOSIGNAL | MSG_DONTWAIT);
        return count > 0 ? count : 0;
    }
    /// Says it when `delay` has passed.
    void saysAfter(Seconds delay, const QByteArray& bytes) const
    {
        const auto start = std::chrono::steady_clock::now();
        waitUntil([&] { return std::chrono::steady_clock::now() - start >= delay; });
        says(bytes);
    }
    void endsItsSide() const { shutdown(descriptor_, SHUT_WR); }
    void leaves()
    {
        if (descriptor_ >= 0)
            ::close(std::exchange(descriptor_, -1));
    }
    void breaksAway()
    {
        const linger atOnce{1, 0};
        setsockopt(descriptor_, SOL_SOCKET, SO_LINGER, &atOnce, sizeof atOnce);
        leaves();
    }

    /// Takes what has come, up to `most` bytes; one entry of `reads` each time there was something.
    void read(std::size_t most = 65536)
    {
        std::array<char, 65536> buffer;
        const ssize_t count = recv(descriptor_, buffer.data(), std::min(most, buffer.size()), MSG_DONTWAIT);
        if (count > 0) {
            heard_.append(buffer.data(), count);
            reads.push_back(QByteArray{buffer.data(), count});
        } else if (count == 0 || (errno != EAGAIN && errno != EINTR)) {
            ended_ = true;
            reset_ = count < 0;
        }
    }
    /// How many bytes wait to be read.
    [[nodiscard]] int unread() const
    {
        int count = 0;
        EXPECT_EQ(ioctl(descriptor_, FIONREAD, &count), 0);
        return count;
    }
    [[nodiscard]] const QByteArray& heard() const { return heard_; }
    QByteArray takeHeard() { return std::exchange(heard_, {}); }
    [[nodiscard]] bool ended() const { return ended_; }

    std::vector<QByteArray> reads;

private:
    int descriptor_;
    QByteArray heard_;
    bool ended_ = false;
    bool reset_ = false;
};

} // namespace spotwell
