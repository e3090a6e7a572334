// SPDX-FileCopyrightText: 2026 the spotwell developers
// SPDX-License-Identifier: MIT

#pragma once

#include "tests/fakes/FakeTime.h"
#include "tests/tools/simulator/NodeFixture.h"
#include "tools/spotwell-simulator/WebServer.h"

#include <QStringList>

namespace spotwell::simulator
{

/// A service that plays the scenario written in the test, and its report.
class WebFixture : public NodeFixture
{
protected:
    void serves(const QByteArray& text, ConnectionLimits limits = {},
                std::optional<QSslConfiguration> identity = std::nullopt)
    {
        auto parsed = parseScenario(text, QStringLiteral("test.scenario"));
        const auto* error = std::get_if<ScenarioError>(&parsed);
        ASSERT_EQ(error, nullptr) << qPrintable(error->text());
        node_ = std::make_unique<WebServer>(
            std::get<Scenario>(std::move(parsed)), clock_, report_, [this] { ++progress_; },
            std::move(identity), limits);
        ASSERT_EQ(node_->listen({}), QString{});
    }

    /// What a client asks with.
    static QByteArray get(const QByteArray& target = "/", const QByteArray& headers = {})
    {
        return "GET " + target + " HTTP/1.1\r\nHost: localhost\r\n" + headers + "\r\n";
    }
    /// The head of an answer that announces `length`.
    static QByteArray ok(qsizetype length, const QByteArray& headers = {})
    {
        return "HTTP/1.1 200 OK\r\n" + headers + "Content-Length: " + QByteArray::number(length) + "\r\n\r\n";
    }
    /// Reads the whole answer to a new connection's only request, up to the end of the connection.
    QByteArray fetch(const QByteArray& target = "/")
    {
        ScriptedClient& client = connects();
        client.says(get(target, "Connection: close\r\n"));
        EXPECT_TRUE(waitUntil([&] { return client.read(), client.ended(); }));
        return client.takeHeard();
    }
    /// The body alone.
    QByteArray fetchBody()
    {
        const QByteArray answer = fetch();
        return answer.mid(answer.indexOf("\r\n\r\n") + 4);
    }
    [[nodiscard]] QString names() const
    {
        QStringList names;
        for (const QJsonObject& event : events_)
            names.append(event[u"event"].toString());
        return names.join(u' ');
    }

    int progress_ = 0;
};

} // namespace spotwell::simulator
