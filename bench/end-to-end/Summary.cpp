// SPDX-FileCopyrightText: 2026 the spotwell developers
// SPDX-License-Identifier: MIT

#include "bench/end-to-end/Summary.h"

#include "bench/Report.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>

#include <algorithm>
#include <functional>

namespace spotwell::bench
{

namespace
{

constexpr double microsecondsPerSecond = 1e6;
constexpr double microsecondsPerMillisecond = 1e3;
constexpr double kibPerMib = 1024;

using Figure = std::function<double(const RunFigures&)>;

double perLine(const CpuFigures& cpu, const RunFigures& run)
{
    return run.received > 0 ? cpu.seconds * microsecondsPerSecond / run.received : 0;
}

std::vector<double> each(const std::vector<RunFigures>& runs, const Figure& figure)
{
    std::vector<double> values;
    std::transform(runs.begin(), runs.end(), std::back_inserter(values), figure);
    return values;
}

QJsonObject json(const CpuFigures& cpu)
{
    QJsonObject threads;
    for (const auto& [name, seconds] : cpu.threads)
        threads.insert(name, seconds);
    return {{QStringLiteral("seconds"), cpu.seconds}, {QStringLiteral("threads"), threads}};
}

QJsonObject json(const MemoryFigures& memory)
{
    return {{QStringLiteral("peakKiB"), memory.peak}, {QStringLiteral("pssKiB"), memory.proportional}};
}

QJsonObject json(const RunFigures& run)
{
    const auto latency = [&run](double share) { return quantile(run.latencies, share); };
    return {
        {QStringLiteral("sent"), run.sent},
        {QStringLiteral("received"), run.received},
        {QStringLiteral("lost"), run.lost()},
        {QStringLiteral("misplaced"), run.misplaced},
        {QStringLiteral("latencyMicroseconds"), QJsonObject{{QStringLiteral("p50"), latency(0.5)},
                                                            {QStringLiteral("p99"), latency(0.99)},
                                                            {QStringLiteral("max"), latency(1.0)}}},
        {QStringLiteral("startToPaintSeconds"), run.startToPaintSeconds},
        {QStringLiteral("startToConnectSeconds"), run.startToConnectSeconds},
        {QStringLiteral("spotwell"), json(run.spotwell)},
        {QStringLiteral("dbusDaemon"), json(run.bus)},
        {QStringLiteral("xvfb"), json(run.display)},
        {QStringLiteral("wakeUps"), run.wakeUps},
        {QStringLiteral("memory"), json(run.memory)},
        {QStringLiteral("idleSeconds"), run.idleSeconds},
        {QStringLiteral("idle"), json(run.idle)},
        {QStringLiteral("idleWakeUps"), run.idleWakeUps},
    };
}

} // namespace

QString Summary::table() const
{
    QString text = QStringLiteral("%1\nlines for %2 s, then %3 s idle; medians (least to greatest)\n")
                       .arg(machine())
                       .arg(seconds)
                       .arg(idleSeconds);
    const auto heading = [&text](const QString& words) { text += QStringLiteral("\n%1\n").arg(words); };
    const auto row = [&text](const char* what, const QString& value) {
        text += QStringLiteral("  %1 %2\n").arg(QLatin1String(what), -36).arg(value);
    };
    std::vector<double> bare;
    for (const BareWindowFigures& figures : bareWindow)
        bare.push_back(figures.cpuSecondsPerLine * microsecondsPerSecond);
    for (const auto& [rate, of] : runs) {
        const auto& figures = of;
        const auto line = [&](const char* what, int decimals, const Figure& figure) {
            row(what, inTable(each(figures, figure), decimals));
        };
        heading(QStringLiteral("%1 lines a second, %2 runs").arg(rate).arg(figures.size()));
        line("lines sent", 0, [](const auto& run) { return run.sent; });
        line("lines received", 0, [](const auto& run) { return run.received; });
        line("lines lost", 0, [](const auto& run) { return run.lost(); });
        line("lines misplaced", 0, [](const auto& run) { return run.misplaced; });
        line("spotwell, CPU us a line", 0, [](const auto& run) { return perLine(run.spotwell, run); });
        line("spotwell, CPU s per 1,000 lines", 3,
             [](const auto& run) { return perLine(run.spotwell, run) / microsecondsPerMillisecond; });
        if (!bare.empty()) {
            const double floor = median(bare);
            line("  times the bare window", 3,
                 [floor](const auto& run) { return perLine(run.spotwell, run) / floor; });
        }
        line("dbus-daemon, CPU us a line", 0, [](const auto& run) { return perLine(run.bus, run); });
        line("Xvfb, CPU us a line", 0, [](const auto& run) { return perLine(run.display, run); });
        line("spotwell, wake-ups a line", 2,
             [](const auto& run) { return static_cast<double>(run.wakeUps) / std::max(1, run.received); });
        for (const auto& [what, share] :
             {std::pair{"latency p50, ms", 0.5}, std::pair{"latency p99, ms", 0.99},
              std::pair{"latency max, ms", 1.0}}) {
            const double wanted = share;
            line(what, 2, [wanted](const auto& run) {
                return quantile(run.latencies, wanted) / microsecondsPerMillisecond;
            });
        }
        line("start to first paint, ms", 0, [](const auto& run) { return run.startToPaintSeconds * 1e3; });
        line("start to connected, ms", 0, [](const auto& run) { return run.startToConnectSeconds * 1e3; });
        line("peak memory, MiB", 1,
             [](const auto& run) { return static_cast<double>(run.memory.peak) / kibPerMib; });
        line("PSS, MiB", 1,
             [](const auto& run) { return static_cast<double>(run.memory.proportional) / kibPerMib; });
        if (figures.front().idleSeconds > 0) {
            const double span = idleSeconds;
            line("idle, wake-ups a second", 2,
                 [span](const auto& run) { return static_cast<double>(run.idleWakeUps) / span; });
            line("idle, CPU ms a minute", 0,
                 [span](const auto& run) { return run.idle.seconds * 1e3 * 60 / span; });
        }
    }
    if (!bareWindow.empty()) {
        heading(QStringLiteral("bare window, %1 lines a second, each painted").arg(runs.begin()->first));
        row("CPU us a line", inTable(bare, 0));
        std::vector<double> memory;
        for (const BareWindowFigures& figures : bareWindow)
            memory.push_back(static_cast<double>(figures.memory.proportional) / kibPerMib);
        row("PSS, MiB", inTable(memory, 1));
    }
    return text;
}

QByteArray Summary::json() const
{
    QJsonObject rates;
    for (const auto& [rate, figures] : runs) {
        QJsonArray array;
        for (const RunFigures& run : figures)
            array.append(bench::json(run));
        rates.insert(QString::number(rate), array);
    }
    QJsonArray windows;
    for (const BareWindowFigures& figures : bareWindow)
        windows.append(QJsonObject{{QStringLiteral("cpuSecondsPerLine"), figures.cpuSecondsPerLine},
                                   {QStringLiteral("memory"), bench::json(figures.memory)}});
    return QJsonDocument(QJsonObject{{QStringLiteral("machine"), machine()},
                                     {QStringLiteral("seconds"), seconds},
                                     {QStringLiteral("idleSeconds"), idleSeconds},
                                     {QStringLiteral("rates"), rates},
                                     {QStringLiteral("bareWindow"), windows}})
        .toJson();
}

} // namespace spotwell::bench
