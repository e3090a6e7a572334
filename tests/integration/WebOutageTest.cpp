// SPDX-FileCopyrightText: 2026 the spotwell developers
// SPDX-License-Identifier: MIT

#include "tests/integration/support/WebFaultFixture.h"

#include <ostream>

namespace spotwell
{
namespace
{

using namespace std::chrono_literals;
using namespace Qt::StringLiterals;

/// What keeps a service from being spoken to at all.
class WebOutageTest : public WebFaultFixture
{
protected:
    /// All is well again, and the services are asked.
    void expectComingBack()
    {
        answerWell(2);
        clock.step(121s);
        expectSpots(2);
        expectTheNodeGoesOn();
    }
};

struct FalseProof {
    const char* name;
    const char* certificate;
    QString reason;
};

void PrintTo(const FalseProof& proof, std::ostream* out)
{
    *out << proof.name;
}

class FalseProofTest : public WebOutageTest, public testing::WithParamInterface<FalseProof>
{
};

TEST_P(FalseProofTest, keepsTheProgramFromAskingUntilItIsRight)
{
    answerWell(1);
    startAll();
    if (HasFatalFailure())
        return;
    serve(GetParam().certificate);
    ASSERT_TRUE(askedUntil([this] { return !entriesAbout(u"POTA"_s).isEmpty(); }));
    QStringList once = entriesAbout(u"POTA"_s);
    once.removeDuplicates();
    EXPECT_EQ(once, QStringList(u"potaTimer:error:[SSL handshake failed: "_s + GetParam().reason + u']'));
    EXPECT_TRUE(services.requests(potaAddress).empty());
    expectSpots(1, {u"DXSummit"_s, u"WSPRnet"_s});
    expectTheNodeGoesOn();
    serve();
    expectComingBack();
}

INSTANTIATE_TEST_SUITE_P(
    Tls, FalseProofTest,
    testing::Values(
        FalseProof{"unknownAuthority", unknownCertificate,
                   u"The issuer certificate of a locally looked up certificate could not be found"_s},
        FalseProof{"selfSigned", selfSignedCertificate, u"The certificate is self-signed, and untrusted"_s},
        FalseProof{"anotherName", strangersCertificate,
                   u"The host name did not match any of the valid hosts for this certificate"_s},
        FalseProof{"expired", expiredCertificate, u"The certificate has expired"_s}),
    [](const auto& proof) { return proof.param.name; });

TEST_F(WebOutageTest, aRefusalIsToldAndForgotten)
{
    isRefused = true;
    startAll();
    if (HasFatalFailure())
        return;
    expectEntries(u"POTA"_s, {u"potaTimer:error:[Connection refused]"_s});
    expectEntries(u"DXSummit"_s, {u"dxsummitTimer:error:[Connection refused]"_s});
    expectEntries(u"WSPRnet"_s, {u"wsprnetTimer:error:[Connection refused]"_s});
    expectTheNodeGoesOn();
    answerWell(2);
    serve();
    expectComingBack();
}

TEST_F(WebOutageTest, aNameThatIsNotFoundIsToldAndForgotten)
{
    startAll({u"www.dxsummit.fi"_s});
    if (HasFatalFailure())
        return;
    answerWell(1);
    serve();
    expectEntries(u"POTA"_s, {u"potaTimer:error:[Host api.pota.app not found]"_s});
    expectEntries(u"WSPRnet"_s, {u"wsprnetTimer:error:[Host www.wsprnet.org not found]"_s});
    expectSpots(1, {u"DXSummit"_s});
    expectTheNodeGoesOn();
    network->know(allHosts());
    expectComingBack();
}

// Three quarters of a minute of real time: what the shipped program has for its time limits.
TEST_F(WebOutageTest, silenceEndsAfterHalfAMinuteAndSlownessAfterThreeQuarters)
{
    if (sanitized)
        GTEST_SKIP() << "The limits are the same without a sanitizer.";
    const QString silence = u"potaTimer:error:[No data came for 30 seconds.]"_s;
    const QString slowness = u"dxsummitTimer:error:[The transfer did not end within 45 seconds.]"_s;
    services.answer(potaAddress, [](LoopbackHttpServer::Connection& connection, const std::string&) {
        connection.send("HTTP/1.1 200 OK\r\nContent-Length: 1000\r\n\r\n[");
        connection.waitForClose();
    });
    services.answer(dxSummitAddress, [](LoopbackHttpServer::Connection& connection, const std::string&) {
        connection.send("HTTP/1.1 200 OK\r\nContent-Length: 1000\r\n\r\n[");
        while (!connection.waitForClose(1000) && connection.send(" ")) {
        }
    });
    answerWell(1, {u"WSPRnet"_s});
    startAll();
    if (HasFatalFailure())
        return;
    serve();
    ASSERT_TRUE(asked(potaAddress) && asked(dxSummitAddress));
    const Moment askedAt = std::min(services.requests(potaAddress).front().time,
                                    services.requests(dxSummitAddress).front().time);
    expectTheNodeGoesOn();
    EXPECT_TRUE(ping.answersWhile([&] { return countOfEntries(silence) > 0; }));
    EXPECT_GE(std::chrono::steady_clock::now() - askedAt, 29s);
    expectTheNodeGoesOn();
    EXPECT_TRUE(ping.answersWhile([&] { return countOfEntries(slowness) > 0; }));
    EXPECT_GE(std::chrono::steady_clock::now() - askedAt, 44s);
    answerWell(2);
    expectSpots(2, {u"WSPRnet"_s, u"POTA"_s});
    expectComingBack();
}

} // namespace
} // namespace spotwell
