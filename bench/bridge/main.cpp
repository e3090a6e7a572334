// SPDX-FileCopyrightText: 2026 the spotwell developers
// SPDX-License-Identifier: MIT

// Measures spotwell-bridge between a session bus and telnet clients, beside a program that does no more than
// has to be done. Ends with 1 when a client misses a line.

#include "bench/Report.h"
#include "bench/bridge/Load.h"

#include <QCommandLineParser>
#include <QCoreApplication>

#include <algorithm>
#include <cstdio>
#include <exception>
#include <functional>
#include <iterator>
#include <map>
#include <utility>
#include <vector>

namespace
{

using namespace spotwell::bench;

/// The runs of both programs with so many clients at such a rate.
struct Pair {
    std::vector<RunFigures> bridge;
    std::vector<RunFigures> bare;
};

using Figure = std::function<double(const RunFigures&)>;

QCommandLineOption option(const char* name, const char* words, const char* value, const char* standard)
{
    return {QString::fromLatin1(name), QString::fromLatin1(words), QString::fromLatin1(value),
            QString::fromLatin1(standard)};
}

void print(const QString& text)
{
    std::fputs(text.toUtf8().constData(), stdout);
    std::fflush(stdout);
}

std::vector<double> each(const std::vector<RunFigures>& runs, const Figure& figure)
{
    std::vector<double> values;
    std::transform(runs.begin(), runs.end(), std::back_inserter(values), figure);
    return values;
}

/// One line of the table: the bridge, the bare forwarder, and how often the second goes into the first.
void row(const Pair& pair, const QString& what, int decimals, const Figure& figure)
{
    const std::vector<double> bridge = each(pair.bridge, figure);
    const std::vector<double> bare = each(pair.bare, figure);
    const double floor = median(bare);
    print(QStringLiteral("  %1 %2 %3 %4\n")
              .arg(what, -34)
              .arg(inTable(bridge, decimals), -26)
              .arg(inTable(bare, decimals), -26)
              .arg(floor > 0 ? QString::number(median(bridge) / floor, 'f', 2) : QStringLiteral("-")));
}

Figure latency(SpotKind kind, double TelnetClients::Latency::*which, double share)
{
    return [=](const RunFigures& run) {
        std::vector<double> values;
        for (const TelnetClients::Latency& one : run.latencies.at(kind))
            values.push_back(one.*which);
        return quantile(values, share);
    };
}

void printPair(int clients, int rate, const Pair& pair)
{
    print(QStringLiteral("\n%1 clients, %2 spots a second: spotwell-bridge, bare forwarder, times\n")
              .arg(clients)
              .arg(rate));
    for (const auto& [kind, kindText] :
         {std::pair{SpotKind::line, "cluster line"}, std::pair{SpotKind::web, "web spot"}}) {
        for (const auto& [which, whichText] : {std::pair{&TelnetClients::Latency::first, "first"},
                                               std::pair{&TelnetClients::Latency::last, "last"}}) {
            if (clients == 1 && which == &TelnetClients::Latency::last)
                continue; // it is the first one too
            for (const auto& [share, shareText] : {std::pair{0.5, "p50"}, std::pair{0.99, "p99"}})
                row(pair,
                    QStringLiteral("%1, %2 client, %3, us")
                        .arg(QLatin1String(kindText), QLatin1String(whichText), QLatin1String(shareText)),
                    0, latency(kind, which, share));
        }
    }
    row(pair, QStringLiteral("CPU us a spot"), 1, [](const RunFigures& run) { return run.cpu; });
    row(pair, QStringLiteral("dbus-daemon, CPU us a spot"), 1,
        [](const RunFigures& run) { return run.busCpu; });
    row(pair, QStringLiteral("wake-ups a spot"), 2, [](const RunFigures& run) { return run.wakeUpsPerSpot; });
    row(pair, QStringLiteral("peak memory, MiB"), 1,
        [](const RunFigures& run) { return static_cast<double>(run.peak) / 1024; });
}

void printBus(const std::vector<std::vector<double>>& runs, int rate)
{
    for (const auto& [share, text] : {std::pair{0.5, "p50"}, std::pair{0.99, "p99"}}) {
        std::vector<double> values;
        for (const std::vector<double>& run : runs)
            values.push_back(quantile(run, share));
        print(QStringLiteral("bus alone, %1 spots a second, cluster line, %2, us: %3\n")
                  .arg(rate)
                  .arg(QLatin1String(text), inTable(values, 0)));
    }
}

/// What the command line asks for.
class Wishes
{
public:
    explicit Wishes(const QCommandLineParser& options) : options_(options) {}

