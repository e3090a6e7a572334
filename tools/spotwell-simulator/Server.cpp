// SPDX-FileCopyrightText: 2026 the spotwell developers
// SPDX-License-Identifier: MIT

#include "tools/spotwell-simulator/Server.h"

#include <QMetaObject>

#include <arpa/inet.h>
#include <cerrno>
#include <cstring>
#include <netinet/in.h>
#include <sys/socket.h>
#include <unistd.h>
#include <utility>

namespace spotwell::simulator
{

Server::Server(Scenario scenario, const Clock& clock, const Report& report, std::function<void()> progressed,
               ConnectionLimits limits)
    : scenario_(std::move(scenario)),
      clock_(clock),
      report_(report),
      progressed_(std::move(progressed)),
      limits_(limits)
{
}

Server::~Server()
{
    accepting_.reset();
    if (descriptor_ >= 0)
        ::close(descriptor_);
}

QString Server::listen(const Endpoint& endpoint)
{
    descriptor_ = socket(AF_INET, SOCK_STREAM | SOCK_NONBLOCK | SOCK_CLOEXEC, 0);
    const int yes = 1;
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_port = htons(endpoint.port);
    address.sin_addr.s_addr = htonl(endpoint.address.toIPv4Address());
    socklen_t length = sizeof address;
    auto* anyAddress = reinterpret_cast<sockaddr*>(&address);
    if (descriptor_ < 0 || setsockopt(descriptor_, SOL_SOCKET, SO_REUSEADDR, &yes, sizeof yes) != 0 ||
        bind(descriptor_, anyAddress, length) != 0 || ::listen(descriptor_, SOMAXCONN) != 0 ||
        getsockname(descriptor_, anyAddress, &length) != 0) {
        return QStringLiteral("%1:%2: %3")
            .arg(endpoint.address.toString())
            .arg(endpoint.port)
            .arg(QString::fromLocal8Bit(std::strerror(errno)));
    }
    port_ = ntohs(address.sin_port);
    accepting_ = std::make_unique<QSocketNotifier>(descriptor_, QSocketNotifier::Read);
    QObject::connect(accepting_.get(), &QSocketNotifier::activated, accepting_.get(), [this] { accept(); });
    report_.add(Event{"listening", Moment::clock::now()}
                    .with("scenario", scenario_.name)
                    .with("port", qint64{port_}));
    return {};
}

void Server::accept()
{
    while (connections_.size() < mostConnections) {
        const int descriptor = accept4(descriptor_, nullptr, nullptr, SOCK_NONBLOCK | SOCK_CLOEXEC);
        if (descriptor < 0)
            return;
        // A connection ends deep inside its own calls, so it is cleared away later.
        auto over = [this] {
            QMetaObject::invokeMethod(
                accepting_.get(), [this] { clear(); }, Qt::QueuedConnection);
        };
        connections_.push_back(makeConnection(descriptor, ++count_, std::move(over)));
        connections_.back()->start();
    }
    accepting_->setEnabled(false);
}

void Server::clear()
{
    for (auto connection = connections_.begin(); connection != connections_.end();) {
        if (!(*connection)->isOver()) {
            ++connection;
            continue;
        }
        ++ended_;
        passed_ += (*connection)->passedChecks();
        failed_ += (*connection)->failedChecks();
        connection = connections_.erase(connection);
        accepting_->setEnabled(true);
        progressed_();
    }
}

void Server::stop()
{
    if (descriptor_ < 0)
        return;
    for (const auto& connection : connections_)
        connection->abandon();
    clear();
    accepting_.reset();
    ::close(std::exchange(descriptor_, -1));
    report_.add(Event{"done", Moment::clock::now()}
                    .with("scenario", scenario_.name)
                    .with("connections", qint64{count_})
                    .with("passed", qint64{passed_})
                    .with("failed", qint64{failed_}));
}

} // namespace spotwell::simulator
