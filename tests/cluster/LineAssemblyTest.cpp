// SPDX-FileCopyrightText: 2026 the spotwell developers
// SPDX-License-Identifier: MIT

#include "cluster/LineAssembly.h"

#include "tests/cluster/FakeClusterHost.h"
#include "tests/fakes/FakeServices.h"
#include "tests/support/Printers.h"

#include <gtest/gtest.h>

namespace spotwell
{

namespace
{

class FakeLoginLine final : public LoginLine
{
public:
    [[nodiscard]] bool promptsAreArmed() const override { return armed; }
    void sendTelnet(const QString& text) override { sent.append(text); }
    void setLoggedIn() override { loggedIn = true; }

    bool armed = true;
    bool loggedIn = false;
    QStringList sent;
};

struct LineAssemblyTest : testing::Test {
    /// What the node sends in one read.
    void hear(const QStringList& lines)
    {
        assembly.processInputStream(lines, QStringLiteral("dxc.example.org"));
        mainQueue.runPending();
    }
    void hear(const char* text) { hear(QStringList{QString::fromLatin1(text)}); }

    FakeClock clock;
    FakeMainQueue mainQueue{clock};
    FakeClusterHost host;
    FakeLoginLine line;
    FakeLog log;
    LineAssembly assembly{host, line, mainQueue, log};
};

QString spotOfLength(qsizetype length)
{
    return QStringLiteral("DX de N0CALL:").leftJustified(length, u'x');
}

} // namespace

TEST(LinesOfChunk, SplitsAtLineFeedsAndKeepsEmptyLines)
{
    struct Row {
        QString text;
        QStringList lines;
    };
    const Row rows[] = {
        {QStringLiteral("a\nb\n"), {QStringLiteral("a"), QStringLiteral("b"), QString()}},
        {QStringLiteral("a\n\nb"), {QStringLiteral("a"), QString(), QStringLiteral("b")}},
        {QString(), {QString()}},
        {QStringLiteral("\r\r\n\a"), {QString(), QString()}},
        {QStringLiteral("a\rb\ac\r\n"), {QStringLiteral("abc"), QString()}},
        {QStringLiteral("login: "), {QStringLiteral("login: ")}},
        {QStringLiteral("\t\x1b[31m\x01\x7f"), {QStringLiteral("\t\x1b[31m\x01\x7f")}},
    };
    for (const Row& row : rows)
        EXPECT_EQ(linesOfChunk(row.text), row.lines);
}

TEST(IsSpotLine, AsksForSeventyFiveCharactersAndThePrefix)
{
    EXPECT_FALSE(isSpotLine(spotOfLength(74)));
    EXPECT_TRUE(isSpotLine(spotOfLength(75)));
    EXPECT_TRUE(isSpotLine(spotOfLength(76)));
    EXPECT_TRUE(isSpotLine(spotOfLength(4000)));
    EXPECT_TRUE(isSpotLine(QStringLiteral("DX de ").leftJustified(75)));
    EXPECT_FALSE(isSpotLine(QStringLiteral("dx de N0CALL").leftJustified(80)));
    EXPECT_FALSE(isSpotLine(QStringLiteral("DX DE N0CALL").leftJustified(80)));
    EXPECT_FALSE(isSpotLine(QStringLiteral(" DX de N0CALL").leftJustified(80)));
    EXPECT_FALSE(isSpotLine(QStringLiteral("DX deN0CALL").leftJustified(80)));
    EXPECT_FALSE(isSpotLine(QStringLiteral("DX de")));
}

TEST(IsCallsignPrompt, KnowsEachPromptInAnyCaseAndPlace)
{
    for (const char* prompt :
         {"login:", "call:", "Callsign :", "Votre indicatif:", "sign:", "javAPRSSrvr", "enter your cal"}) {
        const QString text = QString::fromLatin1(prompt);
        for (const QString& line :
             {text, text.toUpper(), text.toLower(), QStringLiteral("Welcome ") + text,
              text + QStringLiteral(" please"), QStringLiteral("a") + text + QStringLiteral("b")})
            EXPECT_TRUE(isCallsignPrompt(line)) << line.toStdString();
    }
    for (const char* other : {"", "login", "login :", "call :", "callsign", "Votre indicatif :", "sign :",
                              "javAPRS", "enter your-call", "password:", "log in:", "DX de N0CALL"})
        EXPECT_FALSE(isCallsignPrompt(QString::fromLatin1(other))) << other;
}

TEST(IsCallsignPrompt, IsVetoedByQrx)
{
    EXPECT_FALSE(isCallsignPrompt(QStringLiteral("qrx: login:")));
    EXPECT_FALSE(isCallsignPrompt(QStringLiteral("call: QRX:")));
    EXPECT_FALSE(isCallsignPrompt(QStringLiteral("xQrX:xenter your call:")));
    EXPECT_TRUE(isCallsignPrompt(QStringLiteral("qrx login:")));
}

TEST(IsPasswordPrompt, KnowsEachPromptInAnyCaseAndPlace)
{
    for (const char* prompt : {"password:", "Password :", "Mot de passe:"}) {
        const QString text = QString::fromLatin1(prompt);
        for (const QString& line : {text, text.toUpper(), text.toLower(), QStringLiteral("Enter ") + text,
                                    text + QStringLiteral(" "), QStringLiteral("qrx: ") + text})
            EXPECT_TRUE(isPasswordPrompt(line)) << line.toStdString();
    }
    for (const char* other : {"", "password", "pass word:", "Mot de passe :", "login:"})
        EXPECT_FALSE(isPasswordPrompt(QString::fromLatin1(other))) << other;
}

TEST_F(LineAssemblyTest, ShowsEveryLineThatIsNotEmpty)
{
    hear({QStringLiteral("Hello"), QString(), QStringLiteral("login: "), QString(),
          QStringLiteral("%1 %@ <b>")});
    EXPECT_EQ(host.console, (QStringList{QStringLiteral("teln Hello"), QStringLiteral("teln login: "),
                                         QStringLiteral("teln %1 %@ <b>")}));
}

TEST_F(LineAssemblyTest, TouchesTheConsoleOnTheMainThreadOnly)
{
    assembly.processInputStream({QStringLiteral("login:")}, QString());
    EXPECT_EQ(host.posted, QStringList{QStringLiteral("teln login:")});
    EXPECT_EQ(host.console, host.posted);
    EXPECT_EQ(mainQueue.timerCount(), 0U);
}

TEST_F(LineAssemblyTest, PassesSpotLinesOnInOrder)
{
    line.armed = false;
    hear({spotOfLength(75), spotOfLength(74), QStringLiteral("dx de ").leftJustified(80), spotOfLength(100)});
    EXPECT_EQ(host.spots, (QStringList{spotOfLength(75), spotOfLength(100)}));
    EXPECT_EQ(host.nodes, QStringList(2, QStringLiteral("dxc.example.org")));
    EXPECT_EQ(host.console.size(), 4) << "all are shown";
}

TEST_F(LineAssemblyTest, SendsTheCallsignOneSecondAfterThePrompt)
{
    hear("login: ");
    mainQueue.advance(Seconds{0.999});
    EXPECT_TRUE(line.sent.isEmpty());
    EXPECT_FALSE(line.loggedIn);
    mainQueue.advance(Seconds{0.001});
    EXPECT_EQ(line.sent, QStringList{QStringLiteral("N0CALL\n")});
    EXPECT_TRUE(line.loggedIn);
    EXPECT_TRUE(host.connected);
    EXPECT_EQ(log.lines, QStringList{QStringLiteral("logging in")});
    EXPECT_EQ(host.console.last(), QStringLiteral("loging in"));
    mainQueue.advance(Seconds{60});
    EXPECT_EQ(line.sent.size(), 1) << "once";
}

TEST_F(LineAssemblyTest, TakesTheCallsignOfTheMomentItIsSent)
{
    hear("call:");
    host.callsign = QStringLiteral("X1X");
    mainQueue.advance(Seconds{1});
    EXPECT_EQ(line.sent, QStringList{QStringLiteral("X1X\n")});
}

TEST_F(LineAssemblyTest, WithoutACallsignTheLoginCountsAllTheSame)
{
    host.callsign.clear();
    hear("login:");
    mainQueue.advance(Seconds{1});
    EXPECT_TRUE(line.sent.isEmpty());
    EXPECT_TRUE(line.loggedIn);
    EXPECT_TRUE(host.connected);
    EXPECT_EQ(log.lines, QStringList{QStringLiteral("logging in")});
    EXPECT_EQ(host.console.last(), QStringLiteral("loging in"));
}

TEST_F(LineAssemblyTest, TwoPromptsOnOneLineLogInOnce)
{
    hear("login: enter your call: ");
    mainQueue.advance(Seconds{10});
    EXPECT_EQ(line.sent, QStringList{QStringLiteral("N0CALL\n")});
}

TEST_F(LineAssemblyTest, TwoPromptLinesLogInTwice)
{
    hear({QStringLiteral("Please enter your call:"), QStringLiteral("login:")});
    mainQueue.advance(Seconds{1});
    EXPECT_EQ(line.sent, QStringList(2, QStringLiteral("N0CALL\n")));
    mainQueue.advance(Seconds{0.5});
    hear("sign:");
    mainQueue.advance(Seconds{0.999});
    EXPECT_EQ(line.sent.size(), 2);
    mainQueue.advance(Seconds{0.001});
    EXPECT_EQ(line.sent.size(), 3) << "each one second after its own line";
}

TEST_F(LineAssemblyTest, AnswersThePasswordPromptAfterTwoSeconds)
{
    host.password = QStringLiteral("secret");
    hear("PASSWORD: ");
    mainQueue.advance(Seconds{1.999});
    EXPECT_TRUE(line.sent.isEmpty());
    mainQueue.advance(Seconds{0.001});
    EXPECT_EQ(line.sent, QStringList{QStringLiteral("secret\n")});
    EXPECT_FALSE(line.loggedIn) << "the password is no login";
    EXPECT_TRUE(log.lines.isEmpty());
}

TEST_F(LineAssemblyTest, DecidesOnThePasswordAtThePromptAndSendsThatOfTheMoment)
{
    hear("password:");
    host.password = QStringLiteral("late");
    mainQueue.advance(Seconds{10});
    EXPECT_TRUE(line.sent.isEmpty()) << "empty at the prompt: no answer";
    hear("password:");
    host.password = QStringLiteral("changed");
    mainQueue.advance(Seconds{2});
    hear("password:");
    host.password.clear();
    mainQueue.advance(Seconds{2});
    EXPECT_EQ(line.sent, (QStringList{QStringLiteral("changed\n"), QStringLiteral("\n")}));
}

TEST_F(LineAssemblyTest, QrxHoldsBackTheCallsignButNotThePassword)
{
    host.password = QStringLiteral("secret");
    hear("QRX: call: Password :");
    mainQueue.advance(Seconds{10});
    EXPECT_EQ(line.sent, QStringList{QStringLiteral("secret\n")});
}

TEST_F(LineAssemblyTest, OneLineMayAskForBoth)
{
    host.password = QStringLiteral("secret");
    hear("login: and password:");
    mainQueue.advance(Seconds{10});
    EXPECT_EQ(line.sent, (QStringList{QStringLiteral("N0CALL\n"), QStringLiteral("secret\n")}));
}

TEST_F(LineAssemblyTest, NoPromptIsAnsweredBeforeTheFirstConnection)
{
    line.armed = false;
    host.password = QStringLiteral("secret");
    hear("login: password:");
    mainQueue.advance(Seconds{10});
    EXPECT_TRUE(line.sent.isEmpty());
    EXPECT_EQ(host.console, QStringList{QStringLiteral("teln login: password:")});
}

TEST_F(LineAssemblyTest, APromptCutInTwoIsNone)
{
    hear({QStringLiteral("log"), QStringLiteral("in:")});
    hear("ca");
    hear("ll:");
    mainQueue.advance(Seconds{10});
    EXPECT_TRUE(line.sent.isEmpty());
}

TEST_F(LineAssemblyTest, AnAnnouncementThatHoldsAPromptIsAnsweredToo)
{
    hear("To ALL de X1X: my call: X1X");
    hear({QStringLiteral("DX de N0CALL:     7012.3  X1X          sign: fb").leftJustified(80)});
    mainQueue.advance(Seconds{1});
    EXPECT_EQ(line.sent.size(), 2);
    EXPECT_EQ(host.spots.size(), 1);
}

} // namespace spotwell
