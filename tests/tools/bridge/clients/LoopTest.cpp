// SPDX-FileCopyrightText: 2026 the spotwell developers
// SPDX-License-Identifier: MIT

#include "tests/integration/support/RunningProgram.h"
#include "tests/support/WaitUntil.h"
#include "tests/tools/bridge/clients/ClientsFixture.h"
#include "tests/tools/bridge/clients/ForeignProgram.h"

#include <csignal>

namespace spotwell::bridge
{

namespace
{

const QString postedLine =
    QStringLiteral("DX de W3XYZ:     14025.0  JA1XYZ       CQ up 2                        1428Z");
const QString lastLine =
    QStringLiteral("DX de OH2XYZ-#:   7012.3  ZL1XYZ       CW 12 dB 24 WPM CQ             1428Z KP20");
const QString spotCall = QStringLiteral("9A/OE1XYZ");

/// spotwell itself, connected by mistake to the node that gets its spots from it; and another client there.
class LoopTest : public ClientsFixture
{
protected:
    LoopTest()
    {
        home.writeSettings({{QStringLiteral("dxcluster"), QStringLiteral("127.0.0.1")},
                            {QStringLiteral("port"), QString::number(bridge.port())},
                            {QStringLiteral("callsign"), QStringLiteral("N0CALL")},
                            {QStringLiteral("reconnect"), QStringLiteral("true")}});
        spotwell.emplace(home, bus.address());
        client.emplace(foreignCommand(
            clientHome, {},
            {QStringLiteral("nc"), QStringLiteral("127.0.0.1"), QString::number(bridge.port())}));
        client->writeLine("K1XYZ");
    }
    ~LoopTest() override = default;

    void TearDown() override
    {
        EXPECT_TRUE(spotwell->end(SIGTERM)) << "no orderly end";
        if (HasFailure())
            std::cerr << "What spotwell wrote:\n" << home.log().constData();
        ClientsFixture::TearDown();
    }

    void postSpot() const
    {
        post(QStringLiteral("com.tarnbrooksoftware.spotwell_spot"),
             QStringLiteral("6 combinedCallsign s 9A/OE1XYZ timestamp x 1801645507000000 megahertz d 21.205 "
                            "comments s Gr\u00fc\u00dfe source s POTA dxde_call s DL1XYZ")
                 .split(u' '));
    }
    /// The next line that the client gets, without its line end.
    QString next()
    {
        QString line = QString::fromStdString(client->readLine().value_or(""));
        return line.remove(u'\r');
    }
    /// How often such a line came over the bus.
    qsizetype countOnBus(const QString& part) { return bridge.lines().filter(part).size(); }

    Home clientHome;
    std::optional<RunningProgram> spotwell;
    std::optional<ChildProcess> client;
};

TEST_F(LoopTest, EndsAfterOneRound)
{
    ASSERT_TRUE(bridge.welcomes(QStringLiteral("N0CALL")));
    ASSERT_TRUE(bridge.welcomes(QStringLiteral("K1XYZ")));
    for (const char* begin : {"login: ", "Hello K1XYZ", "Every spot", "Commands", "K1XYZ de SPOTWELL"})
        ASSERT_TRUE(next().startsWith(QLatin1String(begin))) << begin;

    // Round they go: to the node, to spotwell, and back over the bus.
    postSpot();
    postLine(postedLine);
    EXPECT_TRUE(waitUntil([this] { return countOnBus(spotCall) == 1 && countOnBus(postedLine) == 2; }));
    EXPECT_EQ(next(),
              QStringLiteral(
                  "DX de DL1XYZ:    21205.0  9A/OE1XYZ    Gr\u00fc\u00dfe                          0905Z"));
    EXPECT_EQ(next(), postedLine);

    // What comes after them has gone round, and they have not come again.
    postLine(lastLine);
    EXPECT_TRUE(waitUntil([this] { return countOnBus(lastLine) == 2; }));
    EXPECT_EQ(next(), lastLine);
    EXPECT_EQ(countOnBus(spotCall), 1);
    EXPECT_EQ(countOnBus(postedLine), 2);
    EXPECT_EQ(bridge.spots().size(), 1);
    EXPECT_EQ(bridge.lines().size(), 5);
}

} // namespace

} // namespace spotwell::bridge
