// SPDX-FileCopyrightText: 2026 the spotwell developers
// SPDX-License-Identifier: MIT

#pragma once

#include "tests/integration/support/FeedAnswers.h"
#include "tests/integration/support/FeedIdentities.h"
#include "tests/integration/support/FeedServices.h"
#include "tests/integration/support/PrivateNetwork.h"
#include "tests/integration/support/ProgramFixture.h"
#include "tests/support/web/UrlTransfers.h"

#include <memory>
#include <optional>
#include <string>

namespace spotwell
{

inline const std::string potaAddress = "https://api.pota.app/spot/activator";
inline const std::string dxSummitAddress = "http://www.dxsummit.fi/api/v1/spots";
inline const std::string wsprnetAddress = "http://www.wsprnet.org/drupal/wsprnet/spots";

/// The shipped program on a network where the web services are the test's, and a listener for the spots.
class FeedsFixture : public ProgramFixture
{
protected:
    void SetUp() override;
    void TearDown() override;

    /// The program's settings with all feeds and their options on, or only some of the feeds.
    [[nodiscard]] static SettingsTexts feedSettings(const QStringList& feeds = allFeeds());
    [[nodiscard]] static QStringList allFeeds();
    /// Starts the program with these feeds (with these settings). Nobody serves on its network yet, nor is
    /// there a node.
    void startFeeds(const QStringList& feeds = allFeeds(), const QStringList& variables = {},
                    const QStringList& hosts = allHosts());
    void startWith(const SettingsTexts& settings, const QStringList& variables = {},
                   const QStringList& hosts = allHosts());
    [[nodiscard]] static QStringList allHosts();
    /// Whether somebody waits to be served, over http and over https.
    [[nodiscard]] bool isCalled() const;
    /// Begins to serve, or serves anew.
    void serve(const QByteArray& certificate = potaCertificate);

    /// This answer, but not before the gate is open.
    LoopbackHttpServer::Handler held(LoopbackHttpServer::Handler answer);
    /// Waits until an address was asked for `count` times.
    [[nodiscard]] bool asked(const std::string& address, std::size_t count = 1) const;
    /// The fields of the next spot's dictionary, as "key=type:value"; empty when none comes.
    QStringList nextSpot();
    /// The calls of so many spots, in the order they came.
    QStringList nextCalls(int count);
    /// How many spots came that were not taken.
    int spotsLeft();
    /// The log's entries that begin with one of these, in the order they were written.
    [[nodiscard]] QStringList entriesOf(const QStringList& operations) const;

    /// The program's, while it runs.
    std::optional<PrivateNetwork> network;
    std::optional<PrivateNetwork::Listeners> listeners;
    /// Whether nobody listens for web services when the program starts, until somebody serves.
    bool isRefused = false;
    /// Opened by the test; in the end it is open anyway.
    Gate gate;
    FeedServices services;
    /// Just before the program was.
    Moment started{};

private:
    std::unique_ptr<BusPeer> spotListener_;
};

} // namespace spotwell
