// SPDX-FileCopyrightText: 2026 the spotwell developers
// SPDX-License-Identifier: MIT

#include "platform/linux/bus/BusNotificationCenter.h"

#include "platform/linux/bus/BusText.h"

#include <cstdint>
#include <cstdlib>
#include <pthread.h>
#include <system_error>
#include <utility>

namespace spotwell
{

namespace
{

constexpr const char* notificationsPath = "/com/tarnbrooksoftware/DistributedNotifications";
constexpr const char* notificationsInterface = "com.tarnbrooksoftware.DistributedNotifications";

/// What could not be sent anyway need not wait either. Cutting shares the text when it is short enough.
QString cut(const QString& text)
{
    return text.left(static_cast<qsizetype>(maxBusTextBytes));
}

UserInfoValue cut(const UserInfoValue& value)
{
    const auto* text = std::get_if<QString>(&value);
    return text != nullptr ? cut(*text) : value;
}

int appendEntry(sd_bus_message* message, const QString& key, const UserInfoValue& value)
{
    const std::string safeKey = busSafeText(key);
    if (const auto* text = std::get_if<QString>(&value))
        return sd_bus_message_append(message, "{sv}", safeKey.c_str(), "s", busSafeText(*text).c_str());
    if (const auto* number = std::get_if<double>(&value))
        return sd_bus_message_append(message, "{sv}", safeKey.c_str(), "d", *number);
    const std::int64_t microseconds = std::get<TimePoint>(value).time_since_epoch().count();
    return sd_bus_message_append(message, "{sv}", safeKey.c_str(), "x", microseconds);
}

} // namespace

BusNotificationCenter::BusNotificationCenter(SessionBus& bus, Log& log, Limits limits)
    : log_(log), limits_(limits), connection_(bus, "notifications")
{
}

BusNotificationCenter::~BusNotificationCenter()
{
    {
        const std::lock_guard lock(mutex_);
        endBy_ = BusConnection::Clock::now() + limits_.ending;
    }
    wakeUp_.wake();
    if (worker_.joinable())
        worker_.join();
}

void BusNotificationCenter::post(const QString& name, const QString& object, const UserInfo& userInfo)
{
    Notification notification{cut(name), cut(object), {}, 0};
    notification.userInfo.reserve(userInfo.size());
    for (const auto& [key, value] : userInfo)
        notification.userInfo.emplace_back(cut(key), cut(value));
    notification.bytes = sizeOf(notification);
    if (!sendNow(notification))
        queue(std::move(notification));
}

bool BusNotificationCenter::sendNow(const Notification& notification)
{
    // Whoever holds the connection is sending something that came before.
    const std::unique_lock bus(busMutex_, std::try_to_lock);
    if (!bus || isAnyWaiting() || !connection_.isDrained())
        return false;
    send(notification);
    // What the bus did not take at once is the worker's to bring away.
    if (!connection_.isDrained())
        wakeUp_.wake();
    return true;
}

void BusNotificationCenter::queue(Notification notification)
{
    bool firstLoss = false;
    {
        const std::lock_guard lock(mutex_);
        if (waiting_.size() >= limits_.count || notification.bytes > limits_.bytes - waitingBytes_) {
            firstLoss = lost_++ == 0;
        } else {
            waitingBytes_ += notification.bytes;
            waiting_.push_back(std::move(notification));
            // With more than one waiting the worker is awake, or waits for the bus to take them.
            if (waiting_.size() == 1)
                wakeUp_.wake();
        }
        beginWorker();
    }
    if (firstLoss)
        log_.line(QStringLiteral("post: too many notifications wait for the session bus, new ones are lost"));
}

void BusNotificationCenter::beginWorker()
{
    if (worker_.joinable())
        return;
    try {
        worker_ = std::thread(&BusNotificationCenter::work, this);
    } catch (const std::system_error&) {
        // Out of threads for now: the notification waits, and the next one tries again.
        return;
    }
}

std::size_t BusNotificationCenter::sizeOf(const Notification& notification)
{
    qsizetype units = notification.name.size() + notification.object.size();
    for (const auto& [key, value] : notification.userInfo) {
        units += key.size();
        if (const auto* text = std::get_if<QString>(&value))
            units += text->size();
    }
    return static_cast<std::size_t>(units) * sizeof(QChar);
}

void BusNotificationCenter::work()
{
    ::pthread_setname_np(::pthread_self(), "notifications");
    while (true) {
        // First, so that nothing said after what is looked at below goes unheard.
        wakeUp_.clear();
        const auto endBy = deadline();
        const bool ending = endBy != BusConnection::Deadline::max();
        BusConnection::Interest interest;
        {
            const std::lock_guard bus(busMutex_);
            sendWaiting();
            const bool done = !isAnyWaiting() && (connection_.get() == nullptr || connection_.isDrained());
            if (ending && (done || BusConnection::Clock::now() >= endBy))
                return;
            interest = connection_.interest();
        }
        BusConnection::wait(interest, endBy, &wakeUp_);
    }
}

void BusNotificationCenter::sendWaiting()
{
    connection_.process();
    while (isAnyWaiting()) {
        if (!connection_.open()) {
            dropWaiting();
            return;
        }
        // At most one signal waits inside sd-bus; the rest stays in this queue, which is bounded.
        if (!connection_.isDrained())
            return;
        while (connection_.isDrained()) {
            const auto notification = takeWaiting();
            if (!notification)
                return;
            send(*notification);
        }
    }
}

void BusNotificationCenter::send(const Notification& notification)
{
    sd_bus_message* created = nullptr;
    int result = sd_bus_message_new_signal(connection_.get(), &created, notificationsPath,
                                           notificationsInterface, "Posted");
    const BusMessage message(created);
    if (result >= 0)
        result = append(message.get(), notification);
    if (result >= 0)
        result = sd_bus_send(connection_.get(), message.get(), nullptr);
    // A broken connection is noticed, and told, by the connection itself.
    if (result < 0 && sd_bus_is_open(connection_.get()) > 0)
        log_.line(QStringLiteral("post: %1 could not be sent: %2")
                      .arg(notification.name.left(200),
                           QString::fromStdString(std::generic_category().message(std::abs(result)))));
}

int BusNotificationCenter::append(sd_bus_message* message, const Notification& notification)
{
    int result = sd_bus_message_append(message, "ss", busSafeText(notification.name).c_str(),
                                       busSafeText(notification.object).c_str());
    if (result >= 0)
        result = sd_bus_message_open_container(message, 'a', "{sv}");
    for (const auto& [key, value] : notification.userInfo) {
        if (result >= 0)
            result = appendEntry(message, key, value);
    }
    return result >= 0 ? sd_bus_message_close_container(message) : result;
}

std::optional<BusNotificationCenter::Notification> BusNotificationCenter::takeWaiting()
{
    std::optional<Notification> taken;
    std::size_t lost = 0;
    {
        const std::lock_guard lock(mutex_);
        if (!waiting_.empty()) {
            taken = std::move(waiting_.front());
            waiting_.pop_front();
            waitingBytes_ -= taken->bytes;
        }
        if (waiting_.empty())
            lost = std::exchange(lost_, 0);
    }
    if (lost > 0)
        log_.line(QStringLiteral("post: %1 notifications were lost").arg(lost));
    return taken;
}

bool BusNotificationCenter::isAnyWaiting()
{
    const std::lock_guard lock(mutex_);
    return !waiting_.empty();
}

void BusNotificationCenter::dropWaiting()
{
    while (takeWaiting()) {
    }
}

BusConnection::Deadline BusNotificationCenter::deadline()
{
    const std::lock_guard lock(mutex_);
    return endBy_.value_or(BusConnection::Deadline::max());
}

} // namespace spotwell
