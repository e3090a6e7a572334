// SPDX-FileCopyrightText: 2026 the spotwell developers
// SPDX-License-Identifier: MIT

#include "feeds/PotaFeed.h"
#include "tests/fakes/FakeServices.h"
#include "tests/feeds/FakeFeedHost.h"
#include "tests/feeds/PotaSpots.h"
#include "tests/support/Printers.h"

#include <gtest/gtest.h>

namespace spotwell
{

using namespace Qt::Literals::StringLiterals;

TEST(PotaSkimmers, AreTold)
{
    FakeFeedHost host;
    FakeLog log;
    struct Row {
        QByteArray spotter;
        bool skimmer;
    };
    const std::vector<Row> rows = {
        {R"("N0CALL-#")", true},
        {R"("N0CALL-#-2")", true},
        {R"("-#")", true},
        {"", true},
        {R"("N0CALL#")", false},
        {R"("N0CALL-")", false},
        {R"("N0CALL#-")", false},
        {R"("N0CALL- #")", false},
        {R"("")", false},
        {"null", false},
        {"7", false},
        {R"(["-#"])", false},
    };
    for (const Row& row : rows) {
        const QList<QByteArray> answer = {potaSpotOf("1", "NEIGHBOUR"),
                                          potaSpotWith({{"spotter", row.spotter}})};
        PotaFeed fresh(host, log);
        for (const bool showSkimmers : {false, true}) {
            host.clear();
            fresh.parsePotaData(array(answer), showSkimmers);
            QStringList expected;
            if (!showSkimmers)
                expected.append(u"'NEIGHBOUR'"_s);
            // One that was skipped is not remembered, and goes as soon as it is wanted.
            if (row.skimmer == showSkimmers)
                expected.append(u"'X1X'"_s);
            EXPECT_EQ(column(host.spots, call), expected) << row.spotter.toStdString();
            EXPECT_EQ(host.pauses.size(), host.spots.size());
            EXPECT_EQ(fresh.remembered().contains(29000002), !row.skimmer || showSkimmers)
                << row.spotter.toStdString();
        }
    }
    EXPECT_EQ(log.lines, QStringList());
}

TEST(PotaSkimmers, HaveTheModeInTheirComments)
{
    FakeFeedHost host;
    FakeLog log;
    struct Row {
        QByteArray spotter;
        QByteArray mode;
        QByteArray comments;
        QString dxde;
        QString comment;
    };
    const QByteArray skimmer = R"("N0CALL-#")";
    const QByteArray heard = R"("RBN 12 dB 22 WPM")";
    const std::vector<Row> rows = {
        {skimmer, R"("CW")", heard, u"'N0CALL-#'"_s, u"'CW 12 dB 22 WPM'"_s},
        {R"("N0-#CALL")", R"("CW")", heard, u"'N0-#CALL'"_s, u"'CW 12 dB 22 WPM'"_s},
        {"", R"("CW")", heard, u"-"_s, u"'CW 12 dB 22 WPM'"_s},
        {skimmer, R"("CW")", R"("RBN via RBN, xRBNRBN")", u"'N0CALL-#'"_s, u"'CW via CW, xCWCW'"_s},
        {skimmer, R"("RBN+")", R"("RBNRBN")", u"'N0CALL-#'"_s, u"'RBN+RBN+'"_s},
        {skimmer, R"("CW")", R"("rbn Rbn RB N")", u"'N0CALL-#'"_s, u"'rbn Rbn RB N'"_s},
        {skimmer, R"("CW")", R"("")", u"'N0CALL-#'"_s, u"''"_s},
        {skimmer, R"("CW")", "null", u"'N0CALL-#'"_s, u"''"_s},
        {skimmer, R"("CW")", "7", u"'N0CALL-#'"_s, u"''"_s},
        {skimmer, R"("CW")", "", u"'N0CALL-#'"_s, u"-"_s},
        // Nothing to put in leaves what is there.
        {skimmer, R"("")", heard, u"'N0CALL-#'"_s, u"'RBN 12 dB 22 WPM'"_s},
        {skimmer, "null", heard, u"'N0CALL-#'"_s, u"'RBN 12 dB 22 WPM'"_s},
        {skimmer, "", heard, u"'N0CALL-#'"_s, u"'RBN 12 dB 22 WPM'"_s},
        {skimmer, "7", heard, u"'N0CALL-#'"_s, u"'RBN 12 dB 22 WPM'"_s},
        {R"("N0CALL")", R"("CW")", heard, u"'N0CALL'"_s, u"'RBN 12 dB 22 WPM'"_s},
        {"null", R"("CW")", heard, u"''"_s, u"'RBN 12 dB 22 WPM'"_s},
        {"7", R"("CW")", heard, u"''"_s, u"'RBN 12 dB 22 WPM'"_s},
    };
    for (const Row& row : rows) {
        PotaFeed fresh(host, log);
        host.clear();
        fresh.parsePotaData(
            array({potaSpotWith({{"spotter", row.spotter}, {"mode", row.mode}, {"comments", row.comments}})}),
            true);
        EXPECT_EQ(column(host.spots, dxde), QStringList(row.dxde)) << row.comments.toStdString();
        EXPECT_EQ(column(host.spots, comment), QStringList(row.comment)) << row.comments.toStdString();
    }
}

} // namespace spotwell
