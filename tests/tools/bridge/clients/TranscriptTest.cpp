// SPDX-FileCopyrightText: 2026 the spotwell developers
// SPDX-License-Identifier: MIT

#include "tests/support/WaitUntil.h"
#include "tests/tools/bridge/clients/ClientsFixture.h"
#include "tests/tools/bridge/clients/ForeignProgram.h"

#include <QRegularExpression>

namespace spotwell::bridge
{

namespace
{

const QString firstSpot =
    QStringLiteral("DX de W3XYZ:     14025.0  JA1XYZ       CQ up 2                        1428Z");
const QString secondSpot =
    QStringLiteral("DX de OH2XYZ-#:   7012.3  ZL1XYZ       CW 12 dB 24 WPM CQ             1428Z KP20");
const QString thirdSpot = QStringLiteral(
    "DX de DL1XYZ:    21205.0  9A/OE1XYZ    Gr\u00fc\u00dfe, QSL via b\u00fcro          1429Z");

const QString prompt = QStringLiteral("N0CALL de SPOTWELL DAY TIME spotwell >\r");

/// A line of the transcript, with the prompt's time masked.
QString masked(const std::string& line)
{
    static const QRegularExpression time(
        QStringLiteral(R"(\b\d\d-[A-Z][a-z]{2}-\d{4} \d{4}Z (?=spotwell >))"));
    return QString::fromStdString(line).replace(time, QStringLiteral("DAY TIME "));
}

/// A plain connection by netcat.
class TranscriptTest : public ClientsFixture
{
protected:
    [[nodiscard]] ChildProcess netcat() const
    {
        return ChildProcess(foreignCommand(
            home, {}, {QStringLiteral("nc"), QStringLiteral("127.0.0.1"), QString::number(bridge.port())}));
    }
    /// The next line, masked; empty when there is none.
    [[nodiscard]] static QString next(ChildProcess& client) { return masked(client.readLine().value_or("")); }
    /// All that is left to its end.
    [[nodiscard]] static QStringList rest(ChildProcess& client)
    {
        QStringList lines;
        while (const auto line = client.readLine())
            lines.append(masked(*line));
        return lines;
    }
    /// Posts three spots and waits until the bridge has them.
    void postThree()
    {
        for (const QString& line : {firstSpot, secondSpot, thirdSpot})
            postLine(line);
        ASSERT_TRUE(waitUntil([this] { return bridge.lines().size() == 3; }));
    }
};

TEST_F(TranscriptTest, AnswersAPipe)
{
    postThree();
    ChildProcess client(foreignCommand(
        home, {},
        {QStringLiteral("sh"), QStringLiteral("-c"),
         QStringLiteral(R"(printf 'N0CALL\r\nsh/dx 2\r\nnonsense\r\nbye\r\n' | nc 127.0.0.1 %1)")
             .arg(bridge.port())}));
    const QStringList expected{
        QStringLiteral("login: \r"),
        QStringLiteral("Hello N0CALL, this is spotwell-bridge " SPOTWELL_VERSION ".\r"),
        QStringLiteral("Every spot that spotwell finds is shown here.\r"),
        QStringLiteral("Commands are SH/DX [number of spots] and BYE.\r"),
        prompt,
        secondSpot + u'\r',
        thirdSpot + u'\r',
        prompt,
        QStringLiteral("Sorry, \"nonsense\" is no command here, only SH/DX and BYE are.\r"),
        prompt,
        QStringLiteral("73 de SPOTWELL\r"),
    };
    EXPECT_EQ(rest(client), expected);
    EXPECT_EQ(client.wait(), 0);
}

TEST_F(TranscriptTest, TalksWithAUser)
{
    ChildProcess client = netcat();
    client.writeLine("CQ");
    EXPECT_EQ(next(client), QStringLiteral("login: Sorry, that is not a callsign.\r"));
    client.writeLine("n0call");
    EXPECT_EQ(next(client), QStringLiteral("login: \r"));
    EXPECT_EQ(next(client), QStringLiteral("Hello N0CALL, this is spotwell-bridge " SPOTWELL_VERSION ".\r"));
    EXPECT_EQ(next(client), QStringLiteral("Every spot that spotwell finds is shown here.\r"));
    EXPECT_EQ(next(client), QStringLiteral("Commands are SH/DX [number of spots] and BYE.\r"));
    EXPECT_EQ(next(client), prompt);
    client.writeLine("sh/dx");
    EXPECT_EQ(next(client), QStringLiteral("There are no spots yet.\r"));
    EXPECT_EQ(next(client), prompt);

    postLine(firstSpot);
    EXPECT_EQ(next(client), firstSpot + u'\r');
    client.writeLine("");
    EXPECT_EQ(next(client), prompt);
    postLine(secondSpot);
    postLine(firstSpot);
    postLine(thirdSpot);
    EXPECT_EQ(next(client), secondSpot + u'\r');
    EXPECT_EQ(next(client), thirdSpot + u'\r') << "the first one was sent before";
    client.writeLine("SHOW/DX 1");
    EXPECT_EQ(next(client), thirdSpot + u'\r');
    EXPECT_EQ(next(client), prompt);
    client.writeLine("sh/dx 0");
    EXPECT_EQ(next(client), QStringLiteral("Sorry, SH/DX takes a number of spots from 1 to 100, or none.\r"));
    EXPECT_EQ(next(client), prompt);
    client.writeLine("quit");
    EXPECT_EQ(next(client), QStringLiteral("73 de SPOTWELL\r"));
}

} // namespace

} // namespace spotwell::bridge
