// SPDX-FileCopyrightText: 2026 the spotwell developers
// SPDX-License-Identifier: MIT

#pragma once

#include "tests/fakes/FakeTime.h"
#include "tests/tools/simulator/ScriptedClient.h"
#include "tools/spotwell-simulator/NodeServer.h"

#include <QJsonDocument>
#include <QJsonObject>
#include <gtest/gtest.h>

#include <list>
#include <memory>
#include <vector>

namespace spotwell::simulator
{

/// A node that plays the scenario written in the test, and its report.
class NodeFixture : public testing::Test
{
protected:
    void plays(const QByteArray& text, ConnectionLimits limits = {})
    {
        auto parsed = parseScenario(text, QStringLiteral("test.scenario"));
        const auto* error = std::get_if<ScenarioError>(&parsed);
        ASSERT_EQ(error, nullptr) << qPrintable(error->text());
        node_ = std::make_unique<NodeServer>(
            std::get<Scenario>(std::move(parsed)), clock_, report_, [this] { ++sessionsOver_; }, limits);
        ASSERT_EQ(node_->listen({}), QString{});
    }
    ScriptedClient& connects(int receiveBuffer = 0)
    {
        return clients_.emplace_back(node_->port(), receiveBuffer);
    }

    /// Waits until `count` connections have ended.
    void ends(int count = 1)
    {
        EXPECT_TRUE(waitUntil([&] { return sessionsOver_ >= count; }));
    }
    [[nodiscard]] std::vector<QJsonObject> events(const QString& name) const
    {
        std::vector<QJsonObject> found;
        for (const QJsonObject& event : events_) {
            if (event[u"event"].toString() == name)
                found.push_back(event);
        }
        return found;
    }
    /// Waits until `count` events of that name were reported.
    void waitsFor(const QString& name, std::size_t count)
    {
        EXPECT_TRUE(waitUntil([&] { return events(name).size() >= count; })) << qPrintable(name);
    }
    /// The one failed check: where, what and why.
    [[nodiscard]] QString failure() const
    {
        QString text;
        for (const QJsonObject& event : events(QStringLiteral("check"))) {
            if (event[u"result"].toString() == u"failed")
                text += event[u"at"].toString() + u' ' + event[u"what"].toString() + u": "_qs +
                        event[u"why"].toString();
        }
        return text;
    }
    [[nodiscard]] int passed() const { return node_->passedChecks(); }
    [[nodiscard]] int failed() const { return node_->failedChecks(); }
    [[nodiscard]] QString farewell() const
    {
        const auto all = events(QStringLiteral("disconnect"));
        return all.empty() ? QString{} : all.back()[u"by"].toString() + u' ' + all.back()[u"how"].toString();
    }

    FakeClock clock_;
    std::vector<QJsonObject> events_;
    Report report_{
        [this](const QByteArray& line) { events_.push_back(QJsonDocument::fromJson(line).object()); }};
    int sessionsOver_ = 0;
    std::unique_ptr<Server> node_;
    std::list<ScriptedClient> clients_;
};

} // namespace spotwell::simulator
