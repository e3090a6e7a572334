// SPDX-FileCopyrightText: 2026 the spotwell developers
// SPDX-License-Identifier: MIT

#include "tools/spotwell-bridge/telnet/NodeDialogue.h"

#include "tests/tools/bridge/telnet/Bytes.h"
#include "tools/spotwell-bridge/telnet/NodeTexts.h"

#include <gtest/gtest.h>

namespace spotwell::bridge
{
namespace
{

constexpr TimePoint now = std::chrono::sys_days{std::chrono::year{2026} / 11 / 21} + std::chrono::hours{14} +
                          std::chrono::minutes{28} + std::chrono::seconds{59};

class DialogueTest : public testing::Test
{
protected:
    /// What the node says to a line, in one piece; "<end>" behind it when it ends the dialogue.
    QByteArray to(const QByteArray& text, bool tooLong = false)
    {
        const Answer answer = dialogue_.answer({text, tooLong}, now);
        return answer.pieces.join() + (answer.ends ? "<end>" : "");
    }
    void sends(int from, int to)
    {
        for (int i = from; i <= to; ++i)
            lines_.add("spot " + QByteArray::number(i) + "\r\n");
    }
    static QByteArray spots(int from, int to)
    {
        QByteArray text;
        for (int i = from; i <= to; ++i)
            text += "spot " + QByteArray::number(i) + "\r\n";
        return text;
    }

