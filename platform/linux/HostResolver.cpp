// SPDX-FileCopyrightText: 2026 the spotwell developers
// SPDX-License-Identifier: MIT

#include "platform/linux/HostResolver.h"

#include <QCoreApplication>
#include <QEvent>

#include <cerrno>
#include <cstring>
#include <deque>
#include <netdb.h>
#include <system_error>
#include <thread>
#include <utility>

namespace spotwell
{

/// Where the look-up threads leave their outcomes for the main thread; outlives the resolver for their sake.
struct HostResolver::Mailbox {
    struct Receiver final : QObject {
        explicit Receiver(Mailbox& box) : mailbox(box) {}
        bool event(QEvent* event) override
        {
            std::unique_lock guard(mailbox.mutex); // under which the event was posted
            const bool isOutcome = event->type() == QEvent::User;
            guard.unlock();
            if (!isOutcome)
                return QObject::event(event);
            mailbox.deliver();
            return true;
        }
        Mailbox& mailbox;
    };

    struct Outcome {
        std::weak_ptr<void> context;
        Handler handler;
        HostLookup lookup;
    };

    /// Counts one more look-up; false when there are too many.
    bool begin()
    {
        const std::lock_guard guard(mutex);
        if (underWay == mostLookUps)
            return false;
        ++underWay;
        return true;
    }

    void end()
    {
        const std::lock_guard guard(mutex);
        --underWay;
    }

    void put(Outcome outcome)
    {
        const std::lock_guard guard(mutex);
        if (!receiver)
            return;
        outcomes.push_back(std::move(outcome));
        QCoreApplication::postEvent(receiver.get(), new QEvent(QEvent::User));
    }

    void deliver()
    {
        std::deque<Outcome> ready;
        {
            const std::lock_guard guard(mutex);
            ready.swap(outcomes);
        }
        for (const Outcome& outcome : ready) {
            if (const auto alive = outcome.context.lock())
                outcome.handler(outcome.lookup);
        }
    }

    std::mutex mutex;
    std::deque<Outcome> outcomes;
    std::unique_ptr<Receiver> receiver;
    int underWay = 0;
};

HostResolver::HostResolver() : mailbox_(std::make_shared<Mailbox>())
{
    mailbox_->receiver = std::make_unique<Mailbox::Receiver>(*mailbox_);
}

HostResolver::~HostResolver()
{
    std::unique_ptr<Mailbox::Receiver> receiver;
    const std::lock_guard guard(mailbox_->mutex);
    receiver = std::move(mailbox_->receiver);
}

void HostResolver::lookUp(const QString& host, std::uint16_t port, std::weak_ptr<void> context,
                          Handler handler)
{
    int error = EAGAIN;
    if (mailbox_->begin()) {
        try {
            std::thread([mailbox = mailbox_, host, port, context, handler] {
                mailbox->put({context, handler, resolveHost(host, port)});
                mailbox->end();
            }).detach();
            return;
        } catch (const std::system_error& failure) {
            error = failure.code().value();
            mailbox_->end();
        }
    }
    mailbox_->put(
        {std::move(context), std::move(handler), {{}, QString::fromLocal8Bit(std::strerror(error))}});
}

HostLookup resolveHost(const QString& host, std::uint16_t port)
{
    HostLookup lookup;
    addrinfo hints{};
    hints.ai_family = AF_UNSPEC;
    hints.ai_socktype = SOCK_STREAM;
    hints.ai_protocol = IPPROTO_TCP;
    hints.ai_flags = AI_NUMERICSERV | AI_IDN;
    addrinfo* list = nullptr;
    const QByteArray name = host.trimmed().toUtf8();
    const QByteArray service = QByteArray::number(port);
    const int result =
        name.isEmpty() ? EAI_NONAME : ::getaddrinfo(name.constData(), service.constData(), &hints, &list);
    if (result != 0) {
        lookup.error =
            QString::fromLocal8Bit(result == EAI_SYSTEM ? std::strerror(errno) : ::gai_strerror(result));
        return lookup;
    }
    for (const addrinfo* entry = list; entry; entry = entry->ai_next) {
        SocketAddress address;
        if (entry->ai_addrlen > sizeof address.storage)
            continue;
        std::memcpy(&address.storage, entry->ai_addr, entry->ai_addrlen);
        address.length = entry->ai_addrlen;
        lookup.addresses.push_back(address);
    }
    ::freeaddrinfo(list);
    return lookup;
}

} // namespace spotwell
