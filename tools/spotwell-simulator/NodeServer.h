#pragma once

#include "tools/spotwell-simulator/NodeSession.h"

#include <QSocketNotifier>
#include <QString>

#include <cstdint>
#include <functional>
#include <list>
#include <memory>

namespace spotwell::simulator
{

/// A cluster node: listens on 127.0.0.1 and plays a scenario's sessions to those who connect.
class NodeServer
{
public:
    /// `clock` and `report` outlive the server. `sessionOver` is called after each connection's end.
    NodeServer(Scenario scenario, const Clock& clock, const Report& report, std::function<void()> sessionOver,
               NodeLimits limits = {});
    ~NodeServer();
    NodeServer(const NodeServer&) = delete;
    NodeServer& operator=(const NodeServer&) = delete;

    /// Begins to listen on `port`, 0 for any that is free. Null, or the error's description.
    [[nodiscard]] QString listen(std::uint16_t port);
    /// The port it listens on; 0 before listen().
    [[nodiscard]] std::uint16_t port() const { return port_; }
    /// Whether every session of the scenario was played to its end once; what "otherwise" stands for does not
    /// count.
    [[nodiscard]] bool allPlayed() const;
    [[nodiscard]] int passedChecks() const { return passed_; }
    [[nodiscard]] int failedChecks() const { return failed_; }
    /// The connections that are open, in the order they came.
    [[nodiscard]] const std::list<NodeSession>& sessions() const { return sessions_; }
    /// Ends all connections, stops listening and reports the end.
    void stop();

    /// Connections at a time; further ones wait until one ends.
    static constexpr std::size_t mostConnections = 64;

private:
    void accept();
    void clear();

    const Scenario scenario_;
    const Clock& clock_;
    const Report& report_;
    std::function<void()> sessionOver_;
    const NodeLimits limits_;
    int descriptor_ = -1;
    std::uint16_t port_ = 0;
    std::unique_ptr<QSocketNotifier> accepting_;
    std::list<NodeSession> sessions_;
    int connections_ = 0;
    int played_ = 0;
    int passed_ = 0;
    int failed_ = 0;
};

} // namespace spotwell::simulator
