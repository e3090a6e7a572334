// SPDX-FileCopyrightText: 2026 the spotwell developers
// SPDX-License-Identifier: MIT

#include "tools/spotwell-simulator/Simulator.h"

#include "tools/spotwell-simulator/NodeServer.h"
#include "tools/spotwell-simulator/TlsSocket.h"
#include "tools/spotwell-simulator/WebServer.h"

#include <algorithm>
#include <chrono>
#include <utility>

namespace spotwell::simulator
{

Simulator::Simulator(Options options, const Clock& clock, const Report& report,
                     std::function<void()> finished)
    : options_(std::move(options)), clock_(clock), report_(report), finished_(std::move(finished))
{
}

QString Simulator::start(const QString& folder)
{
    std::vector<Scenario> scenarios;
    for (const Options::Play& play : options_.plays) {
        auto parsed = readScenario(scenarioPath(play.scenario, folder), options_.variables);
        if (const auto* error = std::get_if<ScenarioError>(&parsed))
            return error->text();
        scenarios.push_back(std::get<Scenario>(std::move(parsed)));
    }
    if (QString error = readIdentity(scenarios); !error.isNull())
        return error;
    for (auto given = options_.variables.keyBegin(); given != options_.variables.keyEnd(); ++given) {
        const bool known = std::any_of(scenarios.begin(), scenarios.end(), [&](const Scenario& scenario) {
            return scenario.variables.contains(*given);
        });
        if (!known)
            return QStringLiteral("--set: no scenario has a variable \"%1\"").arg(*given);
    }
    for (std::size_t index = 0; index < scenarios.size(); ++index) {
        servers_.push_back(makeServer(std::move(scenarios[index])));
        if (QString error = servers_.back()->listen(options_.plays[index].endpoint); !error.isNull())
            return error;
    }
    if (options_.timeout) {
        timeout_.setSingleShot(true);
        timeout_.callOnTimeout([this] { finished_(); });
        timeout_.start(std::chrono::ceil<std::chrono::milliseconds>(*options_.timeout));
    }
    return {};
}

QString Simulator::readIdentity(const std::vector<Scenario>& scenarios)
{
    const auto secure = std::find_if(scenarios.begin(), scenarios.end(), [](const Scenario& scenario) {
        return scenario.kind == Scenario::Kind::https;
    });
    if (options_.certificate.isNull()) {
        return secure == scenarios.end()
                   ? QString{}
                   : QStringLiteral("%1: an https service needs --tls").arg(secure->file);
    }
    auto identity = readTlsIdentity(options_.certificate, options_.key);
    if (const auto* error = std::get_if<QString>(&identity))
        return *error;
    identity_ = std::get<QSslConfiguration>(std::move(identity));
    return {};
}

std::unique_ptr<Server> Simulator::makeServer(Scenario scenario)
{
    const auto progressed = [this] { finishIfPlayed(); };
    const Scenario::Kind kind = scenario.kind;
    if (kind == Scenario::Kind::node)
        return std::make_unique<NodeServer>(std::move(scenario), clock_, report_, progressed);
    return std::make_unique<WebServer>(std::move(scenario), clock_, report_, progressed,
                                       kind == Scenario::Kind::https ? identity_ : std::nullopt);
}

void Simulator::finishIfPlayed()
{
    if (options_.once && allPlayed())
        finished_();
}

bool Simulator::allPlayed() const
{
    return std::all_of(servers_.begin(), servers_.end(),
                       [](const auto& server) { return server->allPlayed(); });
}

void Simulator::stop()
{
    for (const auto& server : servers_)
        server->stop();
}

ExitCode Simulator::exitCode() const
{
    const bool failed = std::any_of(servers_.begin(), servers_.end(),
                                    [](const auto& server) { return server->failedChecks() > 0; });
    return failed || (options_.once && !allPlayed()) ? ExitCode::checkFailed : ExitCode::allHeld;
}

} // namespace spotwell::simulator
