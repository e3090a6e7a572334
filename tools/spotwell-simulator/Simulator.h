// SPDX-FileCopyrightText: 2026 the spotwell developers
// SPDX-License-Identifier: MIT

#pragma once

#include "tools/spotwell-simulator/Options.h"
#include "tools/spotwell-simulator/Server.h"

#include <QSslConfiguration>
#include <QTimer>

#include <functional>
#include <memory>
#include <optional>
#include <vector>

namespace spotwell::simulator
{

/// How the program ends.
enum class ExitCode : int {
    allHeld = 0,
    checkFailed = 1,
    badUsage = 2,
};

/// The whole of it: a server for each scenario, from the first port to the last check.
class Simulator
{
public:
    /// `clock` and `report` outlive the simulator. `finished` is called once, when --once is fulfilled or the
    /// time is over.
    Simulator(Options options, const Clock& clock, const Report& report, std::function<void()> finished);

    /// Reads the scenarios, looking for shipped ones in `folder`, and begins to listen. Null, or what is
    /// wrong.
    [[nodiscard]] QString start(const QString& folder);
    /// Ends all connections and reports the end.
    void stop();
    /// The outcome, after stop().
    [[nodiscard]] ExitCode exitCode() const;

private:
    /// Reads what https services speak TLS with. Null, or what is wrong.
    [[nodiscard]] QString readIdentity(const std::vector<Scenario>& scenarios);
    [[nodiscard]] std::unique_ptr<Server> makeServer(Scenario scenario);
    void finishIfPlayed();
    [[nodiscard]] bool allPlayed() const;

    const Options options_;
    const Clock& clock_;
    const Report& report_;
    std::function<void()> finished_;
    std::optional<QSslConfiguration> identity_;
    std::vector<std::unique_ptr<Server>> servers_;
    QTimer timeout_;
};

} // namespace spotwell::simulator
