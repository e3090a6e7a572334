// SPDX-FileCopyrightText: 2026 the spotwell developers
// SPDX-License-Identifier: MIT

#include "tools/spotwell-bridge/telnet/SpotNode.h"

#include "tools/spotwell-bridge/telnet/Listener.h"
#include "tools/spotwell-bridge/telnet/NodeClient.h"
#include "tools/spotwell-bridge/telnet/NodeTexts.h"
#include "tools/spotwell-bridge/telnet/OpenFiles.h"
#include "tools/spotwell-bridge/telnet/RecentLines.h"
#include "tools/spotwell-bridge/telnet/SentLines.h"

#include <QTimer>

#include <algorithm>
#include <list>
#include <sys/socket.h>
#include <unistd.h>
#include <utility>

namespace spotwell::bridge
{

class SpotNode::Implementation
{
public:
    Implementation(const Clock& clock, Log& log, const NodeLimits& limits, MonotonicClock monotonic)
        : limits_(limits),
          log_(log),
          monotonic_(std::move(monotonic)),
          lines_(limits),
          setting_{lines_, clock, monotonic_, limits_, log},
          listener_(
              limits.acceptPause, [this](int descriptor) { arrived(descriptor); },
              [this](const QString& reason) { acceptFailed(reason); })
    {
        look_.setInterval(limits_.look);
        QObject::connect(&look_, &QTimer::timeout, &look_, [this] { look(); });
    }

    QString listen(const QHostAddress& address, std::uint16_t port);
    [[nodiscard]] std::uint16_t port() const { return listener_.port(); }
    void send(const QString& line);
    void stop();

private:
    void arrived(int descriptor);
    bool makeRoom();
    void turnAway(int descriptor);
    void acceptFailed(const QString& reason);
    void clientChanged(const NodeClient& client);
    /// Takes the step at the end of this turn of the event loop, once however often it is asked for.
    void atEndOfTurn(bool& due, void (Implementation::*step)());
    /// Sends what this turn of the event loop has brought, together.
    void flush();
    void look();
    /// Destroys the clients that are over; not at once, for it may be their own calls that ended them.
    void clear();

    const NodeLimits limits_;
    Log& log_;
    const MonotonicClock monotonic_;
    SentLines lines_;
    RecentLines recent_;
    // depends-on: everything above
    const NodeClient::Setting setting_;
    std::size_t mostClients_ = 1;
    // depends-on: setting_
    std::list<NodeClient> clients_;
    bool full_ = false;
    bool flushDue_ = false;
    bool clearDue_ = false;
    /// Runs while there is a time to be watched.
    QTimer look_;
    // depends-on: everything above
    Listener listener_;
};

QString SpotNode::Implementation::listen(const QHostAddress& address, std::uint16_t port)
{
    mostClients_ = clientsWithin(limits_.clients, raiseOpenFileLimit());
    return listener_.listen(address, port);
}

void SpotNode::Implementation::send(const QString& line)
{
    const QByteArray bytes = line.toUtf8() + "\r\n";
    if (!recent_.add(bytes, monotonic_()))
        return;
    lines_.add(bytes);
    atEndOfTurn(flushDue_, &Implementation::flush);
}

void SpotNode::Implementation::stop()
{
    listener_.close();
    flush();
    for (NodeClient& client : clients_)
        client.dismiss();
}

void SpotNode::Implementation::arrived(int descriptor)
{
    if (clients_.size() >= mostClients_ && !makeRoom()) {
        turnAway(descriptor);
        return;
    }
    full_ = false;
    clients_.emplace_back(descriptor, setting_, [this](const NodeClient& client) { clientChanged(client); });
    clients_.back().start();
}

/// Drops the client that has been silent longest, if one has been for long enough.
bool SpotNode::Implementation::makeRoom()
{
    const auto now = monotonic_();
    return std::any_of(clients_.begin(), clients_.end(),
                       [now](NodeClient& client) { return client.giveWay(now); });
}

void SpotNode::Implementation::turnAway(int descriptor)
{
    if (!std::exchange(full_, true))
        log_.line(QStringLiteral("telnet: %1 clients are connected, further ones are turned away")
                      .arg(clients_.size()));
    const QByteArray text = noRoom();
    (void)::send(descriptor, text.constData(), static_cast<std::size_t>(text.size()),
                 MSG_NOSIGNAL | MSG_DONTWAIT);
    ::close(descriptor);
}

void SpotNode::Implementation::acceptFailed(const QString& reason)
{
    log_.line(QStringLiteral("telnet: no further client can be accepted for now: %1").arg(reason));
}

void SpotNode::Implementation::clientChanged(const NodeClient& client)
{
    if (client.isOver())
        atEndOfTurn(clearDue_, &Implementation::clear);
    else if (client.isWatched() && !look_.isActive())
        look_.start();
}

void SpotNode::Implementation::atEndOfTurn(bool& due, void (Implementation::*step)())
{
    if (std::exchange(due, true))
        return;
    QMetaObject::invokeMethod(
        &look_,
        [this, &due, step] {
            due = false;
            (this->*step)();
        },
        Qt::QueuedConnection);
}

void SpotNode::Implementation::flush()
{
    for (NodeClient& client : clients_)
        client.wake();
}

void SpotNode::Implementation::look()
{
    const auto now = monotonic_();
    bool watched = false;
    for (NodeClient& client : clients_) {
        client.look(now);
        watched = watched || client.isWatched();
    }
    if (!watched)
        look_.stop();
}

void SpotNode::Implementation::clear()
{
    clients_.remove_if([](const NodeClient& client) { return client.isOver(); });
}

SpotNode::SpotNode(const Clock& clock, Log& log)
    : SpotNode(clock, log, NodeLimits{}, [] { return std::chrono::steady_clock::now(); })
{
}

SpotNode::SpotNode(const Clock& clock, Log& log, const NodeLimits& limits, MonotonicClock monotonic)
    : implementation_(std::make_unique<Implementation>(clock, log, limits, std::move(monotonic)))
{
}

SpotNode::~SpotNode() = default;

QString SpotNode::listen(const QHostAddress& address, std::uint16_t port)
{
    return implementation_->listen(address, port);
}

std::uint16_t SpotNode::port() const
{
    return implementation_->port();
}

void SpotNode::send(const QString& line)
{
    implementation_->send(line);
}

void SpotNode::stop()
{
    implementation_->stop();
}

} // namespace spotwell::bridge