    [[nodiscard]] int number(const char* name) const { return std::max(0, text(name).toInt()); }
    [[nodiscard]] std::vector<int> numbers(const char* name) const
    {
        std::vector<int> values;
        for (const QString& word : text(name).split(QLatin1Char(',')))
            values.push_back(std::max(1, word.toInt()));
        return values;
    }
    [[nodiscard]] int runs() const { return std::max(1, number("runs")); }
    [[nodiscard]] Command bridge() const
    {
        return {text("programs") + QStringLiteral("/spotwell-bridge"),
                {QStringLiteral("--telnet"), QStringLiteral("127.0.0.1:0")}};
    }
    [[nodiscard]] Command bareForwarder() const
    {
        return {text("programs") + QStringLiteral("/spotwell-bench-bare-forwarder"), {}};
    }

private:
    [[nodiscard]] QString text(const char* name) const { return options_.value(QString::fromLatin1(name)); }

    const QCommandLineParser& options_;
};

void measureTraffic(const Wishes& wishes, int seconds)
{
    std::map<int, std::vector<std::vector<double>>> buses;
    std::map<std::pair<int, int>, Pair> pairs;
    // All take turns, so that what the machine does besides falls on all of them.
    for (int run = 1; run <= wishes.runs(); ++run) {
        for (const int rate : wishes.numbers("rates")) {
            const Traffic traffic{rate, seconds};
            buses[rate].push_back(runBus(traffic));
            for (const int clients : wishes.numbers("clients")) {
                std::fprintf(stderr, "run %d, %d spots a second, %d clients\n", run, rate, clients);
                Pair& pair = pairs[{rate, clients}];
                pair.bridge.push_back(
                    runForwarder(wishes.bridge(), static_cast<std::size_t>(clients), traffic));
                pair.bare.push_back(
                    runForwarder(wishes.bareForwarder(), static_cast<std::size_t>(clients), traffic));
            }
        }
    }
    for (const auto& [rate, of] : buses)
        printBus(of, rate);
    for (const auto& [key, pair] : pairs)
        printPair(key.second, key.first, pair);
}

void measureIdle(const Wishes& wishes, int seconds)
{
    for (int run = 1; run <= wishes.runs(); ++run) {
        const IdleFigures idle = runIdle(wishes.bridge(), seconds);
        print(QStringLiteral("\nidle for %1 s, one client: %2 wake-ups, %3 ms CPU\n")
                  .arg(seconds)
                  .arg(idle.wakeUps)
                  .arg(idle.cpuMilliseconds, 0, 'f', 3));
    }
}

/// Whether nobody missed a line.
bool measureLoad(const Wishes& wishes, int seconds)
{
    constexpr std::size_t readers = 99;
    constexpr int rate = 200;
    bool complete = true;
    for (int run = 1; run <= wishes.runs(); ++run) {
        const LoadFigures load = runLoad(wishes.bridge(), readers, {rate, seconds});
        print(QStringLiteral("\n%1 spots a second for %2 s, one more client that does not read\n%3")
                  .arg(rate)
                  .arg(seconds)
                  .arg(load.text()));
        complete = complete && load.isComplete();
    }
    return complete;
}

int measure(const Wishes& wishes)
{
    print(QStringLiteral("%1\nmedians of %2 runs (least to greatest)\n\n").arg(machine()).arg(wishes.runs()));
    if (const int seconds = wishes.number("seconds"); seconds > 0)
        measureTraffic(wishes, seconds);
    if (const int seconds = wishes.number("idle"); seconds > 0)
        measureIdle(wishes, seconds);
    const int loadSeconds = wishes.number("load");
    return loadSeconds == 0 || measureLoad(wishes, loadSeconds) ? 0 : 1;
}

} // namespace

int main(int argc, char** argv)
{
    const QCoreApplication application(argc, argv);
    const QByteArray ownFolder = QCoreApplication::applicationDirPath().toUtf8();
    QCommandLineParser options;
    options.addHelpOption();
    options.addOption(option("rates", "Spots a second, separated by commas.", "rates", "20,200"));
    options.addOption(option("clients", "Telnet clients, separated by commas.", "counts", "1,10,100"));
    options.addOption(option("seconds", "How long spots come; 0 for not at all.", "seconds", "10"));
    options.addOption(option("idle", "How long the bridge is watched without spots.", "seconds", "30"));
    options.addOption(option("load",
                             "How long 100 clients, one of which does not read, get 200 spots a second.",
                             "seconds", "60"));
    options.addOption(option("runs", "How often all is repeated.", "count", "3"));
    options.addOption(option("programs", "Where the programs are.", "folder", ownFolder.constData()));
    options.process(application);
    try {
        return measure(Wishes(options));
    } catch (const std::exception& problem) {
        std::fprintf(stderr, "spotwell-bench-bridge: %s\n", problem.what());
        return 1;
    }
}
