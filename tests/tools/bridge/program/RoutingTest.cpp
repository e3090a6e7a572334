// SPDX-FileCopyrightText: 2026 the spotwell developers
// SPDX-License-Identifier: MIT

#include "tests/fakes/SharedLog.h"
#include "tools/spotwell-bridge/Bridge.h"

#include <gtest/gtest.h>

namespace spotwell::bridge
{

namespace
{

using namespace Qt::Literals::StringLiterals;

const TimePoint heardAt = std::chrono::sys_days{std::chrono::year{2027} / 2 / 3} + std::chrono::hours{9};
const QString clusterSpot =
    u"DX de N0CALL:    21205.0  X1X          Tks so \"Much\"                 0900Z JN34"_s;

Notification spot(const QString& call)
{
    return {u"com.tarnbrooksoftware.spotwell_spot"_s,
            u"string object"_s,
            {{u"combinedCallsign"_s, call},
             {u"timestamp"_s, heardAt},
             {u"megahertz"_s, 14.074},
             {u"dxde_call"_s, u"N0CALL"_s}}};
}

Notification line(const Value& text)
{
    return {u"com.tarnbrooksoftware.spotwell_line"_s,
            u"string object"_s,
            {{u"source"_s, u"node"_s}, {u"line"_s, text}}};
}

class Routing : public testing::Test
{
protected:
    Bridge make(bool withLines = true, bool withDatagrams = true)
    {
        Outlets outlets;
        if (withLines)
            outlets.line = [this](const QString& text) { lines.append(text); };
        if (withDatagrams)
            outlets.datagram = [this](const QByteArray& datagram) { datagrams.append(datagram); };
        return {outlets, complaints};
    }

    SharedLog log;
    Complaints complaints{log};
    QStringList lines;
    QByteArrayList datagrams;
};

TEST_F(Routing, FormsALineAndADatagramOfAWebSpot)
{
    make().handOn(spot(u"X1X"_s), heardAt);
    EXPECT_EQ(lines,
              QStringList{u"DX de N0CALL:    14074.0  X1X                                         0900Z"_s});
    ASSERT_EQ(datagrams.size(), 1);
    EXPECT_TRUE(datagrams[0].contains("<dxcall>X1X</dxcall>"));
    EXPECT_TRUE(datagrams[0].contains("<spottercall>N0CALL</spottercall>"));
    EXPECT_TRUE(log.lines().isEmpty());
}

TEST_F(Routing, PassesClusterLinesUnchanged)
{
    make().handOn(line(clusterSpot), heardAt);
    make().handOnLine(clusterSpot, heardAt);
    EXPECT_EQ(lines, (QStringList{clusterSpot, clusterSpot}));
    ASSERT_EQ(datagrams.size(), 2);
    EXPECT_TRUE(datagrams[0].contains("<dxcall>X1X</dxcall>"));
    EXPECT_EQ(datagrams[0], datagrams[1]);
}

TEST_F(Routing, HandsOnWhereItCan)
{
    make(true, false).handOn(spot(u"X1X"_s), heardAt);
    make(true, false).handOn(line(clusterSpot), heardAt);
    EXPECT_EQ(lines.size(), 2);
    EXPECT_TRUE(datagrams.isEmpty());
    make(false, true).handOn(spot(u"X1X"_s), heardAt);
    make(false, true).handOn(line(clusterSpot), heardAt);
    EXPECT_EQ(lines.size(), 2);
    EXPECT_EQ(datagrams.size(), 2);
}

TEST_F(Routing, ComplainsOfWhatCannotBeUsed)
{
    Bridge bridge = make();
    bridge.handOn(spot(QString()), heardAt);
    bridge.handOn(line(14.074), heardAt);
    bridge.handOn({u"com.tarnbrooksoftware.spotwell_line"_s, u"string object"_s, {}}, heardAt);
    bridge.handOn(line(u""_s), heardAt);
    EXPECT_TRUE(lines.isEmpty());
    bridge.handOn(line(u"To ALL de N0CALL: hello"_s), heardAt);
    EXPECT_EQ(lines, QStringList{u"To ALL de N0CALL: hello"_s});
    EXPECT_TRUE(datagrams.isEmpty());
    EXPECT_EQ(log.lines(), (QStringList{u"a spot without a call or a frequency was left out"_s,
                                        u"a line notification without a line was left out"_s,
                                        u"a line that is empty or too long was left out"_s,
                                        u"a line that is no spot was not sent to N1MM programs"_s}));
}

TEST_F(Routing, IsSilentWhereNothingIsHandedOn)
{
    Bridge bridge = make(false, false);
    bridge.handOn(spot(QString()), heardAt);
    bridge.handOn(line(u""_s), heardAt);
    bridge.handOnLine(u""_s, heardAt);
    EXPECT_TRUE(log.lines().isEmpty());
}

TEST_F(Routing, HasNothingToSayOfOtherLinesWithoutDatagrams)
{
    make(true, false).handOnLine(u"To ALL de N0CALL: hello"_s, heardAt);
    EXPECT_TRUE(log.lines().isEmpty());
}

} // namespace

} // namespace spotwell::bridge
