// SPDX-FileCopyrightText: 2026 the spotwell developers
// SPDX-License-Identifier: MIT

#pragma once

#include "tools/spotwell-simulator/Connection.h"

#include <QHostAddress>
#include <QSocketNotifier>
#include <QString>

#include <cstdint>
#include <functional>
#include <list>
#include <memory>

namespace spotwell::simulator
{

/// Where to listen.
struct Endpoint {
    /// An IPv4 address of the loopback network.
    QHostAddress address{QHostAddress::LocalHost};
    /// 0 for any that is free.
    std::uint16_t port = 0;

    bool operator==(const Endpoint&) const = default;
};

/// One scenario at work: listens, gives those who connect what it plays, and counts.
class Server
{
public:
    virtual ~Server();
    Server(const Server&) = delete;
    Server& operator=(const Server&) = delete;

    /// Begins to listen. Null, or the error's description.
    [[nodiscard]] QString listen(const Endpoint& endpoint);
    /// The port it listens on; 0 before listen().
    [[nodiscard]] std::uint16_t port() const { return port_; }
    /// Whether everything in the scenario was played to its end once; what "otherwise" stands for does not
    /// count.
    [[nodiscard]] virtual bool allPlayed() const = 0;
    [[nodiscard]] int passedChecks() const { return passed_; }
    [[nodiscard]] int failedChecks() const { return failed_; }
    /// The connections that are open, in the order they came.
    [[nodiscard]] const std::list<std::unique_ptr<Connection>>& connections() const { return connections_; }
    /// Ends all connections, stops listening and reports the end.
    void stop();

    /// Connections at a time; further ones wait until one ends.
    static constexpr std::size_t mostConnections = 64;

protected:
    /// `clock` and `report` outlive the server. `progressed` is called after each connection's end and
    /// whenever something else that counts was played.
    Server(Scenario scenario, const Clock& clock, const Report& report, std::function<void()> progressed,
           ConnectionLimits limits);

    /// Makes what plays to the client behind the connected, non-blocking socket `descriptor` and takes that
    /// over. `over` is for the connection.
    virtual std::unique_ptr<Connection> makeConnection(int descriptor, int number,
                                                       std::function<void()> over) = 0;
    [[nodiscard]] const Scenario& scenario() const { return scenario_; }
    [[nodiscard]] Connection::Setting setting() const { return {scenario_, clock_, report_, limits_}; }
    [[nodiscard]] int endedConnections() const { return ended_; }
    void noteProgress() const { progressed_(); }

private:
    void accept();
    void clear();

    const Scenario scenario_;
    const Clock& clock_;
    const Report& report_;
    std::function<void()> progressed_;
    const ConnectionLimits limits_;
    int descriptor_ = -1;
    std::uint16_t port_ = 0;
    std::unique_ptr<QSocketNotifier> accepting_;
    std::list<std::unique_ptr<Connection>> connections_;
    int count_ = 0;
    int ended_ = 0;
    int passed_ = 0;
    int failed_ = 0;
};

} // namespace spotwell::simulator
