// SPDX-FileCopyrightText: 2026 the spotwell developers
// SPDX-License-Identifier: MIT

#include "tests/integration/support/RunningSimulator.h"
#include "tests/integration/support/WebFaultFixture.h"

#include <QFile>

#include <memory>
#include <mutex>
#include <ostream>

namespace spotwell
{
namespace
{

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

/// What a service answers before it answers well again.
struct WebFault {
    const char* name;
    QString feed;
    /// The simulator's: the name of a scenario with options in front, or the scenario itself.
    QStringList scenario;
    QByteArray scenarioText;
    /// Or an answer of the test's own.
    LoopbackHttpServer::Handler handler;
    /// What the log has then, in this order.
    QStringList entries;
    /// What it brings all the same.
    int spots = 0;
};

void PrintTo(const WebFault& fault, std::ostream* out)
{
    *out << fault.name;
}

const QString tooLarge = u"error:[The answer is larger than 33554432 bytes.]"_s;

/// A service that answers one after the other. A large answer's requests, one a second, would otherwise share
/// what a busy machine can transfer, and none would end within the limit of a transfer.
LoopbackHttpServer::Handler oneByOne(const LoopbackHttpServer::Handler& handler)
{
    return [handler, turn = std::make_shared<std::mutex>()](LoopbackHttpServer::Connection& connection,
                                                            const std::string& head) {
        const std::lock_guard guard(*turn);
        handler(connection, head);
    };
}

class WebFaultsTest : public WebFaultFixture, public testing::WithParamInterface<WebFault>
{
protected:
    LoopbackHttpServer::Handler faulty()
    {
        const WebFault& fault = GetParam();
        if (fault.handler)
            return fault.handler;
        QStringList arguments = fault.scenario;
        if (arguments.isEmpty()) {
            const QString path = home.filePath(u"web.scenario"_s);
            QFile file(path);
            EXPECT_TRUE(file.open(QIODevice::WriteOnly));
            file.write(fault.scenarioText);
            arguments.append(path);
        }
        simulator_.emplace(arguments);
        const LoopbackHttpServer::Handler handler = forwardingTo(simulator_->port());
        return fault.entries.filter(tooLarge).isEmpty() ? handler : oneByOne(handler);
    }

private:
    std::optional<RunningSimulator> simulator_;
};

TEST_P(WebFaultsTest, costsItsLinesAndNothingElse)
{
    const WebFault& fault = GetParam();
    QStringList others = allSources();
    others.removeOne(fault.feed);
    answerWell(1, others);
    const LoopbackHttpServer::Handler handler = faulty();
    services.answer(addressOf(fault.feed), handler);
    services.answer("https://api.pota.app/elsewhere", handler);
    startAll();
    if (HasFatalFailure())
        return;
    const qint64 before = program->residentKiB();
    serve();
    expectEntries(fault.feed, fault.entries, fault.spots);
    expectSpots(1, others);
    expectTheNodeGoesOn();
    RecordProperty("KiBBefore", std::to_string(before));
    RecordProperty("KiBAtMost", std::to_string(mostKiB));
    // A body of 32 MiB twice: as it comes and as it is kept.
    EXPECT_LT(mostKiB - before, 128 * 1024 * slowness);

    answerWell(3);
    clock.step(121s);
    expectSpots(3);
}

LoopbackHttpServer::Handler redirecting(const std::string& location)
{
    return answering("302 Found", "", "Location: " + location + "\r\n");
}

/// Breaks in the middle of a list.
LoopbackHttpServer::Handler breakingOff()
{
    return [](LoopbackHttpServer::Connection& connection, const std::string&) {
        connection.send("HTTP/1.1 200 OK\r\nContent-Length: 100000\r\n\r\n" + potaAnswer(2));
        // The client has it before the break takes away what it has not read.
        connection.waitForClose(200);
        connection.close(true);
    };
}

LoopbackHttpServer::Handler closing()
{
    return [](LoopbackHttpServer::Connection& connection, const std::string&) { connection.close(); };
}

const QByteArray bomb = "service http\nheader Content-Type \"application/json\"\ngzip\nbody \"[\\\"\"\n"
                        "filler 34000000\nbody \"\\\"]\"\n";

const std::vector<WebFault> potaFaults{
    {"potaSlow", u"POTA"_s, {u"web-slow"_s}, {}, {}, {}, 20},
    {"potaDripping", u"POTA"_s, {u"--set"_s, u"rate=4000"_s, u"web-dripping"_s}, {}, {}, {}, 20},
    {"potaSentElsewhere", u"POTA"_s, {u"web-redirecting"_s}, {}, {}, {}, 20},
    {"potaTruncated", u"POTA"_s, {u"web-truncated"_s}, {}, {}, {u"potaTimer:error:[Connection closed]"_s}},
    {"potaBreaksOff", u"POTA"_s, {}, {}, breakingOff(), {u"potaTimer:error:[Connection closed]"_s}},
    {"potaCloses", u"POTA"_s, {}, {}, closing(), {u"potaTimer:error:[Connection closed]"_s}},
    {"potaTooLarge", u"POTA"_s, {u"web-oversized"_s}, {}, {}, {u"potaTimer:"_s + tooLarge}},
    {"potaBomb", u"POTA"_s, {}, bomb, {}, {u"potaTimer:"_s + tooLarge}},
    {"potaServerError",
     u"POTA"_s,
     {u"web-server-error"_s},
     {},
     {},
     {u"parsePotaData:spots is not an array"_s}},
    {"potaWrongContent",
     u"POTA"_s,
     {u"web-wrong-json"_s},
     {},
     {},
     {u"parsePotaData:spots is not an array"_s, u"parsePotaData:spot is not an object:[0]"_s,
      u"parsePotaData:spot is not an object:[1]"_s, u"parsePotaData:spot is not an object:[2]"_s,
      u"parsePotaData:spot is not an object:[3]"_s, u"parsePotaData:spot is not an object:[4]"_s},
     1},
    {"potaOneOddRow",
     u"POTA"_s,
     {},
     {},
     answering("200 OK", "[" + potaElement(5) + R"(,"Park closed",)" + potaElement(4) + "]"),
     {u"parsePotaData:spot is not an object:[1]"_s},
     2},
    {"potaFromTlsToPlainText",
     u"POTA"_s,
     {},
     {},
     redirecting("http://www.wsprnet.org/pota"),
     {u"potaTimer:error:[Insecure redirect]"_s}}};

const std::vector<WebFault> dxSummitFaults{
    {"dxSummitEmpty",
     u"DXSummit"_s,
     {u"web-empty"_s},
     {},
     {},
     {u"parseDxSummitData:spots is not an array"_s, u"dxsummitTimer:error:no data"_s}},
    {"dxSummitNotModified",
     u"DXSummit"_s,
     {u"web-not-modified"_s},
     {},
     {},
     {u"dxsummitTimer:error:no data"_s}},
    {"dxSummitResets",
     u"DXSummit"_s,
     {},
     "service http\nreset\n",
     {},
     {u"dxsummitTimer:error:[Connection closed]"_s}},
    {"dxSummitTooLarge", u"DXSummit"_s, {u"web-oversized"_s}, {}, {}, {u"dxsummitTimer:"_s + tooLarge}},
    {"dxSummitBomb", u"DXSummit"_s, {}, bomb, {}, {u"dxsummitTimer:"_s + tooLarge}},
    {"dxSummitRoundAndRound",
     u"DXSummit"_s,
     {},
     {},
     redirecting(dxSummitAddress),
     {u"dxsummitTimer:error:[Too many redirects]"_s}},
    {"dxSummitOneOddRow",
     u"DXSummit"_s,
     {},
     {},
     answering("200 OK", "[" + dxSummitElement(5) + ",null," + dxSummitElement(4) + "]"),
     {u"parseDxSummitData:spot is not an object:[1]"_s},
     2}};

const std::vector<WebFault> wsprnetFaults{
    {"wsprnetServerError", u"WSPRnet"_s, {u"web-server-error"_s}, {}, {}, {u"parseWsprnetData:spots:[0]"_s}},
    {"wsprnetTruncated",
     u"WSPRnet"_s,
     {u"web-truncated"_s},
     {},
     {},
     {u"wsprnetTimer:error:[Connection closed]"_s}},
    {"wsprnetEmpty", u"WSPRnet"_s, {}, {}, answering("200 OK", ""), {u"wsprnetTimer:error:no data"_s}},
    {"wsprnetOneOddRow",
     u"WSPRnet"_s,
     {},
     {},
     answering("200 OK", "<table>\n" + wsprnetRow(5) + "<tr><td>&nbsp;\n<tr></tr>\n" + wsprnetRow(4)),
     {u"parseWsprnetData:spots:[4]"_s},
     2}};

INSTANTIATE_TEST_SUITE_P(Wsprnet, WebFaultsTest, testing::ValuesIn(wsprnetFaults),
                         [](const auto& fault) { return fault.param.name; });
INSTANTIATE_TEST_SUITE_P(Pota, WebFaultsTest, testing::ValuesIn(potaFaults),
                         [](const auto& fault) { return fault.param.name; });
INSTANTIATE_TEST_SUITE_P(DxSummit, WebFaultsTest, testing::ValuesIn(dxSummitFaults),
                         [](const auto& fault) { return fault.param.name; });

} // namespace
} // namespace spotwell
