// SPDX-FileCopyrightText: 2026 the spotwell developers
// SPDX-License-Identifier: MIT

#include "tests/tools/bridge/receivers/LoggerFixture.h"

namespace spotwell
{

namespace
{

using namespace Qt::Literals::StringLiterals;

const QString clusterLine =
    u"DX de N0CALL:    21205.0  X1X          up\"Tks so Much\"GL 'Team'\\!     1428Z JN34"_s;

/// One of the receivers of the document: how it is started, and how it writes.
struct Receiver {
    const char* description;
    QString command;
    std::string busName;
    /// The spot of deliverSpot(), in the order that the receiver's dictionaries have.
    std::string spot;
    /// What is left of a spot with values of strange types, and of one in the year 294247.
    std::string oddSpot;
    std::string lateSpot;
};

void PrintTo(const Receiver& receiver, std::ostream* out)
{
    *out << receiver.description;
}

class ReceiversTest : public LoggerFixture, public testing::WithParamInterface<Receiver>
{
protected:
    /// Starts the receiver and reads its first line.
    void startReceiver(const QString& version = {})
    {
        receiver = start(GetParam().command + u' ' + version);
        ASSERT_EQ(receiver->readLine(), R"({"ready":{"name":")" + GetParam().busName + R"("}})");
    }
    std::string nextLine() { return receiver->readLine().value_or("nothing came"); }
    /// Emits a signal like spotwell's with whatever arguments, written as busctl takes them.
    void emit(const QString& arguments)
    {
        EXPECT_EQ(run(u"busctl --user -- emit /com/tarnbrooksoftware/DistributedNotifications "
                      "com.tarnbrooksoftware.DistributedNotifications Posted "_s +
                      arguments),
                  "");
    }

    std::unique_ptr<ChildProcess> receiver;
};

TEST_P(ReceiversTest, IsSeenAsTheLogger)
{
    startReceiver();
    const auto list = applications.runningApplications();
    ASSERT_EQ(list.size(), 1U);
    EXPECT_EQ(list[0].displayName, u"Logwright"_s);
    EXPECT_EQ(list[0].information->shortVersion, u"6.45"_s);
}

TEST_P(ReceiversTest, TakesEveryFieldOfASpot)
{
    startReceiver();
    deliverSpot();
    EXPECT_EQ(nextLine(), GetParam().spot);
}

TEST_P(ReceiversTest, TakesLinesAsTheyAre)
{
    startReceiver();
    for (const QString& line : {clusterLine, u"DX de second"_s, u"DX de third"_s})
        deliver(line);
    EXPECT_TRUE(isRunning);
    EXPECT_EQ(nextLine(), R"({"line":{"line":"DX de N0CALL:    21205.0  X1X          up\"Tks so Much\"GL )"
                          R"('Team'\\!     1428Z JN34","source":"dx.example.net"}})");
    EXPECT_EQ(nextLine(), R"({"line":{"line":"DX de second","source":"dx.example.net"}})");
    EXPECT_EQ(nextLine(), R"({"line":{"line":"DX de third","source":"dx.example.net"}})");
}

TEST_P(ReceiversTest, TakesTheCommandWithAnOlderVersion)
{
    startReceiver(u"6.44"_s);
    deliver(clusterLine);
    EXPECT_TRUE(isRunning);
    EXPECT_EQ(console, QStringList{});
    EXPECT_EQ(nextLine(), R"({"command":{"line":"DX de N0CALL:    21205.0  X1X          )"
                          R"(up.Tks so Much.GL .Team..!     1428Z JN34"}})");
}

