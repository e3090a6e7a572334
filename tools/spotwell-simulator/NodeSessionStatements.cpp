// SPDX-FileCopyrightText: 2026 the spotwell developers
// SPDX-License-Identifier: MIT

#include "tools/spotwell-simulator/NodeSession.h"

#include <algorithm>
#include <chrono>

namespace spotwell::simulator
{
namespace
{

/// Above this nothing is queued before what waits has left.
constexpr qsizetype fullQueue = 1 << 16;
/// Lines generated at once, so that those which wait in the queue are few and their time stamps fresh.
constexpr qint64 linesAtOnce = 64;
/// Turns of lines generated before the event loop has its own turn again.
constexpr int turnsAtOnce = 64;

QString inSeconds(Seconds span)
{
    return QString::number(span.count(), 'f', 3) + QStringLiteral(" s");
}

QString described(const ExpectText& expect)
{
    return expect.bytes ? QStringLiteral("expect \"%1\"").arg(escaped(*expect.bytes))
                        : QStringLiteral("expect line");
}

} // namespace

bool NodeSession::advance(const Send& send)
{
    if (socket_->clientLeft())
        return true;
    if (socket_->queued() >= fullQueue && !settled() && socket_->queued() >= fullQueue)
        return false;
    queue(send.bytes);
    noteSent(send.bytes.size(), send.bytes.count('\n'));
    return true;
}

bool NodeSession::advance(const Cut& cut)
{
    if (!begun())
        return false;
    if (socket_->clientLeft())
        return true;
    if (!arrivedAt_ && socket_->allArrived())
        arrivedAt_ = now_;
    if (!arrivedAt_ && now_ >= *startedAt_ + ticks(setting_.limits.stall))
        return fail(
            QStringLiteral("cut"),
            QStringLiteral("what was sent did not arrive within %1").arg(inSeconds(setting_.limits.stall)));
    wakeAt(arrivedAt_ ? *arrivedAt_ + ticks(cut.pause) : now_ + std::chrono::milliseconds{1});
    return arrivedAt_ && now_ >= *arrivedAt_ + ticks(cut.pause);
}

bool NodeSession::advance(const Spots& spots)
{
    for (int turn = 0; produced_ < spots.count && !socket_->clientLeft(); ++turn) {
        if (!begun())
            return false;
        if (produced_ == 0)
            reportedAt_ = *startedAt_;
        qint64 due = spots.count;
        if (spots.rate) {
            const Pace pace{*spots.rate};
            due = std::min(due, pace.dueCount(now_ - *startedAt_));
            if (due <= produced_) {
                wakeAt(*startedAt_ + ticks(pace.dueAt(produced_)));
                return false;
            }
        }
        if (turn == turnsAtOnce) {
            wakeAt(now_);
            return false;
        }
        for (const qint64 end = std::min(due, produced_ + linesAtOnce); produced_ < end; ++produced_) {
            const QByteArray line = spotLines_.next(spots.format, setting_.clock.now());
            producedBytes_ += line.size();
            queue(line);
        }
        reportProgress();
    }
    noteSent(producedBytes_, produced_);
    return true;
}

bool NodeSession::advance(const Flood& flood)
{
    for (int turn = 0; producedBytes_ < flood.bytes && !socket_->clientLeft(); ++turn) {
        if (!begun())
            return false;
        if (producedBytes_ == 0)
            reportedAt_ = *startedAt_;
        if (turn == turnsAtOnce) {
            wakeAt(now_);
            return false;
        }
        for (qint64 line = 0; line < linesAtOnce && producedBytes_ < flood.bytes; ++line) {
            QByteArray bytes = flood.oneLine ? QByteArray(80, '=') : floodLine(produced_ + 1);
            bytes.truncate(std::min(qint64{bytes.size()}, flood.bytes - producedBytes_));
            producedBytes_ += bytes.size();
            produced_ += bytes.count('\n');
            queue(bytes);
        }
        reportProgress();
    }
    noteSent(producedBytes_, produced_);
    return true;
}

bool NodeSession::advance(const Wait& wait)
{
    if (!begun())
        return false;
    if (socket_->clientLeft())
        return true;
    wakeAt(*startedAt_ + ticks(wait.duration));
    return now_ >= *startedAt_ + ticks(wait.duration);
}

bool NodeSession::advance(const ExpectText& expect)
{
    if (!begun())
        return false;
    const QString what = described(expect);
    const Inbox::Comparison found = expect.bytes ? inbox_.compare(*expect.bytes) : inbox_.compareLine();
    if (found.match == Inbox::Match::different)
        return fail(what, QStringLiteral("%1 came").arg(unread()));
    if (found.match == Inbox::Match::matched)
        return judge(what, found, expect);
    if (socket_->clientLeft())
        return fail(what, QStringLiteral("the client left; %1 came").arg(unread()));
    const Moment deadline = (expect.after ? socket_->lastWrite() : *startedAt_) + ticks(expect.within);
    if (now_ >= deadline)
        return fail(what, QStringLiteral("%1 came within %2").arg(unread(), inSeconds(expect.within)));
    wakeAt(deadline);
    return false;
}

bool NodeSession::judge(const QString& what, const Inbox::Comparison& found, const ExpectText& expect)
{
    if (expect.after && found.at < socket_->lastWrite() + ticks(*expect.after)) {
        return fail(what, QStringLiteral("it came %1 after what was sent last, not to come before %2")
                              .arg(inSeconds(sinceLastSend(found.at)), inSeconds(*expect.after)));
    }
    const Moment reference = expect.after ? socket_->lastWrite() : *startedAt_;
    if (found.at > reference + ticks(expect.within)) {
        return fail(what, QStringLiteral("it came after %1, not within %2")
                              .arg(inSeconds(found.at - reference), inSeconds(expect.within)));
    }
    inbox_.take(found.length);
    return pass(what, found.at);
}

bool NodeSession::advance(const ExpectNothing& expect)
{
    if (!begun())
        return false;
    const QString what = QStringLiteral("expect nothing for %1").arg(inSeconds(expect.duration));
    if (!inbox_.isEmpty())
        return fail(what, QStringLiteral("%1 came").arg(unread()));
    if (socket_->clientLeft())
        return fail(what, QStringLiteral("the client left"));
    const Moment deadline = *startedAt_ + ticks(expect.duration);
    if (now_ >= deadline)
        return pass(what, now_);
    wakeAt(deadline);
    return false;
}

bool NodeSession::advance(const ExpectClose& expect)
{
    if (!begun())
        return false;
    const QString what = QStringLiteral("expect close");
    if (expect.ignoringText)
        inbox_.clear();
    if (!inbox_.isEmpty())
        return fail(what, QStringLiteral("%1 came").arg(unread()));
    if (socket_->clientLeft())
        return pass(what, now_);
    const Moment deadline = *startedAt_ + ticks(expect.within);
    if (now_ >= deadline)
        return fail(what, QStringLiteral("the client had not left after %1").arg(inSeconds(expect.within)));
    wakeAt(deadline);
    return false;
}

bool NodeSession::advance(const StaySilent& stay)
{
    if (!begun())
        return false;
    inbox_.clear();
    if (socket_->clientLeft())
        return true;
    if (!stay.duration)
        return false;
    wakeAt(*startedAt_ + ticks(*stay.duration));
    return now_ >= *startedAt_ + ticks(*stay.duration);
}

bool NodeSession::advance(const HalfClose&)
{
    if (!begun())
        return false;
    socket_->shutdownWrite();
    return true;
}

bool NodeSession::advance(const Close&)
{
    // What the client sends from here on is nobody's concern; leave() does the rest.
    return true;
}

bool NodeSession::advance(const Reset&)
{
    if (!settled())
        return false;
    breakOff();
    return false;
}

bool NodeSession::advance(const Repeat& repeat)
{
    if (!socket_->clientLeft())
        cursor_.enter(repeat);
    return true;
}

} // namespace spotwell::simulator
