// SPDX-FileCopyrightText: 2026 the spotwell developers
// SPDX-License-Identifier: MIT

#include "tests/integration/support/WebFaultFixture.h"

#include <netinet/in.h>
#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

namespace spotwell
{

namespace
{

using namespace Qt::StringLiterals;

int connectTo(std::uint16_t port)
{
    const int descriptor = ::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_port = htons(port);
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    (void)::connect(descriptor, reinterpret_cast<const sockaddr*>(&address), sizeof address);
    return descriptor;
}

std::string answerOf(const QString& feed, int count)
{
    if (feed == u"POTA")
        return potaAnswer(count);
    return feed == u"DXSummit" ? dxSummitAnswer(count) : wsprnetPage(count);
}

} // namespace

const std::string& addressOf(const QString& feed)
{
    if (feed == u"POTA")
        return potaAddress;
    return feed == u"DXSummit" ? dxSummitAddress : wsprnetAddress;
}

char letterOf(const QString& feed)
{
    if (feed == u"POTA")
        return 'A';
    return feed == u"DXSummit" ? 'B' : 'C';
}

LoopbackHttpServer::Handler forwardingTo(std::uint16_t port)
{
    return [port](LoopbackHttpServer::Connection& connection, const std::string& head) {
        // A connection for each request: the service is asked to close it behind the answer.
        std::string request = head;
        if (const auto keepAlive = request.find("Keep-Alive"); keepAlive != std::string::npos)
            request.replace(keepAlive, 10, "close");
        const int service = connectTo(port);
        (void)::send(service, request.data(), request.size(), MSG_NOSIGNAL);
        char piece[16384];
        ssize_t count = 0;
        while ((count = ::recv(service, piece, sizeof piece, 0)) > 0) {
            if (!connection.send({piece, static_cast<std::size_t>(count)}))
                break;
        }
        ::close(service);
        connection.close(count < 0);
    };
}

QStringList WebFaultFixture::allSources()
{
    return {u"POTA"_s, u"DXSummit"_s, u"WSPRnet"_s};
}

void WebFaultFixture::TearDown()
{
    if (program && program->isRunning()) {
        EXPECT_TRUE(ping.answers()) << "the window hangs";
        SettingsTexts settings = home.settings();
        end();
        EXPECT_EQ(home.settings(), settings);
    }
    FeedsFixture::TearDown();
}

void WebFaultFixture::startAll(const QStringList& hosts)
{
    logger = makeLogger(u"6.50"_s);
    SettingsTexts settings = feedSettings();
    settings.insert(settingsFor(PrivateNetwork::nodePort));
    startWith(settings, clock.variables(), hosts);
    distantNode.emplace(::dup(listeners->node));
    ASSERT_TRUE(distantNode->accept());
    ASSERT_GT(distantNode->send("login: "), 0);
    ASSERT_TRUE(waitUntil([this] { return distantNode->heard() == "N0CALL\n"; }));
    ASSERT_TRUE(ping.answers());
    mostKiB = program->residentKiB();
}

void WebFaultFixture::answerWell(int count, const QStringList& feeds)
{
    for (const QString& feed : feeds)
        services.answer(addressOf(feed), answering("200 OK", answerOf(feed, count)));
}

QStringList WebFaultFixture::callsOf(const QString& feed)
{
    while (spotsLeft() > 0) {
        const QStringList spot = nextSpot();
        const QString call = spot.filter(u"combinedCallsign="_s).value(0).section(u':', 1);
        calls_[spot.filter(u"source="_s).value(0).section(u':', 1)].append(call);
    }
    return calls_[feed];
}

void WebFaultFixture::expectSpots(int count, const QStringList& feeds)
{
    const auto spotsOf = [this, count](const QString& feed) {
        const QStringList wanted = callsUpTo(count, letterOf(feed));
        QStringList calls = callsOf(feed);
        calls.removeIf([&](const QString& call) { return !wanted.contains(call); });
        return calls;
    };
    const auto have = [&](const QString& feed) { return spotsOf(feed).size() >= count; };
    EXPECT_TRUE(askedUntil([&] { return std::all_of(feeds.begin(), feeds.end(), have); }));
    for (const QString& feed : feeds)
        EXPECT_EQ(spotsOf(feed), callsUpTo(count, letterOf(feed))) << feed.toStdString();
}

QStringList WebFaultFixture::entriesAbout(const QString& feed) const
{
    if (feed == u"POTA")
        return entriesOf({u"potaTimer"_s, u"parsePotaData"_s});
    return feed == u"DXSummit" ? entriesOf({u"dxsummitTimer"_s, u"parseDxSummitData"_s})
                               : entriesOf({u"wsprnetTimer"_s, u"parseWsprnetData"_s});
}

void WebFaultFixture::expectEntries(const QString& feed, const QStringList& texts, int spots)
{
    EXPECT_TRUE(askedUntil([&] {
        const QStringList entries = entriesAbout(feed);
        return std::all_of(texts.begin(), texts.end(),
                           [&](const QString& text) { return entries.contains(text); }) &&
               callsOf(feed).size() >= spots;
    }));
    // In this order: what was said is about requests that have come.
    const QStringList said = entriesAbout(feed);
    const auto requests = static_cast<qsizetype>(services.requests(addressOf(feed)).size());
    for (const QString& text : texts)
        EXPECT_TRUE(requests == 0 || said.count(text) <= requests) << text.toStdString();
    QStringList once = said;
    once.removeDuplicates();
    // Said of what comes meanwhile, for a service is asked each second until its answer was handled: too many
    // wait; or the rest of an answer that was given up still comes, in the HTTP client's thread.
    once.removeIf([](const QString& entry) {
        return entry.endsWith(u"Timer:error:[Too many answers are waiting to be handled.]") ||
               entry.endsWith(u"Timer:error:[The server sends too much that is no answer.]");
    });
    EXPECT_EQ(once, texts);
    EXPECT_GE(callsOf(feed).size(), spots);
}

void WebFaultFixture::expectTheNodeGoesOn()
{
    const QByteArray line = spotLine(++nodeLines_);
    ASSERT_EQ(distantNode->send(line + "\r\n"), line.size() + 2);
    EXPECT_EQ(next(*logger, u"signal"_s), notificationOf(line));
    EXPECT_EQ(distantNode->heard(), "N0CALL\n");
    EXPECT_TRUE(ping.answers());
}

} // namespace spotwell
