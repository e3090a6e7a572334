// SPDX-FileCopyrightText: 2026 the spotwell developers
// SPDX-License-Identifier: MIT

#pragma once

#include "tests/fakes/FakeServices.h"
#include "tests/fakes/FakeTime.h"
#include "tests/support/Printers.h"
#include "tests/tools/bridge/telnet/Bytes.h"
#include "tests/tools/simulator/ScriptedClient.h"
#include "tools/spotwell-bridge/telnet/SpotNode.h"

#include <QByteArray>
#include <gtest/gtest.h>

#include <list>
#include <memory>

namespace spotwell::bridge
{

/// A client that knows how to log in.
class TelnetClient : public ScriptedClient
{
public:
    using ScriptedClient::ScriptedClient;

    /// Says its callsign and hears everything up to the prompt.
    void logsIn(const QByteArray& callsign)
    {
        says(callsign + "\r\n");
        hearsUpTo(" spotwell >\r\n");
    }
};

/// A node on loopback whose times move when the test says so.
class SpotNodeFixture : public testing::Test
{
protected:
    SpotNodeFixture() { limits_.look = std::chrono::milliseconds{2}; }

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
