#pragma once

#include "tests/fakes/FakeServices.h"
#include "tests/fakes/FakeTime.h"
#include "tests/fakes/Printers.h"
#include "tests/fakes/WaitUntil.h"
#include "tests/tools/bridge/telnet/Bytes.h"
#include "tools/spotwell-bridge/telnet/SpotNode.h"

#include <QByteArray>
#include <gtest/gtest.h>

#include <algorithm>
#include <arpa/inet.h>
#include <array>
#include <cerrno>
#include <list>
#include <memory>
#include <netinet/in.h>
#include <sys/ioctl.h>
#include <sys/socket.h>
#include <unistd.h>
#include <utility>

namespace spotwell::bridge
{

/// A telnet client that does what the test says. Each step that waits runs the event loop, the node's too.
class TelnetClient
{
public:
    /// `receiveBuffer` above 0 makes the system keep no more than about that many unread bytes.
    explicit TelnetClient(std::uint16_t port, int receiveBuffer = 0)
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
    ~TelnetClient() { leaves(); }
    TelnetClient(const TelnetClient&) = delete;
    TelnetClient& operator=(const TelnetClient&) = delete;

    /// The node's next bytes are exactly these.
    void hears(const QByteArray& expected)
    {
        waitUntil([&] {
            read();
            return heard_.size() >= expected.size() || ended_;
        });
        EXPECT_EQ(heard_.left(expected.size()), expected);
        heard_.remove(0, expected.size());
    }
    /// The node's next bytes up to the first of these, which are among them.
    QByteArray hearsUpTo(const QByteArray& last)
    {
        EXPECT_TRUE(waitUntil([&] { return read(), heard_.contains(last) || ended_; }));
        const qsizetype at = heard_.indexOf(last);
        EXPECT_GE(at, 0) << last.constData();
        const QByteArray text = heard_.left(at + last.size());
        heard_.remove(0, text.size());
        return text;
    }
    /// The node ended its side, orderly, and said nothing before that.
    void hearsTheEnd()
    {
        EXPECT_TRUE(waitUntil([&] { return read(), ended_; }));
        EXPECT_FALSE(reset_);
        EXPECT_EQ(heard_, "");
    }
    void isReset()
    {
        EXPECT_TRUE(waitUntil([&] { return read(), ended_; }));
        EXPECT_TRUE(reset_);
    }
    void says(const QByteArray& bytes)
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
    /// Says its callsign and hears everything up to the prompt.
    void logsIn(const QByteArray& callsign)
    {
        says(callsign + "\r\n");
        hearsUpTo(" spotwell >\r\n");
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

    /// Takes what has come, up to `most` bytes.
    void read(std::size_t most = 65536)
    {
        std::array<char, 65536> buffer;
        const ssize_t count = recv(descriptor_, buffer.data(), std::min(most, buffer.size()), MSG_DONTWAIT);
        if (count > 0) {
            heard_.append(buffer.data(), count);
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
    QByteArray takeHeard() { return std::exchange(heard_, {}); }
    [[nodiscard]] bool ended() const { return ended_; }

private:
    int descriptor_;
    QByteArray heard_;
    bool ended_ = false;
    bool reset_ = false;
};

/// A node on loopback whose times move when the test says so.
class SpotNodeTest : public testing::Test
{
protected:
    SpotNodeTest() { limits_.look = std::chrono::milliseconds{2}; }

    /// Begins to listen with `limits_` as they are now.
    void listens()
    {
        node_ = std::make_unique<SpotNode>(clock_, log_, limits_, [this] { return ++timesRead_, now_; });
        ASSERT_EQ(node_->listen(QHostAddress(QHostAddress::LocalHost), 0), QString{});
    }
    TelnetClient& connects(int receiveBuffer = 0)
    {
        return clients_.emplace_back(node_->port(), receiveBuffer);
    }
    TelnetClient& logsIn(const QByteArray& callsign, int receiveBuffer = 0)
    {
        TelnetClient& client = connects(receiveBuffer);
        client.hears("login: ");
        client.logsIn(callsign);
        return client;
    }
    /// A spot line of the usual form.
    static QString spot(int number)
    {
        return QStringLiteral("DX de N0TEST:    14025.0  K%1  %2 1428Z")
            .arg(number, -10)
            .arg(QStringLiteral("CQ"), -30);
    }
    static QByteArray sent(int number) { return spot(number).toUtf8() + "\r\n"; }
    /// Waits until the node has looked at the clock several times more.
    void looksAtTheClock()
    {
        const int before = timesRead_;
        EXPECT_TRUE(waitUntil([&] { return timesRead_ >= before + 3; }));
    }
    void logs(const QString& line)
    {
        EXPECT_TRUE(waitUntil([&] { return log_.lines.contains(line); })) << qPrintable(line);
    }

    const QByteArray prompt_ = "N0CALL de SPOTWELL 03-Feb-2027 0905Z spotwell >\r\n";
    FakeClock clock_;
    FakeLog log_;
    std::chrono::steady_clock::time_point now_{std::chrono::hours{24}};
    int timesRead_ = 0;
    NodeLimits limits_;
    std::unique_ptr<SpotNode> node_;
    std::list<TelnetClient> clients_;
};

} // namespace spotwell::bridge
