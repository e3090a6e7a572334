// SPDX-FileCopyrightText: 2026 the spotwell developers
// SPDX-License-Identifier: MIT

#include "platform/linux/bus/BusConnection.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstdint>
#include <poll.h>
#include <thread>
#include <utility>

namespace spotwell
{

namespace
{

using namespace std::chrono_literals;

constexpr auto attemptInterval = 1s;
/// Of an error's text, whoever sent it.
constexpr qsizetype maxErrorLength = 500;

int replyArrived(sd_bus_message* message, void* userdata, sd_bus_error*)
{
    auto& reply = *static_cast<BusReply*>(userdata);
    reply.end = BusReply::End::answered;
    if (sd_bus_message_is_method_error(message, nullptr) > 0) {
        reply.end = BusReply::End::failed;
        reply.error = busErrorText(message);
        reply.errorName = QString::fromUtf8(sd_bus_message_get_error(message)->name);
    }
    return 0;
}

} // namespace

QString busErrorText(sd_bus_message* message)
{
    const sd_bus_error* error = sd_bus_message_get_error(message);
    if (error == nullptr)
        return {};
    const bool hasText = error->message != nullptr && *error->message != '\0';
    return QString::fromUtf8(hasText ? error->message : error->name).left(maxErrorLength);
}

BusConnection::BusConnection(SessionBus& bus, std::string description)
    : sessionBus_(bus), description_(std::move(description))
{
}

bool BusConnection::open()
{
    if (process())
        return true;
    const Deadline now = Clock::now();
    if (lastAttempt_ && now - *lastAttempt_ < attemptInterval)
        return false;
    lastAttempt_ = now;
    busId_.reset();
    bus_.reset(sessionBus_.connect(description_.c_str()));
    if (!bus_)
        return false;
    ++generation_;
    return process();
}

bool BusConnection::isDrained() const
{
    std::uint64_t queued = 0;
    return bus_ && sd_bus_is_ready(bus_.get()) > 0 && sd_bus_get_n_queued_write(bus_.get(), &queued) >= 0 &&
           queued == 0;
}

BusConnection::Step BusConnection::step()
{
    if (!bus_)
        return Step::lost;
    int result = sd_bus_process(bus_.get(), nullptr);
    // Once closing, sd-bus would answer every open question with an error; whoever asked learns of the loss
    // itself.
    if (result >= 0 && sd_bus_is_open(bus_.get()) <= 0)
        result = -ECONNRESET;
    if (result < 0) {
        bus_.reset();
        sessionBus_.broken(busId_, -result);
        return Step::lost;
    }
    noteAccepted();
    return result > 0 ? Step::progress : Step::nothing;
}

void BusConnection::noteAccepted()
{
    sd_id128_t id{};
    if (busId_ || sd_bus_is_ready(bus_.get()) <= 0 || sd_bus_get_bus_id(bus_.get(), &id) < 0)
        return;
    busId_ = id;
    sessionBus_.accepted(id);
}

bool BusConnection::process(int most, Deadline until)
{
    Step result = Step::progress;
    for (int steps = 0; steps < most && result == Step::progress; ++steps) {
        if (steps > 0 && until != Deadline::max() && Clock::now() >= until)
            break;
        result = step();
    }
    return result != Step::lost;
}

BusConnection::Interest BusConnection::interest() const
{
    if (!bus_)
        return {};
    Interest wanted;
    const int events = sd_bus_get_events(bus_.get());
    wanted.descriptor = sd_bus_get_fd(bus_.get());
    wanted.events = static_cast<short>(std::max(events, 0));
    std::uint64_t due = UINT64_MAX; // on the monotonic clock, which is also Clock's
    if (events < 0 || sd_bus_get_timeout(bus_.get(), &due) < 0)
        due = 0;
    if (due < static_cast<std::uint64_t>(INT64_MAX / 1000))
        wanted.due = Deadline{std::chrono::microseconds{due}};
    return wanted;
}

void BusConnection::wait(const Interest& interest, Deadline deadline, const WakeUp* wakeUp)
{
    std::array<pollfd, 2> entries{pollfd{wakeUp != nullptr ? wakeUp->descriptor() : -1, POLLIN, 0},
                                  pollfd{interest.descriptor, interest.events, 0}};
    deadline = std::min(deadline, interest.due);
    timespec span{};
    if (deadline != Deadline::max()) {
        const auto left = std::max<Clock::duration>(deadline - Clock::now(), 0ns);
        const auto seconds = std::chrono::floor<std::chrono::seconds>(left);
        span = {static_cast<time_t>(seconds.count()), static_cast<long>((left - seconds) / 1ns)};
    }
    ::ppoll(entries.data(), entries.size(), deadline == Deadline::max() ? nullptr : &span, nullptr);
}

bool BusConnection::pump(Deadline deadline, const std::function<bool()>& done, const WakeUp* wakeUp,
                         Clock::duration look)
{
    if (done())
        return true;
    const Deadline looksUntil = look == look.zero() ? Deadline::min() : Clock::now() + look;
    while (bus_ && Clock::now() < looksUntil) {
        if (step() == Step::lost)
            return false;
        if (done())
            return true;
        std::this_thread::yield();
    }
    while (bus_) {
        // First, for what is waited for has seldom come yet. Does not wait for what sd-bus holds already.
        wait(deadline, wakeUp);
        Step result = Step::progress;
        while (result == Step::progress) {
            result = step();
            if (result == Step::lost)
                return false;
            if (done())
                return true;
            if (Clock::now() >= deadline || (wakeUp != nullptr && wakeUp->isAwake()))
                return false;
        }
    }
    return false;
}

BusReply BusConnection::call(sd_bus_message* message, Deadline deadline, const WakeUp* wakeUp)
{
    BusReply reply;
    sd_bus_slot* asked = nullptr;
    if (message == nullptr ||
        sd_bus_call_async(bus_.get(), &asked, message, &replyArrived, &reply, UINT64_MAX) < 0)
        return {BusReply::End::failed, QStringLiteral("The question could not be sent."), {}};
    const BusSlot slot(asked); // an answer that comes after all is nobody's
    if (pump(
            deadline, [&reply] { return reply.end != BusReply::End::late; }, wakeUp))
        return reply;
    if (!bus_)
        reply.end = BusReply::End::lost;
    else if (wakeUp != nullptr && wakeUp->isAwake())
        reply.end = BusReply::End::woken;
    return reply;
}

} // namespace spotwell
