// SPDX-FileCopyrightText: 2026 the spotwell developers
// SPDX-License-Identifier: MIT

#include "tests/tools/bridge/clients/Xdx.h"

#include "tests/support/WaitUntil.h"
#include "tests/tools/bridge/clients/ClientsFixture.h"
#include "tests/tools/bridge/clients/FourFeeds.h"

#include <set>

namespace spotwell::bridge
{

namespace
{

using XdxTest = ClientsFixture;

/// How a radio is told a frequency given in kHz with one decimal.
QString inHertz(QString kilohertz)
{
    return kilohertz.remove(u'.') + QStringLiteral("00");
}

TEST_F(XdxTest, ShowsTheSpotsOfAllFeeds)
{
    Xdx xdx(bridge.port());
    xdx.connect();
    ASSERT_TRUE(bridge.welcomes(QStringLiteral("N0CALL")));
    EXPECT_TRUE(waitUntil([&] { return xdx.messages().contains(QStringLiteral("Hello N0CALL")); }))
        << xdx.messages().toStdString();

    FourFeeds sources(home, bus);
    const std::vector<FeedSpot> spots = FourFeeds::arriveAt(bridge);
    ASSERT_EQ(spots.size(), std::size_t{4} * FourFeeds::spotsOfEach);
    EXPECT_EQ(
        missing(spots, [&xdx](const FeedSpot& spot) { return xdx.spots().filter(spot.line).size() == 1; }),
        QStringList())
        << "in\n"
        << xdx.spots().join(u'\n').toStdString();
    const QStringList shown = xdx.spots();
    for (const QString& line : FourFeeds::clusterLines())
        EXPECT_TRUE(shown.contains(line)) << line.toStdString();
    // Nothing comes twice.
    EXPECT_EQ(std::set<QString>(shown.begin(), shown.end()).size(), static_cast<std::size_t>(shown.size()));

    // The list has understood them: each can be tuned to.
    xdx.chooseEverySpot();
    EXPECT_EQ(
        missing(spots,
                [&xdx](const FeedSpot& spot) { return xdx.tunedTo().contains(inHertz(spot.frequency)); }),
        QStringList())
        << "in\n"
        << xdx.tunedTo().join(u'\n').toStdString();
    xdx.keepPicture(QStringLiteral("xdx"));
    EXPECT_EQ(sources.end(), 0);
}

} // namespace

} // namespace spotwell::bridge
