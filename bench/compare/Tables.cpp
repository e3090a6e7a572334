// SPDX-FileCopyrightText: 2026 the spotwell developers
// SPDX-License-Identifier: MIT

#include "bench/compare/Tables.h"

#include "bench/Report.h"

#include <array>
#include <functional>
#include <optional>

namespace spotwell::bench
{

namespace
{

struct Row {
    Figure figure;
    const char* text;
    int decimals;
};

constexpr std::array rows{
    Row{Figure::startMilliseconds, "start to the window's first paint, ms", 0},
    Row{Figure::proportionalMib, "memory, connected: PSS, MiB", 1},
    Row{Figure::unsharedMib, "memory, connected: shared with nobody, MiB", 1},
    Row{Figure::residentMib, "memory, connected: resident, MiB", 1},
    Row{Figure::proportionalAfterMib, "memory after the lines: PSS, MiB", 1},
    Row{Figure::residentAfterMib, "memory after the lines: resident, MiB", 1},
    Row{Figure::cpuMilliseconds, "CPU for 1,000 lines at 200 a second, ms", 0},
    Row{Figure::displayMilliseconds, "Xvfb's CPU for them, ms", 0},
    Row{Figure::busMilliseconds, "dbus-daemon's CPU for them, ms", 0},
    Row{Figure::latencyMedian, "node to logger: median, ms", 2},
    Row{Figure::latency99th, "node to logger: 99th percentile, ms", 2},
    Row{Figure::latencyLongest, "node to logger: longest, ms", 1},
    Row{Figure::highestRate, "highest rate held, lines a second", 0},
    Row{Figure::idleMilliseconds, "idle minute: CPU, ms", 1},
    Row{Figure::idleWakeUps, "idle minute: wake-ups", 0},
    Row{Figure::idlePreemptions, "idle minute: preemptions", 0},
};

QString tableHead(const QStringList& names)
{
    return QStringLiteral("| | %1 |\n|---|%2\n")
        .arg(names.join(QStringLiteral(" | ")), QStringLiteral("---|").repeated(names.size()));
}

std::optional<double> medianOf(const Figures& figures, Figure figure)
{
    const auto found = figures.find(figure);
    return found == figures.end() ? std::nullopt : std::optional(median(found->second));
}

using Cell = std::function<QString(const Figures&, const Row&)>;

QString table(const Tables& tables, const Cell& cell)
{
    QString text = tableHead(tables.names);
    for (const Row& row : rows) {
        QStringList cells;
        bool any = false;
        for (const Figures& figures : tables.figures) {
            cells += figures.contains(row.figure) ? cell(figures, row) : QStringLiteral("-");
            any = any || figures.contains(row.figure);
        }
        if (any)
            text += QStringLiteral("| %1 | %2 |\n")
                        .arg(QLatin1String(row.text), cells.join(QStringLiteral(" | ")));
    }
    return text;
}

} // namespace

QString Tables::measured() const
{
    return table(*this, [](const Figures& program, const Row& row) {
        return inTable(program.at(row.figure), row.decimals);
    });
}

QString Tables::ratios() const
{
    return table(*this, [this](const Figures& program, const Row& row) {
        const double first = medianOf(figures.front(), row.figure).value_or(0);
        return first > 0 ? QString::number(median(program.at(row.figure)) / first, 'f', 2)
                         : QStringLiteral("-");
    });
}

QString Tables::targets() const
{
    constexpr double floorAndATenth = 1.1;
    constexpr double aTwentieth = 0.05;
    QString text = QStringLiteral("| | at most | is | |\n|---|---|---|---|\n");
    const auto add = [&text](const QString& what, std::optional<double> most, std::optional<double> is,
                             int decimals) {
        if (!most || !is)
            return;
        text += QStringLiteral("| %1 | %2 | %3 | %4 |\n")
                    .arg(what, QString::number(*most, 'f', decimals), QString::number(*is, 'f', decimals),
                         *is <= *most ? QStringLiteral("met") : QStringLiteral("missed"));
    };
    const auto limit = [this](const QString& name, Figure figure, double share) -> std::optional<double> {
        const qsizetype index = names.indexOf(name);
        const auto value =
            index < 0 ? std::nullopt : medianOf(figures[static_cast<std::size_t>(index)], figure);
        return value ? std::optional(*value * share) : std::nullopt;
    };
    const Figures& first = figures.front();
    const QString bareWindow = QStringLiteral("bare Qt window");
    for (const auto& [figure, what] :
         {std::pair{Figure::startMilliseconds, "start: the bare window and a tenth, ms"},
          std::pair{Figure::proportionalMib, "PSS: the bare window and a tenth, MiB"},
          std::pair{Figure::residentMib, "resident: the bare window and a tenth, MiB"}})
        add(QString::fromLatin1(what), limit(bareWindow, figure, floorAndATenth), medianOf(first, figure), 1);
    add(QStringLiteral("CPU for 1,000 lines: a twentieth of xdx's, ms"),
        limit(QStringLiteral("xdx"), Figure::cpuMilliseconds, aTwentieth),
        medianOf(first, Figure::cpuMilliseconds), 0);
    add(QStringLiteral("idle minute: wake-ups"), 70, medianOf(first, Figure::idleWakeUps), 0);
    add(QStringLiteral("idle minute: CPU, ms"), 15, medianOf(first, Figure::idleMilliseconds), 1);
    add(QStringLiteral("node to logger: median, ms"), 1, medianOf(first, Figure::latencyMedian), 2);
    add(QStringLiteral("node to logger: 99th percentile, ms"), 5, medianOf(first, Figure::latency99th), 2);
    return text;
}

} // namespace spotwell::bench