    const QByteArray prompt_ = "N0CALL de SPOTWELL 21-Nov-2026 1428Z spotwell >\r\n";
    SentLines lines_{NodeLimits{}};
    NodeDialogue dialogue_{lines_};
};

TEST_F(DialogueTest, asksForTheCallsignAndGreets)
{
    EXPECT_EQ(NodeDialogue::opening(), "login: ");
    EXPECT_FALSE(dialogue_.isLoggedIn());
    EXPECT_EQ(to("n0call"), "\r\nHello N0CALL, this is spotwell-bridge " SPOTWELL_VERSION
                            ".\r\nEvery spot that spotwell finds is shown here.\r\n"
                            "Commands are SH/DX [number of spots] and BYE.\r\n"
                            "N0CALL de SPOTWELL 21-Nov-2026 1428Z spotwell >\r\n");
    EXPECT_TRUE(dialogue_.isLoggedIn());
    EXPECT_EQ(dialogue_.callsign(), "N0CALL");
}

TEST_F(DialogueTest, asksAgainTwice)
{
    EXPECT_EQ(to("hello there"), "Sorry, that is not a callsign.\r\nlogin: ");
    EXPECT_EQ(to(""), "login: ");
    EXPECT_EQ(to("  "), "login: ");
    EXPECT_EQ(to("12345"), "Sorry, that is not a callsign.\r\nlogin: ");
    EXPECT_EQ(to("quit"), "Sorry, that is not a callsign.\r\n73 de SPOTWELL\r\n<end>");
    EXPECT_FALSE(dialogue_.isLoggedIn());
}

TEST_F(DialogueTest, takesACallsignAfterTwoFailures)
{
    to("x");
    to("y");
    EXPECT_TRUE(to("N0CALL").endsWith(prompt_));
    EXPECT_TRUE(dialogue_.isLoggedIn());
}

TEST_F(DialogueTest, takesNoCallsignOutOfATooLongLine)
{
    EXPECT_EQ(to("N0CALL", true), "Sorry, that is not a callsign.\r\nlogin: ");
    EXPECT_EQ(to("", true), "Sorry, that is not a callsign.\r\nlogin: ");
    EXPECT_FALSE(dialogue_.isLoggedIn());
}

TEST_F(DialogueTest, answersAnEmptyLineWithThePrompt)
{
    to("N0CALL");
    EXPECT_EQ(to(""), prompt_);
    EXPECT_EQ(to("   "), prompt_);
}

TEST_F(DialogueTest, endsAtAFarewell)
{
    for (const char* command : {"bye", "quit", "b", "q", "exit", "BYE", " Quit  "}) {
        NodeDialogue dialogue(lines_);
        (void)dialogue.answer({"N0CALL"}, now);
        const Answer answer = dialogue.answer({command}, now);
        EXPECT_TRUE(answer.ends) << command;
        EXPECT_EQ(answer.pieces.join(), "73 de SPOTWELL\r\n") << command;
    }
}

TEST_F(DialogueTest, saysGoodbyeOnALineOfItsOwn)
{
    EXPECT_EQ(dialogue_.goodbye(), "\r\n73 de SPOTWELL\r\n");
    to("N0CALL");
    EXPECT_EQ(dialogue_.goodbye(), "73 de SPOTWELL\r\n");
}

TEST_F(DialogueTest, namesTheCommandThatItDoesNotHave)
{
    const auto line = [](const QByteArray& word) {
        return "Sorry, \"" + word + "\" is no command here, only SH/DX and BYE are.\r\n";
    };
    to("N0CALL");
    EXPECT_EQ(to("set/name Jim"), line("set/name") + prompt_);
    EXPECT_EQ(to(" SH/WWV  10"), line("SH/WWV") + prompt_);
    EXPECT_EQ(to("sh/dxcc"), line("sh/dxcc") + prompt_);
    EXPECT_EQ(to("N0CALL"), line("N0CALL") + prompt_);
    EXPECT_EQ(to("bye bye"), line("bye") + prompt_);
    EXPECT_EQ(to("login:"), line("login?") + prompt_);
    EXPECT_EQ(to("caf\xC3\xA9\"\xFF"), line("caf????") + prompt_);
    EXPECT_EQ(to("12345678901234567890"), line("12345678901234567890") + prompt_);
    EXPECT_EQ(to("123456789012345678901"), line("12345678901234567890...") + prompt_);
    EXPECT_EQ(to("bye", true), "Sorry, that line is too long.\r\n" + prompt_);
}

TEST_F(DialogueTest, showsTheLastSpots)
{
    to("N0CALL");
    EXPECT_EQ(to("sh/dx"), "There are no spots yet.\r\n" + prompt_);
    sends(1, 1);
    EXPECT_EQ(to("sh/dx"), spots(1, 1) + prompt_);
    sends(2, 10);
    EXPECT_EQ(to("sh/dx"), spots(1, 10) + prompt_);
    sends(11, 99);
    EXPECT_EQ(to("sh/dx"), spots(90, 99) + prompt_);
    EXPECT_EQ(to("sh/dx 100"), spots(1, 99) + prompt_);
    sends(100, 101);
    struct Case {
        QByteArray command;
        int from;
    };
    const std::vector<Case> cases{{"sh/dx 1", 101},
                                  {"show/dx 1", 101},
                                  {"sh/dx/1", 101},
                                  {"show/dx/1", 101},
                                  {"SH/DX 2", 100},
                                  {"Show/Dx/002", 100},
                                  {"  sh/dx   99 ", 3},
                                  {"sh/dx 100", 2},
                                  {"sh/dx 101", 2},
                                  {"sh/dx/101", 2},
                                  {"sh/dx 18446744073709551616", 2},
                                  {"sh/dx 18446744073709551615", 2},
                                  {"sh/dx ", 92},
                                  {"show/dx", 92}};
    for (const Case& c : cases)
        EXPECT_EQ(to(c.command), spots(c.from, 101) + prompt_) << c.command.constData();
}

TEST_F(DialogueTest, takesOnlyANumberOfSpots)
{
    to("N0CALL");
    sends(1, 20);
    for (const char* command :
         {"sh/dx 0", "sh/dx 00", "sh/dx/0", "sh/dx -1", "sh/dx +1", "sh/dx 1.5", "sh/dx ten", "sh/dx on 20m",
          "sh/dx 5 6", "sh/dx/", "show/dx/ 5", "sh/dx/5/6", "sh/dx \xD9\xA1"})
        EXPECT_EQ(to(command), "Sorry, SH/DX takes a number of spots from 1 to 100, or none.\r\n" + prompt_)
            << command;
}

TEST_F(DialogueTest, sharesTheSpotsItShows)
{
    to("N0CALL");
    sends(1, 2);
    const Answer answer = dialogue_.answer({"sh/dx"}, now);
    ASSERT_EQ(answer.pieces.size(), 3);
    EXPECT_EQ(answer.pieces[0].constData(), lines_.at(0).constData());
}

TEST(Callsign, isTakenInCapitals)
{
    struct Case {
        QByteArray text;
        std::optional<QByteArray> callsign;
    };
    const std::vector<Case> cases{{"N0CALL", "N0CALL"},
                                  {"n0call", "N0CALL"},
                                  {" dl1abc\t", "DL1ABC"},
                                  {"k1a", "K1A"},
                                  {"ea8/dl1abc-2", "EA8/DL1ABC-2"},
                                  {"1a0", "1A0"},
                                  {"VP2E/DL1ABC/QRP", "VP2E/DL1ABC/QRP"},
                                  {"VP2E/DL1ABCD/QRP", std::nullopt},
                                  {"K1", std::nullopt},
                                  {"ABC", std::nullopt},
                                  {"123", std::nullopt},
                                  {"/-1", std::nullopt},
                                  {"", std::nullopt},
                                  {"N0 CALL", std::nullopt},
                                  {"N0CALL.", std::nullopt},
                                  {"N0_CALL", std::nullopt},
                                  {"N0CALL:", std::nullopt},
                                  {"\xC3\x84"
                                   "1A",
                                   std::nullopt},
                                  {"N0CALL\xFF", std::nullopt}};
    for (const Case& c : cases)
        EXPECT_EQ(callsignOf(c.text), c.callsign) << c.text.constData();
}

TEST(Prompt, showsUtcWithEnglishMonths)
{
    using namespace std::chrono;
    const auto at = [](sys_days day, int hour, int minute) {
        return prompt("K1A", TimePoint{day + hours{hour} + minutes{minute}});
    };
    const char* const months[]{"Jan", "Feb", "Mar", "Apr", "May", "Jun",
                               "Jul", "Aug", "Sep", "Oct", "Nov", "Dec"};
    for (unsigned i = 0; i < 12; ++i)
        EXPECT_EQ(at(year{2027} / month{i + 1} / 3, 4, 5),
                  QByteArray("K1A de SPOTWELL 03-") + months[i] + "-2027 0405Z spotwell >\r\n");
    EXPECT_EQ(at(year{2028} / 2 / 29, 0, 0), "K1A de SPOTWELL 29-Feb-2028 0000Z spotwell >\r\n");
    EXPECT_EQ(at(year{1969} / 12 / 31, 23, 59), "K1A de SPOTWELL 31-Dec-1969 2359Z spotwell >\r\n");
}

TEST(NodeTexts, askForTheCallsignOnlyInTheQuestion)
{
    // Callsigns and words made to complete what a cluster client looks for.
    for (const char* callsign :
         {"N0CALL", "DE5SIGN", "LOGIN1", "PASSWORD1", "1-ENTER-YOUR-CA", "VOTRE-INDICATI1"}) {
        for (const char* word : {"call:", "enter your call", "login:", "password", "N0CALL:", "sign:"}) {
            const QByteArrayList texts{greeting(callsign),
                                       prompt(callsign, now),
                                       unknownCommand(word),
                                       notACallsign(),
                                       badSpotCount(),
                                       noSpotsYet(),
                                       lineTooLong(),
                                       spotsLeftOut(1),
                                       spotsLeftOut(123),
                                       noRoom(),
                                       farewell()};
            for (const QByteArray& text : texts) {
                EXPECT_TRUE(text.endsWith("\r\n"));
                for (const char* asked :
                     {"login:", "call:", "sign:", "callsign :", "votre indicatif:", "password:", "password :",
                      "mot de passe:", "enter your cal", "javaprssrvr"})
                    EXPECT_FALSE(text.toLower().contains(asked)) << text.constData();
            }
        }
    }
}

TEST(NodeTexts, areNoWiderThanAClientsWindow)
{
    constexpr qsizetype width = 78;
    const QByteArray callsign(15, 'W');
    for (const QByteArray& text :
         {greeting(callsign), prompt(callsign, now), unknownCommand(QByteArray(100, 'W')), notACallsign(),
          badSpotCount(), noSpotsYet(), lineTooLong(), spotsLeftOut(4'000'000'000), noRoom(), farewell()}) {
        for (const QByteArray& line : text.split('\n'))
            EXPECT_LE(line.trimmed().size(), width) << line.constData();
    }
}

TEST(NodeTexts, areTheseToTheLetter)
{
    EXPECT_EQ(spotsLeftOut(1), "SPOTWELL: 1 spot was left out, for it was not taken in time.\r\n");
    EXPECT_EQ(spotsLeftOut(2), "SPOTWELL: 2 spots were left out, for they were not taken in time.\r\n");
    EXPECT_EQ(spotsLeftOut(12345678901234567890ULL),
              "SPOTWELL: 12345678901234567890 spots were left out, for they were not taken in time.\r\n");
    EXPECT_EQ(noRoom(), "Sorry, there is no room for a further client. 73 de SPOTWELL\r\n");
}

} // namespace
} // namespace spotwell::bridge
