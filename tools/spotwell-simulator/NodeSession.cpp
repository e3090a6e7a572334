#include "tools/spotwell-simulator/NodeSession.h"

#include <algorithm>
#include <chrono>
#include <utility>

namespace spotwell::simulator
{
namespace
{

/// Statements played before the event loop has its turn again.
constexpr int statementsAtOnce = 64;

} // namespace

NodeSession::NodeSession(int descriptor, int number, const Setting& setting, std::function<void()> over)
    : number_(number),
      setting_(setting),
      over_(std::move(over)),
      socket_(descriptor, [this] { wake(); }),
      cursor_(setting.scenario.session(number))
{
    timer_.setSingleShot(true);
    timer_.setTimerType(Qt::PreciseTimer);
    timer_.callOnTimeout([this] { wake(); });
}

void NodeSession::start()
{
    socket_.start();
    setting_.report.add(event("connect", Moment::clock::now()));
    wake();
}

void NodeSession::abandon()
{
    if (isOver())
        return;
    leftBy_ = QStringLiteral("node");
    socket_.close();
    end(QStringLiteral("closed"));
}

void NodeSession::wake()
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

void NodeSession::play()
{
    for (int played = 0; phase_ == Phase::playing; ++played) {
        const Statement* statement = cursor_.current();
        if (!statement)
            return beginToLeave();
        if (played == statementsAtOnce) {
            settled();
            return wakeAt(now_);
        }
        line_ = statement->line;
        const bool finished = std::visit([this](const auto& what) { return advance(what); }, statement->what);
        if (phase_ != Phase::playing || !finished)
            return;
        startedAt_.reset();
        arrivedAt_.reset();
        produced_ = 0;
        producedBytes_ = 0;
        // A repetition was entered, not finished.
        if (!std::holds_alternative<Repeat>(statement->what) || socket_.clientLeft())
            cursor_.next(!socket_.clientLeft());
    }
}

void NodeSession::beginToLeave()
{
    phase_ = Phase::leaving;
    leftBy_ = socket_.clientLeft() ? QStringLiteral("client") : QStringLiteral("node");
}

void NodeSession::leave()
{
    inbox_.clear();
    if (!settled())
        return;
    if (!leavingSince_) {
        leavingSince_ = now_;
        socket_.shutdownWrite();
    }
    const Moment deadline =
        *leavingSince_ + std::chrono::duration_cast<Moment::duration>(setting_.limits.farewell);
    if (socket_.clientLeft() || now_ >= deadline) {
        socket_.close();
        end(socket_.broken() ? QStringLiteral("reset") : QStringLiteral("closed"));
    } else {
        wakeAt(deadline);
    }
}

void NodeSession::end(const QString& how)
{
    phase_ = Phase::over;
    setting_.report.add(event("disconnect", Moment::clock::now())
                            .with("by", leftBy_)
                            .with("how", how)
                            .with("passed", qint64{passed_})
                            .with("failed", qint64{failed_}));
    over_();
}

void NodeSession::receive()
{
    const QByteArray bytes = socket_.takeReceived();
    if (bytes.isEmpty())
        return;
    setting_.report.add(event("received", socket_.lastRead())
                            .with("bytes", qint64{bytes.size()})
                            .with("text", escaped(bytes)));
    inbox_.add(bytes, socket_.lastRead());
    if (phase_ == Phase::playing && inbox_.bytes().size() > setting_.limits.unread) {
        fail(QStringLiteral("the client's text"),
             QStringLiteral("more than %1 bytes came that no statement expects").arg(setting_.limits.unread));
    }
}

void NodeSession::watchForStall()
{
    if (socket_.queued() == 0)
        return stalledSince_.reset();
    stalledSince_ = std::max(stalledSince_.value_or(now_), socket_.lastWrite());
    const Moment deadline =
        *stalledSince_ + std::chrono::duration_cast<Moment::duration>(setting_.limits.stall);
    if (now_ < deadline)
        return wakeAt(deadline);
    if (phase_ == Phase::playing) {
        fail(QStringLiteral("the client's reading"),
             QStringLiteral("it took no bytes for %1 s").arg(setting_.limits.stall.count()));
    }
    socket_.reset();
    end(QStringLiteral("reset"));
}

void NodeSession::wakeAt(Moment moment)
{
    wakeUp_ = std::min(wakeUp_.value_or(moment), moment);
}

void NodeSession::armTimer()
{
    if (isOver() || !wakeUp_)
        return timer_.stop();
    const auto wait = std::chrono::ceil<std::chrono::milliseconds>(*wakeUp_ - Moment::clock::now());
    timer_.start(std::max(wait, std::chrono::milliseconds{0}));
}

bool NodeSession::settled()
{
    socket_.flush();
    reportSent();
    return socket_.queued() == 0;
}

bool NodeSession::begun()
{
    if (!settled())
        return false;
    if (!startedAt_)
        startedAt_ = Moment::clock::now();
    return true;
}

void NodeSession::queue(const QByteArray& bytes)
{
    socket_.queue(bytes);
    queuedInAll_ += bytes.size();
}

void NodeSession::noteSent(qint64 bytes, qint64 lines)
{
    unsent_.push_back({line_, queuedInAll_, bytes, lines});
}

void NodeSession::reportSent()
{
    while (!unsent_.empty() && unsent_.front().end <= socket_.written()) {
        const Unsent& sent = unsent_.front();
        setting_.report.add(event("sent", socket_.lastWrite())
                                .with("line", qint64{sent.line})
                                .with("bytes", sent.bytes)
                                .with("lines", sent.lines));
        unsent_.pop_front();
    }
}

void NodeSession::reportProgress()
{
    if (!startedAt_ || now_ - reportedAt_ < std::chrono::seconds{1})
        return;
    reportedAt_ = now_;
    setting_.report.add(event("progress", now_)
                            .with("line", qint64{line_})
                            .with("bytes", producedBytes_)
                            .with("lines", produced_));
}

Event NodeSession::event(const char* name, Moment time) const
{
    return Event{name, time}.with("scenario", setting_.scenario.name).with("connection", qint64{number_});
}

Event NodeSession::check(const char* result, const QString& what, Moment time) const
{
    return event("check", time)
        .with("result", QString::fromLatin1(result))
        .with("at", QStringLiteral("%1:%2").arg(setting_.scenario.file).arg(line_))
        .with("what", what)
        .with("after", sinceLastSend(time));
}

bool NodeSession::pass(const QString& what, Moment at)
{
    ++passed_;
    setting_.report.add(check("passed", what, at));
    return true;
}

bool NodeSession::fail(const QString& what, const QString& why)
{
    ++failed_;
    setting_.report.add(check("failed", what, now_).with("why", why));
    beginToLeave();
    return false;
}

QString NodeSession::unread() const
{
    constexpr qsizetype shown = 200;
    const QByteArray& bytes = inbox_.bytes();
    if (bytes.isEmpty())
        return QStringLiteral("nothing");
    return QStringLiteral("\"%1\"%2")
        .arg(escaped(bytes.left(shown)), bytes.size() > shown ? QStringLiteral("...") : QString{});
}

} // namespace spotwell::simulator
