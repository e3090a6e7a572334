// SPDX-FileCopyrightText: 2026 the spotwell developers
// SPDX-License-Identifier: MIT

#include "tools/spotwell-simulator/WebSession.h"

#include "tools/spotwell-simulator/Pace.h"

#include <algorithm>
#include <limits>
#include <utility>

namespace spotwell::simulator
{
namespace
{

/// Above this nothing is queued before what waits has left.
constexpr qint64 fullWebQueue = 1 << 16;
/// Fills of the queue before the event loop has its turn again.
constexpr int fillsAtOnce = 64;

} // namespace

WebSession::WebSession(std::unique_ptr<PeerSocket> socket, int number, const Setting& setting,
                       WebService& service, std::function<void()> answered, std::function<void()> over)
    : Connection(std::move(socket), number, setting, QStringLiteral("service"), std::move(over)),
      service_(service),
      answered_(std::move(answered))
{
}

void WebSession::received(const QByteArray&)
{
    if (playing_ && playing_->answer.end == WebAnswer::End::silence)
        return inbox_.clear();
    if (isPlaying() && inbox_.bytes().size() > setting_.limits.unread) {
        fail(QStringLiteral("the client's requests"),
             QStringLiteral("more than %1 bytes wait for an answer").arg(setting_.limits.unread));
    }
}

void WebSession::play()
{
    while (isPlaying() && (playing_ || takeRequest())) {
        if (socket_->clientLeft()) {
            finish();
            return beginToLeave();
        }
        if (!advance() || !settled())
            return;
        if (playing_->answer.end == WebAnswer::End::silence && !staySilent())
            return;
        if (playing_->reply.status != 0) {
            setting_.report.add(event("sent", socket_->lastWrite())
                                    .with("request", playing_->number)
                                    .with("line", qint64{playing_->answer.line})
                                    .with("status", qint64{playing_->reply.status})
                                    .with("bytes", playing_->bytes));
        }
        const bool resets = playing_->answer.end == WebAnswer::End::reset;
        const bool keepsOpen = playing_->reply.keepsOpen;
        finish();
        if (resets)
            breakOff();
        else if (!keepsOpen)
            beginToLeave();
    }
    if (isPlaying() && socket_->clientLeft())
        beginToLeave();
}

bool WebSession::takeRequest()
{
    if (inbox_.isEmpty())
        return false;
    const WebAnswer& answer = setting_.scenario.answer(service_.requests + 1);
    line_ = answer.line;
    ReadRequest read = readRequest(inbox_.bytes());
    if (!read.request) {
        if (!read.fault.isNull())
            refuse(read.fault);
        else if (socket_->clientLeft() && !inbox_.bytes().trimmed().isEmpty())
            fail(QStringLiteral("request"), QStringLiteral("the client left in the middle of it"));
        return false;
    }
    ++service_.requests;
    setting_.report.add(event("received", socket_->lastRead())
                            .with("request", service_.requests)
                            .with("bytes", qint64{read.request->size})
                            .with("text", escaped(inbox_.bytes().left(read.request->size))));
    inbox_.take(read.request->size);
    const bool allHold = std::all_of(answer.checks.begin(), answer.checks.end(),
                                     [&](const WebCheck& check) { return holds(check, *read.request); });
    line_ = answer.line;
    if (!allHold) {
        finish();
        return false;
    }
    playing_.emplace(Playing{answer, makeReply(answer, *read.request, service_.feeds, setting_.clock.now()),
                             service_.requests});
    return true;
}

void WebSession::refuse(const QString& fault)
{
    socket_->queue(badRequestReply());
    fail(QStringLiteral("request"), fault);
}

bool WebSession::holds(const WebCheck& check, const WebRequest& request)
{
    line_ = check.line;
    if (const auto* expect = std::get_if<ExpectRequest>(&check.what)) {
        const QString what = QStringLiteral("expect request \"%1\"").arg(escaped(expect->line));
        return request.line() == expect->line
                   ? pass(what, socket_->lastRead())
                   : fail(what, QStringLiteral("\"%1\" came").arg(escaped(request.line())));
    }
    const auto& expect = std::get<ExpectHeader>(check.what);
    const auto value = request.header(expect.name);
    QString what =
        (expect.present ? QStringLiteral("expect header %1") : QStringLiteral("expect no header %1"))
            .arg(QString::fromLatin1(expect.name));
    if (expect.value)
        what += QStringLiteral(" \"%1\"").arg(escaped(*expect.value));
    if (value.has_value() == expect.present && (!expect.value || value == expect.value))
        return pass(what, socket_->lastRead());
    return fail(what, value ? QStringLiteral("\"%1\" came").arg(escaped(*value))
                            : QStringLiteral("the request has none"));
}

bool WebSession::advance()
{
    while (playing_->step < playing_->reply.steps.size()) {
        const auto& what = playing_->reply.steps[playing_->step].what;
        if (!std::visit([this](const auto& step) { return advance(step); }, what))
            return false;
        ++playing_->step;
        playing_->done = 0;
        playing_->stepAt.reset();
    }
    return true;
}

bool WebSession::advance(const WebPause& pause)
{
    if (!settled())
        return false;
    if (!playing_->stepAt)
        playing_->stepAt = Moment::clock::now();
    wakeAt(*playing_->stepAt + ticks(pause.duration));
    return now_ >= *playing_->stepAt + ticks(pause.duration);
}

qint64 WebSession::allowance()
{
    if (!playing_->stepAt)
        playing_->stepAt = now_;
    if (socket_->queued() >= fullWebQueue && !settled() && socket_->queued() >= fullWebQueue)
        return 0;
    const qint64 room = fullWebQueue - socket_->queued();
    const auto rate = playing_->answer.rate;
    if (!rate || !playing_->reply.steps[playing_->step].isBody)
        return room;
    const Pace pace{*rate};
    const qint64 due = pace.dueCount(now_ - *playing_->stepAt) - playing_->done;
    if (due > 0)
        return std::min(room, due);
    settled();
    wakeAt(*playing_->stepAt + ticks(pace.dueAt(playing_->done)));
    return 0;
}

bool WebSession::advance(const QByteArray& bytes)
{
    for (int fill = 0; playing_->done < bytes.size(); ++fill) {
        const qint64 count = std::min(allowance(), bytes.size() - playing_->done);
        if (count == 0)
            return false;
        if (fill == fillsAtOnce) {
            wakeAt(now_);
            return false;
        }
        socket_->queue(QByteArrayView{bytes}.sliced(playing_->done, count));
        playing_->done += count;
        playing_->bytes += count;
    }
    return true;
}

bool WebSession::advance(const WebFiller& filler)
{
    for (int fill = 0; playing_->done < filler.bytes; ++fill) {
        const qint64 count = std::min(allowance(), filler.bytes - playing_->done);
        if (count == 0)
            return false;
        if (fill == fillsAtOnce) {
            wakeAt(now_);
            return false;
        }
        qint64 taken = 0;
        const QByteArray bytes = fillerBytes(count, playing_->reply.chunk, &taken);
        socket_->queue(bytes);
        playing_->done += taken;
        playing_->bytes += bytes.size();
    }
    return true;
}

bool WebSession::staySilent()
{
    inbox_.clear();
    if (!playing_->stepAt)
        playing_->stepAt = Moment::clock::now();
    if (!playing_->answer.silence)
        return false;
    wakeAt(*playing_->stepAt + ticks(*playing_->answer.silence));
    return now_ >= *playing_->stepAt + ticks(*playing_->answer.silence);
}

void WebSession::finish()
{
    playing_.reset();
    ++service_.answered;
    answered_();
}

} // namespace spotwell::simulator
