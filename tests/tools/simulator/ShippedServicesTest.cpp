// SPDX-FileCopyrightText: 2026 the spotwell developers
// SPDX-License-Identifier: MIT

#include "tests/tools/simulator/WebFixture.h"

#include <QJsonArray>

namespace spotwell::simulator
{
namespace
{

/// Plays the shipped web scenarios to a client that asks as the services' clients do.
class ShippedServices : public WebFixture
{
protected:
    void servesShipped(const QString& name, const Variables& given = {})
    {
        auto read = readScenario(QStringLiteral(SHIPPED_SCENARIOS) + u'/' + name + u".scenario"_qs, given);
        const auto* error = std::get_if<ScenarioError>(&read);
        ASSERT_EQ(error, nullptr) << qPrintable(error->text());
        node_ = std::make_unique<WebServer>(std::get<Scenario>(std::move(read)), clock_, report_, [] {});
        ASSERT_EQ(node_->listen({}), QString{});
    }
    /// The whole answer to one request.
    QByteArray asks(const QByteArray& target = "/spot/activator", const QByteArray& headers = {})
    {
        ScriptedClient& client = connects();
        client.says(get(target, "Connection: close\r\n" + headers));
        EXPECT_TRUE(waitUntil([&] { return client.read(), client.ended(); }, std::chrono::seconds{90}));
        return client.takeHeard();
    }
    static QByteArray bodyOf(const QByteArray& answer) { return answer.mid(answer.indexOf("\r\n\r\n") + 4); }
    static qsizetype spotsIn(const QByteArray& answer)
    {
        const QJsonDocument document = QJsonDocument::fromJson(bodyOf(answer));
        return document.isArray() ? document.array().size() : -1;
    }
};

TEST_F(ShippedServices, areHealthyAndAlive)
{
    const struct {
        QString name;
        QByteArray target;
        QByteArray rowStart;
        int rows;
        int fresh;
    } cases[]{
        {u"pota"_qs, "/spot/activator", "{\"spotId\":", 60, 5},
        {u"dxsummit"_qs, "/api/v1/spots", "{\"id\":", 50, 5},
        {u"wsprnet"_qs, "/drupal/wsprnet/spots", "<tr><td>", 50, 10},
    };
    for (const auto& c : cases) {
        servesShipped(c.name);
        const QByteArray before = asks(c.target);
        clock_.time += std::chrono::seconds{30};
        const QByteArray after = asks(c.target);
        for (const QByteArray& answer : {before, after}) {
            EXPECT_TRUE(answer.startsWith("HTTP/1.1 200 OK\r\nContent-Type: "));
            EXPECT_EQ(answer.count(c.rowStart), c.rows);
        }
        // All but the newest are those of before.
        qsizetype place = 0;
        for (int row = 0; row <= c.fresh; ++row)
            place = after.indexOf(c.rowStart, place + 1);
        const QByteArray firstOld = after.mid(place, after.indexOf(c.rowStart, place + 1) - place);
        EXPECT_EQ(before.indexOf(firstOld), before.indexOf(c.rowStart));
        EXPECT_EQ(failure(), QString{});
        asks("/elsewhere");
        EXPECT_TRUE(failure().endsWith(u"\"GET /elsewhere\" came"_qs)) << qPrintable(failure());
        events_.clear();
    }
}

TEST_F(ShippedServices, canBeSlow)
{
    servesShipped(u"web-slow"_qs, {{u"delay"_qs, u"0.1"_qs}});
    const auto start = Moment::clock::now();
    EXPECT_EQ(spotsIn(asks()), 20);
    EXPECT_GE(Moment::clock::now() - start, std::chrono::milliseconds{100});
}

TEST_F(ShippedServices, canDrip)
{
    servesShipped(u"web-dripping"_qs, {{u"rate"_qs, u"100000"_qs}});
    const auto start = Moment::clock::now();
    const QByteArray answer = asks();
    EXPECT_EQ(spotsIn(answer), 20);
    constexpr int most = 2 * 100; // bytes a millisecond
    EXPECT_GE(Moment::clock::now() - start, std::chrono::milliseconds{answer.size() / most});
}

TEST_F(ShippedServices, canBeEmpty)
{
    servesShipped(u"web-empty"_qs);
    EXPECT_EQ(bodyOf(asks()), "[]");
    const QByteArray page = asks();
    EXPECT_TRUE(page.contains("<html>") && !page.contains("<tr><td>"));
    for (int i = 0; i < 2; ++i)
        EXPECT_EQ(asks(), ok(0).chopped(2) + "Connection: close\r\n\r\n");
}

TEST_F(ShippedServices, canTruncate)
{
    servesShipped(u"web-truncated"_qs);
    const QByteArray answer = asks();
    EXPECT_TRUE(
        answer.contains("\r\nContent-Length: " + QByteArray::number(bodyOf(answer).size() + 500) + "\r\n"));
}

TEST_F(ShippedServices, canSendFarTooMuch)
{
    servesShipped(u"web-oversized"_qs, {{u"bytes"_qs, u"1000000"_qs}});
    EXPECT_EQ(bodyOf(asks()).size(), 1'000'004);
}

TEST_F(ShippedServices, canGzip)
{
    servesShipped(u"web-gzip"_qs);
    const QByteArray answer = asks("/", "Accept-Encoding: gzip\r\n");
    EXPECT_TRUE(answer.contains("\r\nContent-Encoding: gzip\r\nTransfer-Encoding: chunked\r\n"));
    EXPECT_TRUE(answer.endsWith("\r\n0\r\n\r\n"));
    EXPECT_EQ(asks(), QByteArray{});
    EXPECT_TRUE(
        failure().endsWith(u"/web-gzip.scenario:5 expect header Accept-Encoding: the request has none"_qs));
}

TEST_F(ShippedServices, canRedirect)
{
    servesShipped(u"web-redirecting"_qs);
    EXPECT_TRUE(asks().startsWith("HTTP/1.1 302 Found\r\nLocation: /elsewhere\r\n"));
    EXPECT_EQ(spotsIn(asks("/elsewhere")), 20);
}

TEST_F(ShippedServices, canBeBroken)
{
    servesShipped(u"web-server-error"_qs);
    const QByteArray answer = asks();
    EXPECT_TRUE(answer.startsWith("HTTP/1.1 500 Internal Server Error\r\nContent-Type: text/html\r\n"));
    EXPECT_TRUE(bodyOf(answer).endsWith("try again later.</p></body>\n</html>\n"));
}

TEST_F(ShippedServices, canSayThatNothingChanged)
{
    servesShipped(u"web-not-modified"_qs);
    EXPECT_EQ(asks(), "HTTP/1.1 304 Not Modified\r\nConnection: close\r\n\r\n");
    EXPECT_EQ(asks("/", "If-None-Match: \"1\"\r\n"), QByteArray{});
    EXPECT_TRUE(failure().endsWith(
        u"/web-not-modified.scenario:6 expect no header If-None-Match: \"\\\"1\\\"\" came"_qs));
}

TEST_F(ShippedServices, canBreakConnections)
{
    servesShipped(u"web-reset"_qs);
    for (const bool inTheMiddle : {false, true}) {
        ScriptedClient& client = connects();
        client.says(get());
        client.isReset();
        EXPECT_EQ(!client.heard().isEmpty(), inTheMiddle);
    }
    EXPECT_EQ(spotsIn(asks()), 20);
}

TEST_F(ShippedServices, canSendWhatIsNoList)
{
    servesShipped(u"web-wrong-json"_qs);
    const QByteArray bodies[]{"Service is under maintenance",
                              "{\"error\":\"no spots today\"}",
                              "[{\"spotId\":1,\"id\":1,\"activator\":\"N0CALL\"",
                              "[null,true,1,\"N0CALL\",[],{}]",
                              "Service is under maintenance",
                              "Service is under maintenance"};
    for (const QByteArray& body : bodies)
        EXPECT_EQ(bodyOf(asks()), body);
}

} // namespace
} // namespace spotwell::simulator
