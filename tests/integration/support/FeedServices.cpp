// SPDX-FileCopyrightText: 2026 the spotwell developers
// SPDX-License-Identifier: MIT

#include "tests/integration/support/FeedServices.h"

#include "tests/integration/support/TlsFront.h"

#include <sys/socket.h>
#include <utility>

namespace spotwell
{

namespace
{

/// Where the request with this head goes; empty when it is no GET that says so.
std::string addressIn(const std::string& head, const std::string& scheme)
{
    const std::string get = "GET ";
    const std::string host = "\r\nHost: ";
    const auto pathEnd = head.find(' ', get.size());
    const auto hostStart = head.find(host);
    if (!head.starts_with(get) || pathEnd == std::string::npos || hostStart == std::string::npos)
        return {};
    const auto nameStart = hostStart + host.size();
    return scheme + "://" + head.substr(nameStart, head.find('\r', nameStart) - nameStart) +
           head.substr(get.size(), pathEnd - get.size());
}

} // namespace

FeedServices::FeedServices() = default;

FeedServices::~FeedServices() = default;

void FeedServices::answer(const std::string& address, LoopbackHttpServer::Handler handler)
{
    const std::lock_guard lock(mutex_);
    handlers_[address] = std::move(handler);
}

void FeedServices::start(PrivateNetwork::Listeners listeners, const QByteArray& certificate)
{
    front_.reset();
    behindTls_.reset();
    plain_.reset();
    // What was served on them before has ended them.
    constexpr int mostWaiting = 64;
    for (const int listener : {listeners.http, listeners.https})
        ::listen(listener, mostWaiting);
    plain_ = std::make_unique<LoopbackHttpServer>(handlerFor("http"), listeners.http);
    behindTls_ = std::make_unique<LoopbackHttpServer>(handlerFor("https"));
    front_ = std::make_unique<TlsFront>(listeners.https, certificate,
                                        static_cast<std::uint16_t>(behindTls_->port()));
}

std::vector<FeedServices::Request> FeedServices::requests() const
{
    const std::lock_guard lock(mutex_);
    return requests_;
}

std::vector<FeedServices::Request> FeedServices::requests(const std::string& address) const
{
    std::vector<Request> found = requests();
    std::erase_if(found, [&address](const Request& request) { return request.address != address; });
    return found;
}

int FeedServices::handshakes() const
{
    return front_->handshakes();
}

LoopbackHttpServer::Handler FeedServices::handlerFor(const std::string& scheme)
{
    return [this, scheme](LoopbackHttpServer::Connection& connection, const std::string& head) {
        const std::string address = addressIn(head, scheme);
        LoopbackHttpServer::Handler handler = [](LoopbackHttpServer::Connection& asking, const std::string&) {
            asking.answer("404 Not Found", "There is no such page.");
        };
        {
            const std::lock_guard lock(mutex_);
            requests_.push_back({address, head, std::chrono::steady_clock::now()});
            if (const auto found = handlers_.find(address); found != handlers_.end())
                handler = found->second;
        }
        handler(connection, head);
    };
}

} // namespace spotwell
