// SPDX-FileCopyrightText: 2026 the spotwell developers
// SPDX-License-Identifier: MIT

#include "tests/tools/simulator/NodeFixture.h"

namespace spotwell::simulator
{
namespace
{

using NodeDialogueTest = NodeFixture;

TEST_F(NodeDialogueTest, asksForCallsignAndPassword)
{
    plays("send \"login: \"\nexpect \"N0CALL\\n\" after 0.03 within 10\n"
          "send \"password: \"\nexpect \"secret\\n\" after 0.05 within 10\nsend \"Hello\\r\\n\"\n"
          "expect \"quit\\n\"\nexpect close\n");
    ScriptedClient& client = connects();
    client.hears("login: ");
    client.saysAfter(Seconds{0.04}, "N0CALL\n");
    client.hears("password: ");
    client.saysAfter(Seconds{0.06}, "secret\n");
    client.hears("Hello\r\n");
    client.says("quit\n");
    client.leaves();
    ends();
    EXPECT_EQ(passed(), 4);
    EXPECT_EQ(failed(), 0);
    EXPECT_EQ(farewell(), u"client closed"_qs);
}

TEST_F(NodeDialogueTest, reportsWhatHappens)
{
    plays("send \"login: \"\nexpect \"N0CALL\\n\"\nsend \"a\\nb\\n\"\n");
    ScriptedClient& client = connects();
    client.hears("login: ");
    client.says("N0CALL\n");
    client.hears("a\nb\n");
    client.hearsTheEnd();
    client.leaves();
    ends();

    QString names;
    double last = 0;
    for (const QJsonObject& event : events_) {
        names += event[u"event"].toString() + u' ';
        EXPECT_EQ(event[u"scenario"].toString(), u"test"_qs);
        EXPECT_GE(event[u"t"].toDouble(), last);
        last = event[u"t"].toDouble();
    }
    EXPECT_EQ(names, u"listening connect sent received check sent disconnect "_qs);
    EXPECT_EQ(events_[0][u"port"].toInt(), node_->port());
    EXPECT_EQ(events_[1][u"connection"].toInt(), 1);
    EXPECT_EQ(events_[2][u"line"].toInt(), 1);
    EXPECT_EQ(events_[2][u"bytes"].toInt(), 7);
    EXPECT_EQ(events_[2][u"lines"].toInt(), 0);
    EXPECT_EQ(events_[3][u"text"].toString(), u"N0CALL\\n"_qs);
    EXPECT_EQ(events_[3][u"bytes"].toInt(), 7);
    EXPECT_EQ(events_[4][u"result"].toString(), u"passed"_qs);
    EXPECT_EQ(events_[4][u"at"].toString(), u"test.scenario:2"_qs);
    EXPECT_EQ(events_[4][u"what"].toString(), u"expect \"N0CALL\\n\""_qs);
    EXPECT_NEAR(events_[4][u"after"].toDouble(), events_[3][u"t"].toDouble() - events_[2][u"t"].toDouble(),
                2e-6);
    EXPECT_EQ(events_[5][u"lines"].toInt(), 2);
    EXPECT_EQ(events_[6][u"passed"].toInt(), 1);
    EXPECT_EQ(events_[6][u"failed"].toInt(), 0);
}

TEST_F(NodeDialogueTest, failsWhenOtherTextComes)
{
    plays("send \"login: \"\nexpect \"N0CALL\\n\"\nsend \"never\"\n");
    ScriptedClient& client = connects();
    client.hears("login: ");
    client.says("N1CALL\n");
    client.hearsTheEnd();
    client.leaves();
    ends();
    EXPECT_EQ(failure(), u"test.scenario:2 expect \"N0CALL\\n\": \"N1CALL\\n\" came"_qs);
    EXPECT_EQ(failed(), 1);
    EXPECT_EQ(farewell(), u"node closed"_qs);
}

TEST_F(NodeDialogueTest, failsWhenTheAnswerComesTooEarly)
{
    plays("send \"login: \"\nexpect \"N0CALL\\n\" after 60 within 70\n");
    ScriptedClient& client = connects();
    client.hears("login: ");
    client.says("N0CALL\n");
    client.hearsTheEnd();
    client.leaves();
    ends();
    EXPECT_TRUE(failure().startsWith(u"test.scenario:2 expect \"N0CALL\\n\": it came 0."_qs))
        << qPrintable(failure());
    EXPECT_TRUE(failure().endsWith(u" s after what was sent last, not to come before 60.000 s"_qs));
}

TEST_F(NodeDialogueTest, failsWhenNoAnswerComesInTime)
{
    plays("expect line within 60\nsend \"login: \"\nexpect \"N0CALL\\n\" after 0.01 within 0.05\n");
    ScriptedClient& client = connects();
    client.says("hi\nN0CA");
    client.hears("login: ");
    client.hearsTheEnd();
    client.leaves();
    ends();
    EXPECT_EQ(failure(), u"test.scenario:3 expect \"N0CALL\\n\": \"N0CA\" came within 0.050 s"_qs);
}

TEST_F(NodeDialogueTest, failsWhenAnAnswerThatWaitedWasLate)
{
    plays("send \"login: \"\nexpect line within 60\nexpect \"N0CALL\\n\" after 0.01 within 0.05\n");
    ScriptedClient& client = connects();
    client.hears("login: ");
    client.saysAfter(Seconds{0.1}, "hi\nN0CALL\n");
    client.hearsTheEnd();
    client.leaves();
    ends();
    EXPECT_EQ(failed(), 1);
    EXPECT_TRUE(failure().contains(u": it came after 0."_qs)) << qPrintable(failure());
    EXPECT_TRUE(failure().endsWith(u" s, not within 0.050 s"_qs)) << qPrintable(failure());
}

TEST_F(NodeDialogueTest, countsFromItsOwnBeginningWithoutAfter)
{
    plays("send \"login: \"\nexpect line within 60\nexpect \"N0CALL\\n\" within 0.05\n");
    ScriptedClient& client = connects();
    client.hears("login: ");
    client.saysAfter(Seconds{0.1}, "hi\nN0CALL\n");
    client.hearsTheEnd();
    client.leaves();
    ends();
    EXPECT_EQ(passed(), 2) << qPrintable(failure());
}

TEST_F(NodeDialogueTest, failsWhenTheClientLeavesInsteadOfAnswering)
{
    plays("send \"login: \"\nexpect \"N0CALL\\n\" within 60\n");
    ScriptedClient& client = connects();
    client.hears("login: ");
    client.leaves();
    ends();
    EXPECT_EQ(failure(), u"test.scenario:2 expect \"N0CALL\\n\": the client left; nothing came"_qs);
    EXPECT_EQ(farewell(), u"client closed"_qs);
}

TEST_F(NodeDialogueTest, takesTextInOrderWhateverThePackets)
{
    plays("send \"?\"\nexpect \"one\"\nexpect \"two\\n\"\nexpect line\nexpect \"end\\n\"\n");
    ScriptedClient& client = connects();
    client.hears("?");
    client.says("onetwo\nany thing\nen");
    waitsFor(u"check"_qs, 3);
    client.says("d\n");
    client.hearsTheEnd();
    client.leaves();
    ends();
    EXPECT_EQ(passed(), 4);
}

TEST_F(NodeDialogueTest, checksThatNothingComes)
{
    plays("session\nsend \"?\"\nexpect nothing for 0.05\nend\nsession\nsend \"?\"\nexpect nothing for "
          "60\nend\n");
    ScriptedClient& quiet = connects();
    quiet.hears("?");
    quiet.hearsTheEnd();
    quiet.leaves();
    ends(1);
    EXPECT_EQ(passed(), 1);

    ScriptedClient& talking = connects();
    talking.hears("?");
    talking.says("hm");
    talking.hearsTheEnd();
    talking.leaves();
    ends(2);
    EXPECT_EQ(failure(), u"test.scenario:7 expect nothing for 60.000 s: \"hm\" came"_qs);

    ScriptedClient& leaving = connects();
    leaving.hears("?");
    leaving.leaves();
    ends(3);
    EXPECT_TRUE(failure().endsWith(u"expect nothing for 60.000 s: the client left"_qs))
        << qPrintable(failure());
}

TEST_F(NodeDialogueTest, checksThatTheClientLeaves)
{
    plays("session\nexpect close within 60\nend\n"
          "session\nexpect close within 60 ignoring text\nend\n"
          "session\nexpect close within 0.05\nend\n");
    ScriptedClient& talking = connects();
    talking.says("quit\n");
    talking.hearsTheEnd();
    talking.leaves();
    ends(1);
    EXPECT_EQ(failure(), u"test.scenario:2 expect close: \"quit\\n\" came"_qs);

    ScriptedClient& leaving = connects();
    leaving.says("quit\n");
    leaving.leaves();
    ends(2);
    EXPECT_EQ(passed(), 1);

    ScriptedClient& staying = connects();
    staying.hearsTheEnd();
    staying.leaves();
    ends(3);
    EXPECT_TRUE(failure().endsWith(u"test.scenario:8 expect close: the client had not left after 0.050 s"_qs))
        << qPrintable(failure());
}

TEST_F(NodeDialogueTest, takesAResetForTheClientsEnd)
{
    plays("send \"?\"\nexpect close within 60\n");
    ScriptedClient& client = connects();
    client.hears("?");
    client.breaksAway();
    ends();
    EXPECT_EQ(passed(), 1);
    EXPECT_EQ(farewell(), u"client reset"_qs);
}

TEST_F(NodeDialogueTest, halfClosesAndReadsOn)
{
    plays("send \"bye\\n\"\nhalf-close\nexpect \"quit\\n\"\nexpect close\n");
    ScriptedClient& client = connects();
    client.hears("bye\n");
    client.hearsTheEnd();
    client.says("quit\n");
    client.leaves();
    ends();
    EXPECT_EQ(passed(), 2);
}

TEST_F(NodeDialogueTest, resets)
{
    plays("send \"bye\\n\"\nexpect line\nreset\n");
    ScriptedClient& client = connects();
    client.hears("bye\n");
    client.says("ok\n");
    client.isReset();
    ends();
    EXPECT_EQ(farewell(), u"node reset"_qs);
}

TEST_F(NodeDialogueTest, closesOrderlyAlthoughTheClientTalks)
{
    plays("send \"all of this\"\nclose\n");
    ScriptedClient& client = connects();
    client.says(QByteArray(20'000, 'x'));
    client.hears("all of this");
    client.hearsTheEnd();
    client.says("quit\n");
    client.leaves();
    ends();
    ASSERT_FALSE(events(u"received"_qs).empty());
    EXPECT_TRUE(events(u"received"_qs).back()[u"text"].toString().endsWith(u"quit\\n"_qs));
    EXPECT_EQ(farewell(), u"node closed"_qs);
}

TEST_F(NodeDialogueTest, doesNotWaitForeverForAClientsFarewell)
{
    plays("send \"bye\"\n", ConnectionLimits{Seconds{30}, Seconds{0.05}, 1 << 16});
    ScriptedClient& client = connects();
    client.hears("bye");
    client.hearsTheEnd();
    ends();
    EXPECT_EQ(farewell(), u"node closed"_qs);
}

TEST_F(NodeDialogueTest, staysSilentUntilTheClientLeaves)
{
    plays("send \"?\"\nstay silent\n");
    ScriptedClient& client = connects();
    client.hears("?");
    for (const std::size_t chunks : {10, 20, 30}) {
        client.says(QByteArray(40'000, 'x'));
        waitsFor(u"received"_qs, chunks);
    }
    EXPECT_EQ(sessionsOver_, 0);
    client.leaves();
    ends();
    EXPECT_EQ(farewell(), u"client closed"_qs);
    EXPECT_EQ(failed(), 0);
}

TEST_F(NodeDialogueTest, staysSilentForAWhile)
{
    plays("stay silent for 0.03\nsend \"now\"\n");
    ScriptedClient& client = connects();
    client.hears("now");
    client.hearsTheEnd();
}

TEST_F(NodeDialogueTest, repeats)
{
    plays("repeat 3\nsend \"more? \"\nexpect \"yes\\n\"\nend\nsend \"done\"\n");
    ScriptedClient& client = connects();
    for (int round = 0; round < 3; ++round) {
        client.hears("more? ");
        client.says("yes\n");
    }
    client.hears("done");
    client.leaves();
    ends();
    EXPECT_EQ(passed(), 3);
}

TEST_F(NodeDialogueTest, repeatsUntilTheClientLeaves)
{
    plays("repeat forever\nsend \"tick\\n\"\nwait 0.001\nend\nexpect close\n");
    ScriptedClient& client = connects();
    client.hears("tick\ntick\ntick\ntick\n");
    client.leaves();
    ends();
    EXPECT_EQ(passed(), 1);
}

} // namespace
} // namespace spotwell::simulator
