// SPDX-FileCopyrightText: 2026 the spotwell developers
// SPDX-License-Identifier: MIT

#include "tests/app/FakeProgram.h"

#include <gtest/gtest.h>

#include <array>

namespace spotwell
{

namespace
{

struct Feed {
    const char* key;
    const char* address;
    const char* queue;
    QCheckBox* Ui::MainWindow::*box;
    /// The gap between two polls that are answered at once, in seconds: the first tick beyond it.
    int period;
    /// What begins its log lines.
    const char* name;
    /// An answer with one spot in it, and what it is forwarded as.
    const char* answer;
    const char* console;
};

const std::array<Feed, 3> feeds{
    {{"pota", "https://pota.example.org/spot/activator", "pota_background_queue", &MainWindow::potaCheckBox,
      31, "potaTimer",
      R"([{"spotId":1,"spotter":"N0CALL","activator":"X1X","reference":"XX-0001","frequency":"14074",)"
      R"("mode":"CW","comments":"cq","spotTime":"2027-02-03T08:59:00"}])",
      "pota DX de N0CALL     14074.0  X1X          cq                             0859Z XX-0001"},
     {"dxsummit", "http://dxsummit.example.org/api/v1/spots", "dxsummit_background_queue",
      &MainWindow::dxsummitCheckBox, 31, "dxsummitTimer",
      R"([{"id":1,"de_call":"N0CALL-@","dx_call":"X1X","info":"cq","frequency":14074.0,)"
      R"("time":"2027-02-03T08:59:00"}])",
      "dxsu DX de N0CALL-@   14074.0  X1X          :cq                            0859Z"},
     {"wsprnet", "http://wsprnet.example.org/drupal/wsprnet/spots", "wsprnet_background_queue",
      &MainWindow::wsprnetCheckBox, 121, "wsprnetTimer",
      "<tr><td>&nbsp;2027-02-03 08:59&nbsp;</td><td>&nbsp;X1X&nbsp;</td><td>&nbsp;14.0971&nbsp;</td>"
      "<td>&nbsp;&nbsp;</td><td>&nbsp;&nbsp;</td><td>&nbsp;&nbsp;</td><td>&nbsp;&nbsp;</td>"
      "<td>&nbsp;N0CALL&nbsp;</td></tr>\n",
      "wspr DX de N0CALL     14097.1  X1X          WSPRnet                        0859Z"}}};

struct FeedsTest : testing::Test {
    void switchOn(const Feed& feed) { program.defaults.booleans[QLatin1String(feed.key)] = true; }
    void passSeconds(int seconds)
    {
        for (int i = 0; i < seconds; ++i) {
            program.mainQueue.advance(Seconds{1});
            for (const Feed& feed : feeds)
                program.queue(feed.queue).runPending();
        }
    }
    /// Ends the oldest transfer with this body; the parser runs.
    void answer(const QByteArray& body)
    {
        ASSERT_FALSE(program.urlSession->requests.empty());
        const auto request = program.urlSession->requests.front();
        program.urlSession->requests.pop_front();
        request.second({body, UrlResponse{200}, std::nullopt});
    }

