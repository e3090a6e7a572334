// SPDX-FileCopyrightText: 2026 the spotwell developers
// SPDX-License-Identifier: MIT

#include "tests/integration/support/FeedsFixture.h"

#include <array>
#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

namespace spotwell
{

void FeedsFixture::SetUp()
{
    if (const auto reason = PrivateNetwork::refusal())
        GTEST_SKIP() << "NOT TESTED: this machine permits no network of a process's own: "
                     << reason->toStdString();
}

void FeedsFixture::TearDown()
{
    gate.open();
    ProgramFixture::TearDown();
    if (listeners) {
        for (const int listener : {listeners->http, listeners->https, listeners->node})
            ::close(listener);
    }
}

QStringList FeedsFixture::allFeeds()
{
    return {QStringLiteral("pota"), QStringLiteral("dxsummit"), QStringLiteral("wsprnet")};
}

QStringList FeedsFixture::allHosts()
{
    return {QStringLiteral("api.pota.app"), QStringLiteral("www.dxsummit.fi"),
            QStringLiteral("www.wsprnet.org")};
}

SettingsTexts FeedsFixture::feedSettings(const QStringList& feeds)
{
    SettingsTexts settings;
    for (const char* text : {"dxcluster", "port", "callsign", "password"})
        settings.insert(QString::fromLatin1(text), QString());
    for (const char* choice :
         {"reconnect", "wsprnet", "dxsummit", "pota", "skimmers", "dxsexclusive", "dark"})
        settings.insert(QString::fromLatin1(choice), QStringLiteral("false"));
    for (const QString& feed :
         feeds + QStringList{QStringLiteral("skimmers"), QStringLiteral("dxsexclusive")})
        settings[feed] = QStringLiteral("true");
    return settings;
}

void FeedsFixture::startFeeds(const QStringList& feeds, const QStringList& variables,
                              const QStringList& hosts)
{
    startWith(feedSettings(feeds), variables, hosts);
}

void FeedsFixture::startWith(const SettingsTexts& settings, const QStringList& variables,
                             const QStringList& hosts)
{
    spotListener_ = std::make_unique<BusPeer>(bus);
    spotListener_->command({QStringLiteral("listen"), QStringLiteral("com.tarnbrooksoftware.spotwell_spot")});
    home.writeSettings(settings);
    network.emplace(home.filePath(QStringLiteral("network")), hosts);
    started = std::chrono::steady_clock::now();
    program.emplace(home, bus.address(), variables, network->launcher() + launcher);
    listeners = network->takeListeners(!isRefused);
}

bool FeedsFixture::isCalled() const
{
    std::array<pollfd, 2> calls{{{listeners->http, POLLIN, 0}, {listeners->https, POLLIN, 0}}};
    return ::poll(calls.data(), calls.size(), 0) == 2;
}

void FeedsFixture::serve(const QByteArray& certificate)
{
    services.start({::dup(listeners->http), ::dup(listeners->https), listeners->node}, certificate);
}

LoopbackHttpServer::Handler FeedsFixture::held(LoopbackHttpServer::Handler answer)
{
    return [this, answer = std::move(answer)](LoopbackHttpServer::Connection& connection,
                                              const std::string& head) {
        gate.wait(std::chrono::seconds{100});
        answer(connection, head);
    };
}

bool FeedsFixture::asked(const std::string& address, std::size_t count) const
{
    return waitUntil([&] { return services.requests(address).size() >= count; });
}

QStringList FeedsFixture::nextSpot()
{
    const QStringList seen = next(*spotListener_, QStringLiteral("signal"));
    if (seen.isEmpty())
        return seen;
    const QStringList front{QStringLiteral("signal"),
                            QStringLiteral("/com/tarnbrooksoftware/DistributedNotifications"),
                            QStringLiteral("com.tarnbrooksoftware.DistributedNotifications"),
                            QStringLiteral("Posted"),
                            QStringLiteral("ssa{sv}"),
                            QStringLiteral("com.tarnbrooksoftware.spotwell_spot"),
                            QStringLiteral("string object")};
    EXPECT_EQ(seen.first(front.size()), front);
    return seen.mid(front.size());
}

QStringList FeedsFixture::nextCalls(int count)
{
    QStringList calls;
    while (calls.size() < count) {
        const QStringList spot = nextSpot();
        if (spot.isEmpty())
            break;
        calls.append(spot.first().section(QLatin1Char(':'), 1));
    }
    return calls;
}

int FeedsFixture::spotsLeft()
{
    return spotListener_->count(QStringLiteral("signal"));
}

QStringList FeedsFixture::entriesOf(const QStringList& operations) const
{
    QStringList found = entries();
    found.removeIf([&operations](const QString& entry) {
        return !operations.contains(entry.section(QLatin1Char(':'), 0, 0));
    });
    return found;
}

} // namespace spotwell
