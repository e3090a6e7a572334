// SPDX-FileCopyrightText: 2026 the spotwell developers
// SPDX-License-Identifier: MIT

#pragma once

#include "tests/integration/support/FeedsFixture.h"
#include "tests/integration/support/SteppedClock.h"
#include "tests/integration/support/WindowPing.h"

#include <QMap>

#include <algorithm>
#include <memory>
#include <optional>

namespace spotwell
{

/// The shipped program with everything on: three web services, a node that it has logged in to, a logger.
/// What happens to one of them the others are not to notice, nor the user. A feed is named by its spots'
/// source: "POTA", "DXSummit", "WSPRnet".
class WebFaultFixture : public FeedsFixture
{
protected:
    void TearDown() override;

    /// Starts it; it has logged in to the node when this returns. Nobody serves yet.
    void startAll(const QStringList& hosts = allHosts());
    /// These services have `count` spots from now on.
    void answerWell(int count, const QStringList& feeds = allSources());
    [[nodiscard]] static QStringList allSources();
    /// Waits, as askedUntil() does, until these have come from these services, each once and in their order.
    void expectSpots(int count, const QStringList& feeds = allSources());
    /// The calls of a feed's spots so far.
    [[nodiscard]] QStringList callsOf(const QString& feed);
    /// What was logged about a feed.
    [[nodiscard]] QStringList entriesAbout(const QString& feed) const;
    /// Waits for these entries, each at least once, while the service is asked again and again, and for so
    /// many spots. Nothing else is logged about the feed, and nothing twice for one request
    /// that came.
    void expectEntries(const QString& feed, const QStringList& texts, int spots = 0);
    /// The node says a spot line, the logger gets it, and the window answers.
    void expectTheNodeGoesOn();
    /// Waits while the services are asked again and again: for POTA and DXSummit half a minute passes in a
    /// second and a half. Looks at the memory that the program has in use meanwhile.
    template <typename Condition>
    [[nodiscard]] bool askedUntil(Condition condition)
    {
        constexpr std::chrono::milliseconds patience{1500};
        auto asked = std::chrono::steady_clock::now();
        return ping.answersWhile([&] {
            mostKiB = std::max(mostKiB, program->residentKiB());
            if (condition())
                return true;
            if (const auto now = std::chrono::steady_clock::now(); now - asked > patience) {
                asked = now;
                clock.step(std::chrono::seconds{31});
                distantNode->send("Still here\r\n"); // however long it takes, it has not fallen silent
            }
            return false;
        });
    }

    SteppedClock clock{home.filePath(QStringLiteral("clock"))};
    WindowPing ping;
    std::unique_ptr<BusPeer> logger;
    std::optional<LoopbackPeer> distantNode;
    qint64 mostKiB = 0;

private:
    QMap<QString, QStringList> calls_;
    int nodeLines_ = 0;
};

/// The address of a feed's service, and how the calls in answerWell()'s answers end.
[[nodiscard]] const std::string& addressOf(const QString& feed);
[[nodiscard]] char letterOf(const QString& feed);

/// Gives each request to a web service at a port of 127.0.0.1 and hands its answer on as it comes, breaks
/// included.
[[nodiscard]] LoopbackHttpServer::Handler forwardingTo(std::uint16_t port);

} // namespace spotwell
