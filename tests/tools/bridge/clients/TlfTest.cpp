// SPDX-FileCopyrightText: 2026 the spotwell developers
// SPDX-License-Identifier: MIT

#include "tests/tools/bridge/clients/Tlf.h"

#include "tests/support/WaitUntil.h"
#include "tests/tools/bridge/clients/ClientsFixture.h"
#include "tests/tools/bridge/clients/FourFeeds.h"

#include <QDir>
#include <QFile>

#include <algorithm>
#include <set>

namespace spotwell::bridge
{

namespace
{

class TlfTest : public ClientsFixture
{
protected:
    /// Whether its screen shows something of this form.
    [[nodiscard]] static bool shows(const Tlf& tlf, const QRegularExpression& form)
    {
        return tlf.screen().join(u'\n').contains(form);
    }
    /// Keeps the terminal's text as NAME.txt in the directory SPOTWELL_PICTURES, if there is one.
    static void keepScreen(const Tlf& tlf, const QString& name)
    {
        const QString directory = qEnvironmentVariable("SPOTWELL_PICTURES");
        QFile file(QDir(directory).filePath(name + QStringLiteral(".txt")));
        if (!directory.isEmpty() && file.open(QIODevice::WriteOnly))
            file.write(tlf.screen().join(u'\n').toUtf8());
    }
};

/// Those of the spots that the band map has to show: on one of its bands, which end below 30 MHz, and alone
/// there; of several on one frequency it shows one.
std::vector<FeedSpot> spotsForBandMap(const std::vector<FeedSpot>& spots)
{
    std::vector<FeedSpot> result;
    for (const FeedSpot& spot : spots) {
        const auto there = std::count_if(spots.begin(), spots.end(), [&spot](const FeedSpot& other) {
            return other.frequency == spot.frequency;
        });
        if (there == 1 && spot.frequency.toDouble() < 30000.0)
            result.push_back(spot);
    }
    return result;
}

/// How the band map shows it: the frequency, and the callsign as far as there is room.
QRegularExpression inBandMap(const FeedSpot& spot)
{
    constexpr qsizetype room = 8;
    return QRegularExpression(QStringLiteral("(?<!\\S)%1 +%2")
                                  .arg(QRegularExpression::escape(spot.frequency),
                                       QRegularExpression::escape(spot.call.left(room))));
}

TEST_F(TlfTest, ShowsTheSpotsOfAllFeeds)
{
    const Tlf tlf(bridge.port());
    ASSERT_TRUE(tlf.becomesReady()) << tlf.screen().join(u'\n').toStdString();
    ASSERT_TRUE(bridge.welcomes(QStringLiteral("N0CALL")));
    EXPECT_TRUE(waitUntil([&] { return tlf.received().contains(QStringLiteral("Hello N0CALL")); }))
        << tlf.received().toStdString();

    FourFeeds sources(home, bus);
    const std::vector<FeedSpot> spots = FourFeeds::arriveAt(bridge);
    ASSERT_EQ(spots.size(), std::size_t{4} * FourFeeds::spotsOfEach);
    EXPECT_EQ(missing(spots, [&tlf](const FeedSpot& spot) { return shows(tlf, spot.line); }), QStringList())
        << "in\n"
        << tlf.screen().join(u'\n').toStdString();
    keepScreen(tlf, QStringLiteral("tlf-cluster"));

    // The map has understood them.
    tlf.enter(QStringLiteral(":MAP"));
    ASSERT_TRUE(tlf.shows(QStringLiteral("bands: all"))) << tlf.screen().join(u'\n').toStdString();
    const std::vector<FeedSpot> mapped = spotsForBandMap(spots);
    std::set<QString> feeds;
    for (const FeedSpot& spot : mapped)
        feeds.insert(spot.feed);
    EXPECT_EQ(feeds.size(), 4U);
    EXPECT_EQ(missing(mapped, [&tlf](const FeedSpot& spot) { return shows(tlf, inBandMap(spot)); }),
              QStringList())
        << "in\n"
        << tlf.screen().join(u'\n').toStdString();
    keepScreen(tlf, QStringLiteral("tlf-map"));
    EXPECT_EQ(sources.end(), 0);
}

} // namespace

} // namespace spotwell::bridge
