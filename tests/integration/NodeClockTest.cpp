// SPDX-FileCopyrightText: 2026 the spotwell developers
// SPDX-License-Identifier: MIT

#include "tests/integration/support/NodeFaultFixture.h"

namespace spotwell
{
namespace
{

using namespace std::chrono_literals;

const QString keepAlive = QStringLiteral("DXClusterController:sendTelnet:[1]characters:");
const QString waitedForLogin = QStringLiteral("Waited 120 seconds for login, giving up.");

/// The rules of the supervision on the program's own timers, to the millisecond.
class NodeClockTest : public NodeFaultFixture
{
protected:
    static constexpr auto instant = 1ms;

    /// Nothing happens until `span` has passed, and it may a moment later.
    void quietFor(std::chrono::nanoseconds span)
    {
        clock.step(span);
        EXPECT_TRUE(staysQuiet());
        clock.step(instant);
    }
    void seeGivenUp(const QString& message)
    {
        see({QStringLiteral("closeTelnetConnection"), message});
        read({QStringLiteral("DXClusterController:loginTimeoutTimer:") + message, quitEntry,
              QStringLiteral("closeTelnetConnection")});
    }
    /// Logged in and with a spot behind it.
    void hearLastWord()
    {
        openConnected();
        logIn();
        passSpot();
    }
};

TEST_F(NodeClockTest, aNodeThatSaysNothingIsGivenUpAfterHalfAMinute)
{
    openConnected();
    quietFor(30s);
    seeGivenUp(waitedForData);
    quietFor(30s - instant);
    comeBackByItself();
    endInOrder();
}

TEST_F(NodeClockTest, aNodeThatOnlyGreetsIsGivenUpAfterTwoMinutes)
{
    openConnected();
    say("Welcome\r\n");
    see({QStringLiteral("teln Welcome")});
    quietFor(120s);
    seeGivenUp(waitedForLogin);
    comeBackByItself();
    endInOrder();
}

TEST_F(NodeClockTest, aNodeThatFallsSilentIsAskedTwiceAndLeft)
{
    hearLastWord();
    quietFor(600s);
    read({keepAlive});
    EXPECT_TRUE(hears("N0CALL\n\n"));
    quietFor(60s);
    read({keepAlive});
    EXPECT_TRUE(hears("N0CALL\n\n\n"));
    quietFor(60s - 2 * instant);
    seeLeftForSilence(QStringLiteral("12.0"));
    endInOrder();
}

TEST_F(NodeClockTest, aNodeThatFallsSilentInTheLoginIsLeftTheSameWay)
{
    openConnected();
    logIn();
    clock.step(721s);
    seeLeftForSilence(QStringLiteral("12.0"));
    endInOrder();
}

TEST_F(NodeClockTest, aWordEndsTheSilence)
{
    hearLastWord();
    clock.step(610s);
    read({keepAlive});
    passSpot();
    clock.step(590s);
    EXPECT_TRUE(staysQuiet());
    passSpot();
    endInOrder();
}

struct Step {
    const char* name;
    std::chrono::hours by;
    const char* minutes;
};

void PrintTo(const Step& step, std::ostream* out)
{
    *out << step.name;
}

class ForwardsTest : public NodeClockTest, public testing::WithParamInterface<Step>
{
};

TEST_P(ForwardsTest, aQuietNodeCountsAsSilentAndIsMetAgain)
{
    hearLastWord();
    clock.step(GetParam().by);
    seeLeftForSilence(QString::fromLatin1(GetParam().minutes));
    endInOrder();
}

TEST_P(ForwardsTest, aMissingNodeIsTriedAtOnce)
{
    node.stopListening();
    open();
    const QString error = QStringLiteral("NSStreamEventErrorOccurred:[Connection refused]");
    seeClosed(error);
    read({error, QStringLiteral("closeTelnetConnection")});
    node.listenAgain();
    clock.step(GetParam().by);
    comeBackByItself();
    endInOrder();
}

INSTANTIATE_TEST_SUITE_P(Steps, ForwardsTest,
                         testing::Values(Step{"anHour", 1h, "60.0"}, Step{"aDay", 24h, "1440.0"}),
                         [](const auto& step) { return step.param.name; });

class BackwardsTest : public NodeClockTest, public testing::WithParamInterface<Step>
{
};

TEST_P(BackwardsTest, theConnectionStaysAndTheNextWordPutsItRight)
{
    hearLastWord();
    clock.step(-GetParam().by);
    clock.step(721s);
    EXPECT_TRUE(staysQuiet());
    passSpot();
    clock.step(601s);
    read({keepAlive});
    endInOrder();
}

TEST_P(BackwardsTest, lineFeedsWaitUntilTheClockIsBackButASilentNodeIsLeftInTime)
{
    hearLastWord();
    clock.step(601s);
    read({keepAlive});
    clock.step(-GetParam().by);
    passSpot();
    quietFor(720s);
    seeLeftForSilence(QStringLiteral("12.0"));
    endInOrder();
}

TEST_P(BackwardsTest, aMissingNodeIsNotTriedUntilTheClockIsBack)
{
    node.stopListening();
    open();
    const QString error = QStringLiteral("NSStreamEventErrorOccurred:[Connection refused]");
    seeClosed(error);
    read({error, QStringLiteral("closeTelnetConnection")});
    clock.step(-GetParam().by);
    clock.step(61s);
    EXPECT_TRUE(staysQuiet());
    node.listenAgain();
    clock.step(GetParam().by);
    comeBackByItself();
    endInOrder();
}

TEST_P(BackwardsTest, aNodeThatSaysNothingIsKeptUntilTheClockIsBack)
{
    openConnected();
    clock.step(-GetParam().by);
    clock.step(121s);
    EXPECT_TRUE(staysQuiet());
    clock.step(GetParam().by);
    seeGivenUp(waitedForData);
    comeBackByItself();
    endInOrder();
}

INSTANTIATE_TEST_SUITE_P(Steps, BackwardsTest, testing::Values(Step{"anHour", 1h, ""}, Step{"aDay", 24h, ""}),
                         [](const auto& step) { return step.param.name; });

} // namespace
} // namespace spotwell
