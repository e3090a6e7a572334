// SPDX-FileCopyrightText: 2026 the spotwell developers
// SPDX-License-Identifier: MIT

#pragma once

#include "tools/spotwell-simulator/ScenarioWords.h"
#include "tools/spotwell-simulator/Statement.h"
#include "tools/spotwell-simulator/WebAnswer.h"

#include <QByteArray>
#include <QString>
#include <QStringList>

#include <optional>
#include <variant>
#include <vector>

namespace spotwell::simulator
{

/// What one connection gets.
using Session = std::vector<Statement>;

/// A parsed scenario file.
struct Scenario {
    enum class Kind {
        node,  ///< plays a session to each connection
        http,  ///< gives an answer to each request
        https, ///< as `http`, over TLS
    };

    Kind kind = Kind::node;
    /// The file's name without folder and ending.
    QString name;
    /// The file's name as it stands in messages.
    QString file;
    /// The names that the file sets, in its order.
    QStringList variables;
    /// What the first, second, ... connection gets; at least one in a node.
    std::vector<Session> sessions;
    /// What every further connection gets; absent for the last of `sessions` again.
    std::optional<Session> otherwise;
    /// What the first, second, ... request gets; at least one in a service.
    std::vector<WebAnswer> answers;
    /// What every further request gets; absent for the last of `answers` again.
    std::optional<WebAnswer> otherAnswer;

    [[nodiscard]] bool isService() const { return kind != Kind::node; }
    /// What connection `number`, counted from 1, gets.
    [[nodiscard]] const Session& session(qint64 number) const;
    /// What request `number`, counted from 1, gets.
    [[nodiscard]] const WebAnswer& answer(qint64 number) const;
};

/// What is wrong with a scenario, and where.
struct ScenarioError {
    QString file;
    /// From 1; 0 when the file as a whole is meant.
    int line = 0;
    QString message;

    /// `file:line: message`.
    [[nodiscard]] QString text() const;
};

/// Parses the text of a scenario file. `given` wins over the values that the file sets.
std::variant<Scenario, ScenarioError> parseScenario(const QByteArray& text, const QString& file,
                                                    const Variables& given = {});

/// Reads and parses a scenario file.
std::variant<Scenario, ScenarioError> readScenario(const QString& path, const Variables& given = {});

} // namespace spotwell::simulator
