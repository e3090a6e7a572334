#include "tools/spotwell-simulator/Simulator.h"

#include "tools/spotwell-simulator/NodeServer.h"

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
    for (const QString& name : options_.scenarios) {
        auto parsed = readScenario(scenarioPath(name, folder), options_.variables);
        if (const auto* error = std::get_if<ScenarioError>(&parsed))
            return error->text();
        scenarios.push_back(std::get<Scenario>(std::move(parsed)));
    }
    for (auto given = options_.variables.keyBegin(); given != options_.variables.keyEnd(); ++given) {
        const bool known = std::any_of(scenarios.begin(), scenarios.end(), [&](const Scenario& scenario) {
            return scenario.variables.contains(*given);
        });
        if (!known)
            return QStringLiteral("--set: no scenario has a variable \"%1\"").arg(*given);
    }
    for (Scenario& scenario : scenarios) {
        servers_.push_back(
            std::make_unique<NodeServer>(std::move(scenario), clock_, report_, [this] { finishIfPlayed(); }));
        QString error = servers_.back()->listen({QHostAddress::LocalHost, options_.port});
        if (!error.isNull())
            return error;
    }
    if (options_.timeout) {
        timeout_.setSingleShot(true);
        timeout_.callOnTimeout([this] { finished_(); });
        timeout_.start(std::chrono::ceil<std::chrono::milliseconds>(*options_.timeout));
    }
    return {};
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
