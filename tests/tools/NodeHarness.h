#pragma once

#include "tests/fakes/FakeTime.h"
#include "tools/spotwell-simulator/NodeServer.h"

#include <QCoreApplication>
#include <QJsonDocument>
#include <QJsonObject>
#include <gtest/gtest.h>

#include <arpa/inet.h>
#include <array>
#include <chrono>
#include <functional>
#include <list>
#include <netinet/in.h>
#include <sys/socket.h>
#include <unistd.h>
#include <vector>

namespace spotwell::simulator
{

/// Runs the event loop until `condition` holds; false when it does not within `deadline`.
inline bool waitUntil(const std::function<bool()>& condition, Seconds deadline = Seconds{20})
{
    const auto start = Moment::clock::now();
    while (!condition()) {
        if (Moment::clock::now() - start > deadline)
            return false;
        QCoreApplication::processEvents(QEventLoop::AllEvents);
        usleep(200);
    }
    return true;
}

/// A client that does what the test says, in the words of a dialogue. Each step waits for what it needs.
class ScriptedClient
{
public:
    /// `receiveBuffer` above 0 makes the system keep no more than about that many unread bytes.
    explicit ScriptedClient(std::uint16_t port, int receiveBuffer = 0)
    {
        descriptor_ = socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
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

    /// The node's next bytes are exactly these.
    void hears(const QByteArray& expected)
    {
        waitUntil([&] {
            read();
            return heard_.size() >= expected.size() || ended_;
        });
        EXPECT_EQ(heard_.left(expected.size()).toStdString(), expected.toStdString());
        heard_.remove(0, expected.size());
    }
    /// The node ended its side, orderly, and said nothing before that.
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
        EXPECT_EQ(send(descriptor_, bytes.constData(), static_cast<std::size_t>(bytes.size()), MSG_NOSIGNAL),
                  bytes.size());
    }
    /// Says it when `delay` has passed.
    void saysAfter(Seconds delay, const QByteArray& bytes) const
    {
        const auto start = Moment::clock::now();
        waitUntil([&] { return Moment::clock::now() - start >= delay; });
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

    /// Takes what has come, one entry for each read that found something.
    void read()
    {
        std::array<char, 65536> buffer;
        const ssize_t count = recv(descriptor_, buffer.data(), buffer.size(), MSG_DONTWAIT);
        if (count > 0) {
            heard_.append(buffer.data(), count);
            reads.push_back(QByteArray{buffer.data(), count});
        } else if (count == 0 || (errno != EAGAIN && errno != EINTR)) {
            ended_ = true;
            reset_ = count < 0;
        }
    }
    [[nodiscard]] const QByteArray& heard() const { return heard_; }
    QByteArray takeHeard() { return std::exchange(heard_, {}); }
    [[nodiscard]] bool ended() const { return ended_; }

    std::vector<QByteArray> reads;

private:
    int descriptor_ = -1;
    QByteArray heard_;
    bool ended_ = false;
    bool reset_ = false;
};

/// A node that plays the scenario written in the test, and its report.
class NodeTest : public testing::Test
{
protected:
    void plays(const QByteArray& text, ConnectionLimits limits = {})
    {
        auto parsed = parseScenario(text, QStringLiteral("test.scenario"));
        const auto* error = std::get_if<ScenarioError>(&parsed);
        ASSERT_EQ(error, nullptr) << qPrintable(error->text());
        node_ = std::make_unique<NodeServer>(
            std::get<Scenario>(std::move(parsed)), clock_, report_, [this] { ++sessionsOver_; }, limits);
        ASSERT_EQ(node_->listen({}), QString{});
    }
    ScriptedClient& connects(int receiveBuffer = 0)
    {
        return clients_.emplace_back(node_->port(), receiveBuffer);
    }

    /// Waits until `count` connections have ended.
    void ends(int count = 1)
    {
        EXPECT_TRUE(waitUntil([&] { return sessionsOver_ >= count; }));
    }
    [[nodiscard]] std::vector<QJsonObject> events(const QString& name) const
    {
        std::vector<QJsonObject> found;
        for (const QJsonObject& event : events_) {
            if (event[u"event"].toString() == name)
                found.push_back(event);
        }
        return found;
    }
    /// Waits until `count` events of that name were reported.
    void waitsFor(const QString& name, std::size_t count)
    {
        EXPECT_TRUE(waitUntil([&] { return events(name).size() >= count; })) << qPrintable(name);
    }
    /// The one failed check: where, what and why.
    [[nodiscard]] QString failure() const
    {
        QString text;
        for (const QJsonObject& event : events(QStringLiteral("check"))) {
            if (event[u"result"].toString() == u"failed")
                text += event[u"at"].toString() + u' ' + event[u"what"].toString() + u": "_qs +
                        event[u"why"].toString();
        }
        return text;
    }
    [[nodiscard]] int passed() const { return node_->passedChecks(); }
    [[nodiscard]] int failed() const { return node_->failedChecks(); }
    [[nodiscard]] QString farewell() const
    {
        const auto all = events(QStringLiteral("disconnect"));
        return all.empty() ? QString{} : all.back()[u"by"].toString() + u' ' + all.back()[u"how"].toString();
    }

    FakeClock clock_;
    std::vector<QJsonObject> events_;
    Report report_{
        [this](const QByteArray& line) { events_.push_back(QJsonDocument::fromJson(line).object()); }};
    int sessionsOver_ = 0;
    std::unique_ptr<Server> node_;
    std::list<ScriptedClient> clients_;
};

} // namespace spotwell::simulator
