// SPDX-FileCopyrightText: 2026 the spotwell developers
// SPDX-License-Identifier: MIT

#include "tools/spotwell-bridge/telnet/Listener.h"

#include <QNetworkProxy>

#include <cerrno>
#include <sys/socket.h>
#include <utility>

namespace spotwell::bridge
{
namespace
{

/// Clients that may wait to be accepted.
constexpr int acceptQueue = 128;
/// Clients accepted in one turn of the event loop; those who are there already are served in between.
constexpr int acceptedTogether = 16;

/// Whether it is the one connection that failed, or nothing at all.
bool isPassing(int error)
{
    return error == EAGAIN || error == EWOULDBLOCK || error == EINTR || error == ECONNABORTED;
}

} // namespace

Listener::Listener(std::chrono::milliseconds pause, Arrived arrived, Failed failed)
    : arrived_(std::move(arrived)), failed_(std::move(failed))
{
    again_.setSingleShot(true);
    again_.setInterval(pause);
    QObject::connect(&again_, &QTimer::timeout, &again_, [this] { accepting_->setEnabled(true); });
}

QString Listener::listen(const QHostAddress& address, std::uint16_t port)
{
    server_.setListenBacklogSize(acceptQueue);
    server_.setProxy(QNetworkProxy::NoProxy); // none has a place before a port of one's own
    if (!server_.listen(address, port))
        return server_.errorString();
    server_.pauseAccepting();
    accepting_ = std::make_unique<QSocketNotifier>(server_.socketDescriptor(), QSocketNotifier::Type::Read);
    QObject::connect(accepting_.get(), &QSocketNotifier::activated, accepting_.get(), [this] { accept(); });
    return {};
}

void Listener::close()
{
    again_.stop();
    accepting_.reset();
    server_.close();
}

void Listener::accept()
{
    for (int i = 0; i < acceptedTogether; ++i) {
        const int descriptor = accept4(static_cast<int>(server_.socketDescriptor()), nullptr, nullptr,
                                       SOCK_NONBLOCK | SOCK_CLOEXEC);
        if (descriptor < 0) {
            acceptFailed(errno);
            return;
        }
        fails_ = false;
        arrived_(descriptor);
    }
}

void Listener::acceptFailed(int error)
{
    if (isPassing(error))
        return;
    accepting_->setEnabled(false);
    again_.start();
    if (!std::exchange(fails_, true))
        failed_(qt_error_string(error));
}

} // namespace spotwell::bridge