    FakeProgram program;
};

} // namespace

TEST_F(FeedsTest, EachFeedHasItsOwnBoxAddressQueueAndGap)
{
    for (const Feed& feed : feeds) {
        FakeProgram other;
        other.defaults.booleans[QLatin1String(feed.key)] = true;
        other.launch();
        for (int second = 1; second <= feed.period + 1; ++second) {
            other.mainQueue.advance(Seconds{1});
            const bool due = second == 1 || second == 1 + feed.period;
            EXPECT_EQ(other.queue(feed.queue).pendingCount(), due ? 1U : 0U) << feed.key << ' ' << second;
            for (const Feed& candidate : feeds)
                other.queue(candidate.queue).runPending();
            ASSERT_EQ(other.urlSession->requests.size(), due ? 1U : 0U) << feed.key << ' ' << second;
            while (!other.urlSession->requests.empty()) {
                const auto request = other.urlSession->requests.front();
                other.urlSession->requests.pop_front();
                EXPECT_EQ(request.first, QLatin1String(feed.address));
                request.second({{}, std::nullopt, QStringLiteral("Host not found")});
            }
        }
        const QString line = QLatin1String(feed.name) + QStringLiteral(":error:[Host not found]");
        EXPECT_EQ(other.log.lines.count(line), 2) << feed.key;
    }
}

TEST_F(FeedsTest, WithoutABoxNothingIsFetched)
{
    program.launch();
    passSeconds(200);
    EXPECT_TRUE(program.urlSession->requests.empty());
    EXPECT_TRUE(program.center.posted.empty());
}

TEST_F(FeedsTest, ASpotTravelsFromTheServiceToTheLogger)
{
    for (const Feed& feed : feeds)
        switchOn(feed);
    program.launch();
    for (const Feed& feed : feeds) {
        program.window.potaCheckBox->setChecked(feed.box == &MainWindow::potaCheckBox);
        program.window.dxsummitCheckBox->setChecked(feed.box == &MainWindow::dxsummitCheckBox);
        program.window.wsprnetCheckBox->setChecked(feed.box == &MainWindow::wsprnetCheckBox);
        program.center.posted.clear();
        program.urlSession->pauses.clear();
        passSeconds(1);
        answer(feed.answer);
        EXPECT_TRUE(program.center.posted.empty()) << "the main thread shows and posts";
        program.mainQueue.runPending();
        ASSERT_EQ(program.center.posted.size(), 1U) << feed.key;
        EXPECT_EQ(program.center.posted[0].name, QStringLiteral("com.tarnbrooksoftware.spotwell_spot"));
        EXPECT_EQ(program.console().last(), QLatin1String(feed.console));
        EXPECT_EQ(program.urlSession->pauses, std::vector{Seconds{0.1}});
    }
}

TEST_F(FeedsTest, TheSameAnswerIsForwardedOnce)
{
    for (const Feed& feed : feeds) {
        FakeProgram other;
        other.defaults.booleans[QLatin1String(feed.key)] = true;
        other.launch();
        for (int poll = 0; poll < 3; ++poll) {
            other.mainQueue.advance(Seconds{130});
            other.queue(feed.queue).runPending();
            while (!other.urlSession->requests.empty()) {
                const auto request = other.urlSession->requests.front();
                other.urlSession->requests.pop_front();
                request.second({feed.answer, UrlResponse{200}, std::nullopt});
            }
        }
        other.mainQueue.runPending();
        EXPECT_EQ(other.center.posted.size(), 1U) << feed.key;
    }
}

TEST_F(FeedsTest, AnEmptyAnswerRenewsTheStampToo)
{
    switchOn(feeds[0]);
    program.launch();
    passSeconds(1);
    answer("[]");
    EXPECT_EQ(program.log.lines.last(), QStringLiteral("parsePotaData:spots:[0]"));
    passSeconds(30);
    EXPECT_TRUE(program.urlSession->requests.empty());
    passSeconds(1);
    EXPECT_EQ(program.urlSession->requests.size(), 1U);
}

TEST_F(FeedsTest, AnAnswerUnderWayIsForwardedWhenItsFeedWasSwitchedOff)
{
    for (const Feed& feed : feeds) {
        FakeProgram other;
        other.defaults.booleans[QLatin1String(feed.key)] = true;
        other.launch();
        other.mainQueue.advance(Seconds{1});
        other.queue(feed.queue).runPending();
        (other.window.*feed.box)->click();
        ASSERT_EQ(other.urlSession->requests.size(), 1U);
        other.urlSession->requests.front().second({feed.answer, UrlResponse{200}, std::nullopt});
        other.mainQueue.runPending();
        EXPECT_EQ(other.center.posted.size(), 1U) << feed.key;
    }
}

TEST_F(FeedsTest, TheSkimmersBoxCountsAtTheTick)
{
    switchOn(feeds[0]);
    program.launch();
    passSeconds(1);
    program.window.skimmersCheckBox->setChecked(true);
    const QByteArray skimmer = QByteArray(feeds[0].answer).replace("N0CALL", "N0CALL-#");
    answer(skimmer);
    program.mainQueue.runPending();
    EXPECT_TRUE(program.center.posted.empty()) << "the box was off when the poll was issued";
    passSeconds(31);
    program.window.skimmersCheckBox->setChecked(false);
    answer(skimmer);
    program.mainQueue.runPending();
    EXPECT_EQ(program.center.posted.size(), 1U);
}

TEST_F(FeedsTest, TheExclusiveBoxCountsAtTheTick)
{
    switchOn(feeds[1]);
    program.launch();
    passSeconds(1);
    program.window.dxsExclusiveCheckBox->setChecked(true);
    const QByteArray plain = QByteArray(feeds[1].answer).replace("N0CALL-@", "N0CALL");
    answer(plain);
    program.mainQueue.runPending();
    EXPECT_EQ(program.center.posted.size(), 1U) << "the box was off when the poll was issued";
    passSeconds(31);
    program.window.dxsExclusiveCheckBox->setChecked(false);
    answer(QByteArray(plain).replace("\"id\":1", "\"id\":2"));
    program.mainQueue.runPending();
    EXPECT_EQ(program.center.posted.size(), 1U);
}

TEST_F(FeedsTest, AnEndingSessionStopsTheParser)
{
    switchOn(feeds[2]);
    program.launch();
    passSeconds(1);
    program.urlSession->ending = true;
    answer(QByteArray(feeds[2].answer) + QByteArray(feeds[2].answer).replace("X1X", "X2X"));
    program.mainQueue.runPending();
    EXPECT_EQ(program.center.posted.size(), 1U);
}

TEST_F(FeedsTest, TheReconnectTimerTriesAtTheFirstTick)
{
    program.defaults.booleans[QStringLiteral("reconnect")] = true;
    program.launch();
    EXPECT_TRUE(program.sockets.connections.empty()) << "no host, no callsign: start-up does not connect";
    passSeconds(1);
    EXPECT_EQ(program.sockets.connections.size(), 1U);
    EXPECT_EQ(program.console(), (QStringList{QStringLiteral("Attempting Reconnect with "),
                                              QStringLiteral("openTelnetConnection")}));
}

TEST_F(FeedsTest, TheUsersDisconnectIsUndoneByTheSupervisorUnlessTheBoxIsOff)
{
    program.defaults.strings[QStringLiteral("dxcluster")] = QStringLiteral("dxc.example.org");
    program.defaults.strings[QStringLiteral("callsign")] = QStringLiteral("N0CALL");
    program.defaults.booleans[QStringLiteral("reconnect")] = true;
    program.launch();
    program.sockets.last().receive("Welcome\r\n");
    passSeconds(60);
    program.window.connected->click();
    EXPECT_FALSE(program.window.connected->isChecked());
    EXPECT_TRUE(program.window.reconnectCheckBox->isChecked()) << "the toggle does not change the setting";
    passSeconds(1);
    EXPECT_TRUE(program.window.connected->isChecked());
    program.window.connected->click();
    program.window.reconnectCheckBox->click();
    passSeconds(200);
    EXPECT_FALSE(program.window.connected->isChecked());
}

} // namespace spotwell