TEST_P(ReceiversTest, PassesOverWhatIsStrange)
{
    startReceiver();
    const QString spot = u"com.tarnbrooksoftware.spotwell_spot "_s;
    emit(u"s "_s + spot);
    emit(u"sss "_s + spot + u"o i"_s);
    emit(u"'ssa{ss}' "_s + spot + u"o 1 mode CW"_s);
    emit(u"'ssa{sv}' com.tarnbrooksoftware.other o 0"_s);
    emit(u"'ssa{sv}' "_s + spot +
         u"o 9 mode b true grid i 5 comments as 1 x megahertz d nan latitude d inf longitude d 7 "
         "unheard-of s yes source s '' de_latitude v s x"_s);
    emit(u"'ssa{sv}' "_s + spot + u"o 2 mode s CW timestamp x 9223372036854775807"_s);
    emit(u"'ssa{sv}' "_s + spot + u"o 1 timestamp x -1"_s);
    EXPECT_EQ(nextLine(), GetParam().oddSpot);
    EXPECT_EQ(nextLine(), GetParam().lateSpot);
    EXPECT_EQ(nextLine(), R"({"spot":{"timestamp":"1969-12-31T23:59:59.999999Z"}})");
}

TEST_P(ReceiversTest, RunsBesideTheBridge)
{
    startReceiver();
    const auto bridge = start(u"spotwell-bridge --print"_s);
    ASSERT_NE(bridge->readLine().value_or("").find(R"("ready":true)"), std::string::npos);
    EXPECT_EQ(applications.runningApplications().size(), 2U);
    deliver(u"DX de second"_s);
    EXPECT_EQ(nextLine(), R"({"line":{"line":"DX de second","source":"dx.example.net"}})");
    EXPECT_NE(bridge->readLine().value_or("").find(R"("line":"DX de second")"), std::string::npos);
}

TEST_P(ReceiversTest, SaysThatTheNameIsTaken)
{
    startReceiver();
    const auto second = start(GetParam().command);
    const std::string complaint = second->readLine().value_or("");
    EXPECT_NE(complaint.find("-receiver: the bus name " + GetParam().busName + " is taken"),
              std::string::npos)
        << complaint;
    EXPECT_EQ(second->wait(), 1);
}

INSTANTIATE_TEST_SUITE_P(
    Receivers, ReceiversTest,
    testing::Values(
        Receiver{"qtdbus", QStringLiteral(QTDBUS_RECEIVER), "com.tarnbrooksoftware.Application.QtReceiver",
                 R"({"spot":{"combinedCallsign":"X1X/P","comments":"“Grüße” \\ 日本 📻","de_latitude":0.1,)"
                 R"("de_longitude":-7.25,"dxde_call":"","grid":"JN34ab","latitude":-33.856784,)"
                 R"("longitude":151.215297,"megahertz":14.0745,"mode":"FT8","pota_ref":"DE-0001",)"
                 R"("source":"POTA","timestamp":"2027-02-03T09:05:07.000450Z"}})",
                 R"({"spot":{"longitude":7,"source":"","unheard-of":"yes"}})",
                 R"({"spot":{"mode":"CW","timestamp":"294247-01-10T04:00:54.775807Z"}})"},
        Receiver{
            "python", QStringLiteral(EXAMPLES "/python-receiver/receiver.py"),
            "com.tarnbrooksoftware.Application.PythonReceiver",
            R"({"spot":{"combinedCallsign":"X1X/P","mode":"FT8","timestamp":"2027-02-03T09:05:07.000450Z",)"
            R"("megahertz":14.0745,"comments":"\u201cGr\u00fc\u00dfe\u201d \\ \u65e5\u672c \ud83d\udcfb",)"
            R"("source":"POTA","grid":"JN34ab","latitude":-33.856784,"longitude":151.215297,)"
            R"("dxde_call":"","de_latitude":0.1,"de_longitude":-7.25,"pota_ref":"DE-0001"}})",
            R"({"spot":{"longitude":7.0,"unheard-of":"yes","source":""}})", R"({"spot":{"mode":"CW"}})"}),
    [](const auto& instance) { return std::string(instance.param.description); });

} // namespace

} // namespace spotwell
