// SPDX-FileCopyrightText: 2026 the spotwell developers
// SPDX-License-Identifier: MIT

#pragma once

#include "platform/Log.h"
#include "platform/NotificationCenter.h"
#include "platform/linux/WakeUp.h"
#include "platform/linux/bus/BusConnection.h"

#include <chrono>
#include <cstddef>
#include <deque>
#include <mutex>
#include <optional>
#include <thread>

namespace spotwell
{

/// Notifications as signals on the session bus (docs/logger-interface.md).
///
/// post() sends the signal itself, without waiting, while the bus takes what it is given. When it does not,
/// and before there is a connection, post() queues: one worker thread, begun by the first post, connects,
/// takes in what the bus says and sends what waits, in order. The queue grows to its bounds, and then the
/// newest are lost; without a bus all are.
class BusNotificationCenter final : public NotificationCenter
{
public:
    struct Limits {
        /// The most notifications that wait.
        std::size_t count = 16384;
        /// The most memory their texts take, in bytes.
        std::size_t bytes = std::size_t{32} << 20;
        /// How long what was posted may take to leave when the program ends.
        std::chrono::milliseconds ending{200};
    };

    BusNotificationCenter(SessionBus& bus, Log& log, Limits limits);
    BusNotificationCenter(SessionBus& bus, Log& log) : BusNotificationCenter(bus, log, Limits{}) {}
    /// Gives what was posted a chance to leave.
    ~BusNotificationCenter() override;
    BusNotificationCenter(const BusNotificationCenter&) = delete;
    BusNotificationCenter& operator=(const BusNotificationCenter&) = delete;

    void post(const QString& name, const QString& object, const UserInfo& userInfo) override;

private:
    struct Notification {
        QString name;
        QString object;
        UserInfo userInfo;
        std::size_t bytes;
    };

    static std::size_t sizeOf(const Notification& notification);
    static int append(sd_bus_message* message, const Notification& notification);

    /// Sends at once if nothing is before it and the bus takes it. False when it has to wait.
    bool sendNow(const Notification& notification);
    void queue(Notification notification);
    /// With mutex_ held.
    void beginWorker();
    void work();
    /// Sends what waits, as far as the bus takes it. With busMutex_ held.
    void sendWaiting();
    void send(const Notification& notification);
    std::optional<Notification> takeWaiting();
    bool isAnyWaiting();
    void dropWaiting();
    /// When the worker has to be done: never, unless the program is ending.
    BusConnection::Deadline deadline();

    Log& log_;
    const Limits limits_;
    WakeUp wakeUp_;

    std::mutex busMutex_; // held over each use of the connection but the wait; taken before mutex_
    BusConnection connection_;

    std::mutex mutex_; // guards all below
    std::deque<Notification> waiting_;
    std::size_t waitingBytes_ = 0;
    /// How many were lost to a full queue since it was last empty.
    std::size_t lost_ = 0;
    std::optional<BusConnection::Deadline> endBy_;
    std::thread worker_;
};

} // namespace spotwell
