// SPDX-FileCopyrightText: 2026 the spotwell developers
// SPDX-License-Identifier: MIT

#include "tools/spotwell-simulator/NodeSession.h"

#include <chrono>
#include <utility>

namespace spotwell::simulator
{
namespace
{

/// Statements played before the event loop has its turn again.
constexpr int statementsAtOnce = 64;

} // namespace

NodeSession::NodeSession(std::unique_ptr<PeerSocket> socket, int number, const Setting& setting,
                         std::function<void()> over)
    : Connection(std::move(socket), number, setting, QStringLiteral("node"), std::move(over)),
      cursor_(setting.scenario.session(number))
{
}

void NodeSession::received(const QByteArray& bytes)
{
    setting_.report.add(event("received", socket_->lastRead())
                            .with("bytes", qint64{bytes.size()})
                            .with("text", escaped(bytes)));
    if (isPlaying() && inbox_.bytes().size() > setting_.limits.unread) {
        fail(QStringLiteral("the client's text"),
             QStringLiteral("more than %1 bytes came that no statement expects").arg(setting_.limits.unread));
    }
}

void NodeSession::play()
{
    for (int played = 0; isPlaying(); ++played) {
        const Statement* statement = cursor_.current();
        if (!statement)
            return beginToLeave();
        if (played == statementsAtOnce) {
            settled();
            return wakeAt(now_);
        }
        line_ = statement->line;
        const bool finished = std::visit([this](const auto& what) { return advance(what); }, statement->what);
        if (!isPlaying() || !finished)
            return;
        startedAt_.reset();
        arrivedAt_.reset();
        produced_ = 0;
        producedBytes_ = 0;
        // A repetition was entered, not finished.
        if (!std::holds_alternative<Repeat>(statement->what) || socket_->clientLeft())
            cursor_.next(!socket_->clientLeft());
    }
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
    socket_->queue(bytes);
    queuedInAll_ += bytes.size();
}

void NodeSession::noteSent(qint64 bytes, qint64 lines)
{
    unsent_.push_back({line_, queuedInAll_, bytes, lines});
}

void NodeSession::reportSent()
{
    while (!unsent_.empty() && unsent_.front().end <= socket_->written()) {
        const Unsent& sent = unsent_.front();
        setting_.report.add(event("sent", socket_->lastWrite())
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
