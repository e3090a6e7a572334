// SPDX-FileCopyrightText: 2026 the spotwell developers
// SPDX-License-Identifier: MIT

#include "tools/spotwell-simulator/Connection.h"

#include <algorithm>
#include <chrono>
#include <utility>

namespace spotwell::simulator
{

Connection::Connection(std::unique_ptr<PeerSocket> socket, int number, const Setting& setting,
                       const QString& side, std::function<void()> over)
    : number_(number), setting_(setting), socket_(std::move(socket)), side_(side), over_(std::move(over))
{
    timer_.setSingleShot(true);
    timer_.setTimerType(Qt::PreciseTimer);
    timer_.callOnTimeout([this] { wake(); });
}

void Connection::start()
{
    socket_->start([this] { wake(); });
    setting_.report.add(event("connect", Moment::clock::now()));
    wake();
}

void Connection::abandon()
{
    if (isOver())
        return;
    leftBy_ = side_;
    socket_->close();
    end(QStringLiteral("closed"));
}

void Connection::wake()
{
    if (isOver())
        return;
    now_ = Moment::clock::now();
    wakeUp_.reset();
    receive();
    if (phase_ == Phase::playing)
        play();
    if (phase_ == Phase::leaving)
        leave();
    if (!isOver())
        watchForStall();
    armTimer();
}

void Connection::beginToLeave()
{
    phase_ = Phase::leaving;
    leftBy_ = socket_->clientLeft() ? QStringLiteral("client") : side_;
}

void Connection::breakOff()
{
    beginToLeave();
    socket_->reset();
    end(QStringLiteral("reset"));
}

void Connection::leave()
{
    inbox_.clear();
    if (!settled())
        return;
    if (!leavingSince_) {
        leavingSince_ = now_;
        socket_->shutdownWrite();
    }
    const Moment deadline = *leavingSince_ + ticks(setting_.limits.farewell);
    if (socket_->clientLeft() || now_ >= deadline) {
        socket_->close();
        end(socket_->broken() ? QStringLiteral("reset") : QStringLiteral("closed"));
    } else {
        wakeAt(deadline);
    }
}

void Connection::end(const QString& how)
{
    phase_ = Phase::over;
    Event disconnect = event("disconnect", Moment::clock::now());
    disconnect.with("by", leftBy_).with("how", how);
    if (const QString trouble = socket_->trouble(); !trouble.isNull())
        disconnect.with("why", trouble);
    disconnect.with("passed", qint64{passed_}).with("failed", qint64{failed_});
    setting_.report.add(disconnect);
    over_();
}

void Connection::receive()
{
    const QByteArray bytes = socket_->takeReceived();
    if (bytes.isEmpty())
        return;
    inbox_.add(bytes, socket_->lastRead());
    received(bytes);
}

void Connection::watchForStall()
{
    if (socket_->queued() == 0)
        return stalledSince_.reset();
    stalledSince_ = std::max(stalledSince_.value_or(now_), socket_->lastWrite());
    const Moment deadline = *stalledSince_ + ticks(setting_.limits.stall);
    if (now_ < deadline)
        return wakeAt(deadline);
    if (phase_ == Phase::playing) {
        fail(QStringLiteral("the client's reading"),
             QStringLiteral("it took no bytes for %1 s").arg(setting_.limits.stall.count()));
    }
    socket_->reset();
    end(QStringLiteral("reset"));
}

void Connection::wakeAt(Moment moment)
{
    wakeUp_ = std::min(wakeUp_.value_or(moment), moment);
}

void Connection::armTimer()
{
    if (isOver() || !wakeUp_)
        return timer_.stop();
    const auto wait = std::chrono::ceil<std::chrono::milliseconds>(*wakeUp_ - Moment::clock::now());
    timer_.start(std::max(wait, std::chrono::milliseconds{0}));
}

bool Connection::settled()
{
    socket_->flush();
    reportSent();
    return socket_->queued() == 0;
}

Event Connection::event(const char* name, Moment time) const
{
    return Event{name, time}.with("scenario", setting_.scenario.name).with("connection", qint64{number_});
}

Event Connection::check(const char* result, const QString& what, Moment time) const
{
    return event("check", time)
        .with("result", QString::fromLatin1(result))
        .with("at", QStringLiteral("%1:%2").arg(setting_.scenario.file).arg(line_))
        .with("what", what)
        .with("after", sinceLastSend(time));
}

bool Connection::pass(const QString& what, Moment at)
{
    ++passed_;
    setting_.report.add(check("passed", what, at));
    return true;
}

bool Connection::fail(const QString& what, const QString& why)
{
    ++failed_;
    setting_.report.add(check("failed", what, now_).with("why", why));
    beginToLeave();
    return false;
}

} // namespace spotwell::simulator
