// SPDX-FileCopyrightText: 2026 the spotwell developers
// SPDX-License-Identifier: MIT

#include "tests/integration/support/NodeFaultFixture.h"

#include <QFile>

#include <array>
#include <csignal>

namespace spotwell
{
namespace
{

using namespace std::chrono_literals;

const QString nodeName = QStringLiteral("node.example");
const QStringList gaveUp{QStringLiteral("DXClusterController:loginTimeoutTimer:") + waitedForData,
                         QStringLiteral("closeTelnetConnection")};

/// A socket that listens on the node's port of another address, or has the node's own backlog full: who
/// connects there waits without an answer.
class BlackHole
{
public:
    /// Where nobody takes a connection.
    BlackHole(int family, std::uint16_t port) : family_(family), port_(port)
    {
        listener_ = ::socket(family_, SOCK_STREAM | SOCK_NONBLOCK | SOCK_CLOEXEC, 0);
        const int reuse = 1;
        (void)::setsockopt(listener_, SOL_SOCKET, SO_REUSEADDR, &reuse, sizeof reuse);
        const auto [address, length] = loopback();
        works_ = ::bind(listener_, reinterpret_cast<const sockaddr*>(&address), length) == 0 &&
                 ::listen(listener_, 0) == 0;
        // One connection waits to be taken; the kernel answers no more than that.
        for (int& filler : fillers_) {
            filler = ::socket(family_, SOCK_STREAM | SOCK_NONBLOCK | SOCK_CLOEXEC, 0);
            (void)::connect(filler, reinterpret_cast<const sockaddr*>(&address), length);
        }
    }
    ~BlackHole()
    {
        for (const int filler : fillers_)
            ::close(filler);
        ::close(listener_);
    }
    BlackHole(const BlackHole&) = delete;
    BlackHole& operator=(const BlackHole&) = delete;

    /// False where the machine does not have that family of addresses.
    [[nodiscard]] bool works() const { return works_; }

private:
    [[nodiscard]] std::pair<sockaddr_storage, socklen_t> loopback() const
    {
        sockaddr_storage address{};
        address.ss_family = static_cast<sa_family_t>(family_);
        if (family_ == AF_INET6) {
            auto* const v6 = reinterpret_cast<sockaddr_in6*>(&address);
            v6->sin6_port = htons(port_);
            v6->sin6_addr = in6addr_loopback;
            return {address, sizeof *v6};
        }
        auto* const v4 = reinterpret_cast<sockaddr_in*>(&address);
        v4->sin_port = htons(port_);
        v4->sin_addr.s_addr = htonl(INADDR_LOOPBACK);
        return {address, sizeof *v4};
    }

    const int family_;
    const std::uint16_t port_;
    int listener_ = -1;
    std::array<int, 3> fillers_{};
    bool works_ = false;
};

class NodeReachTest : public NodeFaultFixture
{
protected:
    /// Starts the program, for which these are the addresses of the node's name.
    void openByName(const QStringList& addresses)
    {
        setAddresses(addresses);
        open(nodeName, {QStringLiteral(KNOWN_NAMES)}, {QStringLiteral("KNOWN_NAMES=") + names()});
    }
    void setAddresses(const QStringList& addresses)
    {
        // Replaced at once: the program may be reading.
        QFile file(names() + QStringLiteral(".new"));
        ASSERT_TRUE(file.open(QIODevice::WriteOnly));
        for (const QString& address : addresses)
            file.write((address + QLatin1Char(' ') + nodeName + QLatin1Char('\n')).toLatin1());
        file.close();
        ASSERT_EQ(std::rename(QFile::encodeName(file.fileName()).constData(),
                              QFile::encodeName(names()).constData()),
                  0);
    }
    [[nodiscard]] QString names() const { return home.filePath(QStringLiteral("names")); }

    void seeError(const QString& reason)
    {
        const QString error = QStringLiteral("NSStreamEventErrorOccurred:[%1]").arg(reason);
        seeClosed(error);
        read({error, QStringLiteral("closeTelnetConnection")});
    }
};

TEST_F(NodeReachTest, aNameThatIsNotFoundIsToldAndTriedAgain)
{
    openByName({});
    seeError(QStringLiteral("Name or service not known"));
    EXPECT_TRUE(staysQuiet());
    clock.step(61s);
    seeReconnection();
    seeError(QStringLiteral("Name or service not known"));
    setAddresses({QStringLiteral("127.0.0.1")});
    comeBack();
    endInOrder();
}

TEST_F(NodeReachTest, aNameServerThatSaysNothingIsGivenUpAfterHalfAMinute)
{
    openByName({QStringLiteral("silent")});
    EXPECT_TRUE(staysQuiet());
    clock.step(31s);
    seeClosed(waitedForData);
    read(gaveUp);
    clock.step(30s);
    seeReconnection();
    EXPECT_EQ(user->isOn(toggleName), true);
    // Of the two that ask, one is not waited for any more.
    setAddresses({QStringLiteral("127.0.0.1")});
    ASSERT_TRUE(node.accept());
    passSpot();
    EXPECT_TRUE(staysQuiet());
    EXPECT_FALSE(node.acceptNow());
    endInOrder();
}

TEST_F(NodeReachTest, aRefusalIsToldAndTriedAgain)
{
    node.stopListening();
    open();
    seeError(QStringLiteral("Connection refused"));
    EXPECT_TRUE(staysQuiet());
    clock.step(61s);
    seeReconnection();
    seeError(QStringLiteral("Connection refused"));
    node.listenAgain();
    comeBack();
    endInOrder();
}

TEST_F(NodeReachTest, aBlackHoleIsGivenUpAfterHalfAMinute)
{
    node.stopListening();
    std::optional<BlackHole> hole(std::in_place, AF_INET, node.port());
    ASSERT_TRUE(hole->works());
    open();
    EXPECT_TRUE(staysQuiet());
    EXPECT_EQ(user->isOn(toggleName), true);
    clock.step(31s);
    seeClosed(waitedForData);
    read(gaveUp);
    hole.reset();
    node.listenAgain();
    clock.step(30s);
    comeBackByItself();
    endInOrder();
}

TEST_F(NodeReachTest, aDeadAddressOfTheNewerKindDoesNotKeepFromTheOther)
{
    const BlackHole hole(AF_INET6, node.port());
    if (!hole.works())
        GTEST_SKIP() << "NOT TESTED: this machine has no IPv6";
    openByName({QStringLiteral("::1"), QStringLiteral("127.0.0.1")});
    ASSERT_TRUE(node.accept());
    logIn();
    passSpot();
    endInOrder();
}

TEST_F(NodeReachTest, aRefusingAddressOfTheNewerKindDoesNotKeepFromTheOther)
{
    openByName({QStringLiteral("::1"), QStringLiteral("127.0.0.1")});
    ASSERT_TRUE(node.accept());
    logIn();
    passSpot();
    endInOrder();
}

TEST_F(NodeReachTest, ofTwoDeadAddressesOneErrorIsTold)
{
    node.stopListening();
    openByName({QStringLiteral("127.0.0.2"), QStringLiteral("127.0.0.1")});
    seeError(QStringLiteral("Connection refused"));
    node.listenAgain();
    comeBack();
    endInOrder();
}

} // namespace
} // namespace spotwell
