// SPDX-FileCopyrightText: 2026 the spotwell developers
// SPDX-License-Identifier: MIT

#include "tools/spotwell-bridge/BusDriver.h"

#include <poll.h>
#include <utility>

namespace spotwell::bridge
{

namespace
{

using namespace std::chrono_literals;

/// How many messages are taken in, and for how long, before sockets and timers get their turn.
constexpr int messagesAtOnce = 64;
constexpr auto longestTurn = 10ms;
constexpr auto retryInterval = 1s;

} // namespace

BusDriver::BusDriver(BusConnection& connection, Handlers handlers)
    : connection_(connection),
      handlers_(std::move(handlers)),
      due_([this] { turn(); }),
      again_([this] { retry(); })
{
}

bool BusDriver::start()
{
    if (!connection_.open())
        return false;
    handlers_.begun();
    arm();
    return true;
}

void BusDriver::update()
{
    if (connection_.get() != nullptr)
        arm();
}

void BusDriver::stop()
{
    disarm();
    again_.cancel();
}

void BusDriver::turn()
{
    if (connection_.process(messagesAtOnce, Alarm::Clock::now() + longestTurn))
        return arm();
    disarm();
    again_.set(Alarm::Clock::now() + retryInterval);
    handlers_.lost();
}

void BusDriver::retry()
{
    if (!start())
        again_.set(Alarm::Clock::now() + retryInterval);
}

/// The connection says anew after each turn what it waits for.
void BusDriver::arm()
{
    const BusConnection::Interest interest = connection_.interest();
    if (!readable_ || readable_->socket() != interest.descriptor)
        watch(interest.descriptor);
    readable_->setEnabled((interest.events & POLLIN) != 0);
    writable_->setEnabled((interest.events & POLLOUT) != 0);
    if (interest.due == BusConnection::Deadline::max())
        due_.cancel();
    else
        due_.set(interest.due);
}

void BusDriver::disarm()
{
    // Perhaps out of one of their own signals.
    for (auto* notifier : {&readable_, &writable_}) {
        if (QSocketNotifier* const old = notifier->release()) {
            old->setEnabled(false);
            old->deleteLater();
        }
    }
    due_.cancel();
}

void BusDriver::watch(int descriptor)
{
    disarm();
    readable_ = std::make_unique<QSocketNotifier>(descriptor, QSocketNotifier::Read);
    writable_ = std::make_unique<QSocketNotifier>(descriptor, QSocketNotifier::Write);
    for (QSocketNotifier* notifier : {readable_.get(), writable_.get()})
        QObject::connect(notifier, &QSocketNotifier::activated, notifier, [this] { turn(); });
}

} // namespace spotwell::bridge
