// SPDX-FileCopyrightText: 2026 the spotwell developers
// SPDX-License-Identifier: MIT

#include "tools/spotwell-bridge/telnet/NodeClient.h"

#include "tools/spotwell-bridge/telnet/NodeTexts.h"

#include <QHostAddress>

#include <array>
#include <cerrno>
#include <netinet/in.h>
#include <netinet/tcp.h>
#include <sys/socket.h>
#include <unistd.h>
#include <utility>

namespace spotwell::bridge
{
namespace
{

/// Bytes read at a time. They hold few commands, so the other clients are not kept waiting.
constexpr std::size_t readSize = 256;

bool triesAgain(int error)
{
    return error == EAGAIN || error == EWOULDBLOCK || error == EINTR;
}

void setOption(int descriptor, int level, int option, int value)
{
    // The connection works without any of these options too.
    (void)setsockopt(descriptor, level, option, &value, sizeof value);
}

void configure(int descriptor, const NodeLimits& limits)
{
    setOption(descriptor, IPPROTO_TCP, TCP_NODELAY, 1);
    setOption(descriptor, SOL_SOCKET, SO_SNDBUF, limits.sendBuffer);
    // A client whose computer has vanished is noticed after some three minutes, not two hours.
    setOption(descriptor, SOL_SOCKET, SO_KEEPALIVE, 1);
    setOption(descriptor, IPPROTO_TCP, TCP_KEEPIDLE, 120);
    setOption(descriptor, IPPROTO_TCP, TCP_KEEPINTVL, 20);
    setOption(descriptor, IPPROTO_TCP, TCP_KEEPCNT, 4);
}

QString peerAddress(int descriptor)
{
    sockaddr_storage storage{};
    auto* const address = reinterpret_cast<sockaddr*>(&storage);
    socklen_t length = sizeof storage;
    if (getpeername(descriptor, address, &length) != 0)
        return QStringLiteral("an unknown address");
    const QHostAddress peer(address);
    bool isVersion4 = false;
    const quint32 version4 = peer.toIPv4Address(&isVersion4);
    return (isVersion4 ? QHostAddress(version4) : peer).toString();
}

std::unique_ptr<QSocketNotifier> notifier(int descriptor, QSocketNotifier::Type type,
                                          std::function<void()> activity)
{
    auto made = std::make_unique<QSocketNotifier>(descriptor, type);
    made->setEnabled(false);
    QObject::connect(made.get(), &QSocketNotifier::activated, made.get(), std::move(activity));
    return made;
}

QString inSeconds(std::chrono::milliseconds span)
{
    return QString::number(std::chrono::duration<double>(span).count());
}

} // namespace

NodeClient::NodeClient(int descriptor, const Setting& setting, Changed changed)
    : descriptor_(descriptor),
      setting_(setting),
      changed_(std::move(changed)),
      dialogue_(setting.lines),
      backlog_(setting.lines)
{
}

NodeClient::~NodeClient()
{
    if (descriptor_ >= 0)
        ::close(descriptor_);
}

void NodeClient::start()
{
    configure(descriptor_, setting_.limits);
    address_ = peerAddress(descriptor_);
    connected_ = setting_.monotonic();
    reading_ = notifier(descriptor_, QSocketNotifier::Read, [this] { readyToRead(); });
    writing_ = notifier(descriptor_, QSocketNotifier::Write, [this] { goOn(); });
    backlog_.add(NodeDialogue::opening());
    goOn();
    changed_(*this);
}

void NodeClient::wake()
{
    if (!isOver() && !writing_->isEnabled())
        goOn();
}

void NodeClient::dismiss()
{
    if (isOver())
        return;
    if (!leaving_ && backlog_.isEmpty()) {
        backlog_.unfollow();
        backlog_.add(dialogue_.goodbye());
        send();
    }
    close();
}

bool NodeClient::isWatched() const
{
    return !isOver() && (leaving_ || !dialogue_.isLoggedIn() || !backlog_.isEmpty());
}

void NodeClient::look(std::chrono::steady_clock::time_point now)
{
    const NodeLimits& limits = setting_.limits;
    if (isOver())
        return;
    if (leaving_) {
        if (now - left_ >= limits.leaving)
            close();
    } else if (writing_->isEnabled() && now - lastTaken_ >= limits.taking) {
        // Only what was offered can be left: a line of this turn of the event loop has not been tried yet.
        drop(QStringLiteral("it took nothing for %1 s").arg(inSeconds(limits.taking)));
    } else if (!dialogue_.isLoggedIn() && now - connected_ >= limits.login) {
        drop(QStringLiteral("it gave no callsign for %1 s").arg(inSeconds(limits.login)));
    }
}

bool NodeClient::giveWay(std::chrono::steady_clock::time_point now)
{
    if (isOver() || dialogue_.isLoggedIn() || now - connected_ < setting_.limits.dallying)
        return false;
    drop(QStringLiteral("it gave no callsign, and others have no room"));
    return true;
}

void NodeClient::readyToRead()
{
    std::array<char, readSize> buffer;
    const ssize_t count = recv(descriptor_, buffer.data(), buffer.size(), 0);
    if (count < 0) {
        if (!triesAgain(errno))
            close();
        return;
    }
    inputEnded_ = count == 0;
    if (!leaving_)
        unread_.append(buffer.data(), count);
    goOn();
}

void NodeClient::goOn()
{
    send();
    while (!isOver() && !ending_ && backlog_.isEmpty() && !unread_.isEmpty()) {
        answerNextLine();
        send();
    }
    if (isOver())
        return;
    const bool waits = !backlog_.isEmpty();
    if (!waits && (ending_ || inputEnded_))
        leave();
    if (isOver())
        return;
    reading_->setEnabled(!waits && !inputEnded_);
    writing_->setEnabled(waits);
}

void NodeClient::answerNextLine()
{
    QByteArrayView rest(unread_);
    const std::optional<InputLine> line = input_.takeLine(rest);
    if (line) {
        const bool wasLoggedIn = dialogue_.isLoggedIn();
        const Answer answer = dialogue_.answer(*line, setting_.clock.now());
        for (const QByteArray& piece : answer.pieces)
            backlog_.add(piece);
        ending_ = answer.ends;
        if (ending_)
            backlog_.unfollow();
        if (dialogue_.isLoggedIn() && !wasLoggedIn) {
            backlog_.follow();
            setting_.log.line(QStringLiteral("telnet: %1 logged in").arg(name()));
        }
    }
    unread_ = rest.toByteArray();
}

void NodeClient::send()
{
    if (leaving_)
        return;
    bool took = false;
    for (QByteArrayView bytes = backlog_.next(); !bytes.isEmpty(); bytes = backlog_.next()) {
        const ssize_t count =
            ::send(descriptor_, bytes.data(), static_cast<std::size_t>(bytes.size()), MSG_NOSIGNAL);
        if (count < 0) {
            if (!triesAgain(errno))
                close();
            break;
        }
        backlog_.taken(count);
        took = true;
    }
    if (isOver() || backlog_.isEmpty())
        return;
    if (took || !writing_->isEnabled())
        lastTaken_ = setting_.monotonic();
    changed_(*this);
}

void NodeClient::leave()
{
    if (inputEnded_) {
        close();
        return;
    }
    if (leaving_)
        return;
    // To close with something unread would have the system reset the connection, and the last words with it.
    leaving_ = true;
    left_ = setting_.monotonic();
    unread_ = {};
    (void)shutdown(descriptor_, SHUT_WR);
    changed_(*this);
}

void NodeClient::drop(const QString& reason)
{
    setting_.log.line(QStringLiteral("telnet: dropped %1: %2").arg(name(), reason));
    // What the system holds for it goes at once.
    const linger atOnce{1, 0};
    (void)setsockopt(descriptor_, SOL_SOCKET, SO_LINGER, &atOnce, sizeof atOnce);
    closeSocket();
}

void NodeClient::close()
{
    if (dialogue_.isLoggedIn())
        setting_.log.line(QStringLiteral("telnet: %1 left").arg(name()));
    closeSocket();
}

void NodeClient::closeSocket()
{
    // A notifier may be what called, so both stay until the destructor.
    reading_->setEnabled(false);
    writing_->setEnabled(false);
    ::close(std::exchange(descriptor_, -1));
    changed_(*this);
}

QString NodeClient::name() const
{
    const QString who =
        dialogue_.isLoggedIn() ? QString::fromLatin1(dialogue_.callsign()) : QStringLiteral("a client");
    return QStringLiteral("%1 from %2").arg(who, address_);
}

} // namespace spotwell::bridge
