// SPDX-FileCopyrightText: 2026 the spotwell developers
// SPDX-License-Identifier: MIT

// The shipped program for a long time: spot lines from a node and answers of the web services, a logger that
// takes them, and what becomes of memory, of the delay and of the order. Exit code 1 when anything was lost
// untold or misplaced, or when memory went on growing.

#include "bench/LineReceiver.h"
#include "bench/Report.h"
#include "bench/soak/Samples.h"
#include "bench/soak/SoakNode.h"
#include "bench/soak/SoakWeb.h"
#include "tests/integration/support/FeedIdentities.h"
#include "tests/integration/support/PrivateNetwork.h"
#include "tests/integration/support/RunningProgram.h"
#include "tests/integration/support/VirtualScreen.h"
#include "tests/integration/support/WindowPing.h"
#include "tests/support/bus/PrivateBus.h"

#include <QCommandLineParser>
#include <QCoreApplication>
#include <QFile>

#include <algorithm>
#include <csignal>
#include <cstdio>
#include <exception>
#include <vector>

namespace
{

using namespace spotwell;
using namespace spotwell::bench;
using namespace std::chrono_literals;
using SteadyClock = std::chrono::steady_clock;

struct Plan {
    std::uint64_t lines;
    double rate;
    std::uint64_t answers;
    /// How much faster than real ones the program's timers run.
    double rush;
    QString samplesFile;
};

/// What the logger got. Filled on the receiver's thread, read when that has ended; the counts at any time.
struct Arrivals {
    explicit Arrivals(std::uint64_t expected) { latencies.reserve(expected); }

    void takeLine(const SoakNode& node, std::string_view line)
    {
        const auto now = SteadyClock::now();
        const std::uint64_t number = SoakNode::numberIn(line);
        if (number <= newestLine) {
            ++misplaced;
            return;
        }
        newestLine = number;
        ++lines;
        latencies.push_back(std::chrono::duration<double, std::milli>(now - node.sentAt(number)).count());
    }
    void takeSpot(std::string_view call)
    {
        const SoakWeb::Spot spot = SoakWeb::spotOf(call);
        if (spot.number <= newest.at(spot.feed)) {
            ++misplacedSpots;
            return;
        }
        newest[spot.feed] = spot.number;
        ++spots;
    }

    std::atomic<std::uint64_t> lines = 0;
    std::atomic<std::uint64_t> spots = 0;
    std::atomic<std::uint64_t> misplaced = 0;
    std::atomic<std::uint64_t> misplacedSpots = 0;
    std::atomic<std::uint64_t> newestLine = 0;
    std::array<std::uint64_t, 3> newest{};
    std::vector<double> latencies;
};

QStringList variablesFor(const Plan& plan, const VirtualScreen& screen)
{
    // So much passes on the wall that POTA and DXSummit are asked in each second of the timers, WSPRnet in
    // every third; and a login has the time it needs.
    constexpr double wallSeconds = 45;
    return {QStringLiteral("DISPLAY=") + screen.display(), QStringLiteral("LD_PRELOAD=" RUSHED_TIMERS),
            QStringLiteral("RUSHED_TIMERS=%1 %2").arg(plan.rush).arg(plan.rush * wallSeconds)};
}

SettingsTexts settings()
{
    const QString yes = QStringLiteral("true");
    return {{QStringLiteral("dxcluster"), QStringLiteral("127.0.0.1")},
            {QStringLiteral("port"), QString::number(PrivateNetwork::nodePort)},
            {QStringLiteral("callsign"), QStringLiteral("N0CALL")},
            {QStringLiteral("reconnect"), yes},
            {QStringLiteral("pota"), yes},
            {QStringLiteral("skimmers"), yes},
            {QStringLiteral("dxsummit"), yes},
            {QStringLiteral("wsprnet"), yes}};
}

QString shares(std::vector<double> latencies)
{
    const auto share = [&latencies](double part) { return quantile(latencies, part); };
    return QStringLiteral("%1 / %2 / %3")
        .arg(share(0.5), 0, 'f', 2)
        .arg(share(0.99), 0, 'f', 1)
        .arg(share(1), 0, 'f', 0);
}

void row(const char* what, const QString& first, const QString& last = {})
{
    std::printf("| %s | %s | %s |\n", what, qUtf8Printable(first), qUtf8Printable(last));
}

QString sums(std::uint64_t sent, std::uint64_t received, std::uint64_t misplaced)
{
    return QStringLiteral("%1 / %2 / %3").arg(sent).arg(received).arg(misplaced);
}

void printCourses(const std::vector<Sample>& samples)
{
    const auto print = [&samples](const char* what, qint64 Sample::*figure) {
        const Course course = courseOf(samples, figure);
        std::printf("| %s | %.0f | %.0f | %.0f | %+.1f |\n", what, course.first, course.last, course.greatest,
                    course.slope);
    };
    std::printf(
        "\n| | first tenth | last tenth | greatest | slope for 100,000 lines |\n|---|---|---|---|---|\n");
    print("resident, KiB", &Sample::resident);
    print("PSS, KiB", &Sample::proportional);
    print("anonymous, KiB", &Sample::anonymous);
    print("open descriptors", &Sample::descriptors);
    print("threads", &Sample::threads);
}

/// What the log says went wrong, or was lost.
QByteArrayList complaintsIn(const QByteArray& log)
{
    QByteArrayList found;
    for (const QByteArray& line : log.split('\n')) {
        for (const char* word : {"rror", "too many", "lost", "dropping", "Flood", "not running", "gone",
                                 "does not answer", "Waited", "heard", "overrun"}) {
            if (line.contains(word)) {
                found.append(line);
                break;
            }
        }
    }
    return found;
}

/// What has come to the process over its connection to the node and was not read.
std::size_t unreadBy(qint64 process)
{
    QFile connections(QStringLiteral("/proc/%1/net/tcp").arg(process));
    if (!connections.open(QIODevice::ReadOnly))
        return 0;
    const QByteArray node = ':' + QByteArray::number(PrivateNetwork::nodePort, 16).toUpper();
    for (const QByteArray& row : connections.readAll().split('\n')) {
        // Number, local and remote address, state (1: established), both queues; see proc(5).
        const QByteArrayList fields = row.simplified().split(' ');
        if (fields.size() > 4 && fields[2].endsWith(node) && fields[3] == "01")
            return fields[4].mid(fields[4].indexOf(':') + 1).toULongLong(nullptr, 16);
    }
    return 0;
}

int soak(const Plan& plan)
{
    const Home home;
    const PrivateBus bus;
    const VirtualScreen screen;
    const PrivateNetwork network(home.filePath(QStringLiteral("network")),
                                 {QStringLiteral("api.pota.app"), QStringLiteral("www.dxsummit.fi"),
                                  QStringLiteral("www.wsprnet.org")});
    home.writeSettings(settings());
    RunningProgram program(home, bus.address(), variablesFor(plan, screen), network.launcher());
    const PrivateNetwork::Listeners listeners = network.takeListeners();

    FeedServices services;
    const SoakWeb web(services, plan.answers);
    const SoakNode node(listeners.node, plan.lines, plan.rate,
                        [process = program.processId()] { return unreadBy(process); });
    Arrivals arrivals(plan.lines);
    std::vector<Sample> samples;
    double seconds = 0;
    double window = 0;
    {
        LineReceiver logger(
            bus.address(), [&](std::string_view line) { arrivals.takeLine(node, line); },
            [&](std::string_view call) { arrivals.takeSpot(call); });
        logger.start();
        services.start(listeners, potaCertificate);
        const WindowPing ping(screen.display());

        constexpr auto between = 500ms;
        constexpr auto patience = 60s;
        const auto start = SteadyClock::now();
        auto nextSample = start;
        auto progressAt = start;
        std::uint64_t progress = 0;
        while (program.isRunning() && (arrivals.newestLine < plan.lines || web.answered() < plan.answers ||
                                       arrivals.spots < web.spots())) {
            const auto now = SteadyClock::now();
            seconds = std::chrono::duration<double>(now - start).count();
            // Not while it still starts.
            if (now >= nextSample && arrivals.lines > 0 && arrivals.spots > 0) {
                nextSample = now + between;
                samples.push_back(sampleOf(program.processId()));
                samples.back().seconds = seconds;
                samples.back().lines = arrivals.lines;
            }
            if (std::exchange(progress, arrivals.lines + arrivals.spots) != arrivals.lines + arrivals.spots)
                progressAt = now;
            if (now - progressAt > patience)
                break;
            QCoreApplication::processEvents();
            QThread::msleep(5);
        }
        window = std::chrono::duration<double, std::milli>(ping.longest()).count();
    }
    const bool endedInOrder = program.end(SIGTERM).has_value();

    const std::size_t tenth = std::max<std::size_t>(1, arrivals.latencies.size() / 10);
    const auto& delays = arrivals.latencies;
    std::printf("%s; %.0f s; timers %g times as fast\n\n", qUtf8Printable(machine()), seconds, plan.rush);
    std::printf("| | | |\n|---|---|---|\n");
    row("lines sent / received / misplaced", sums(node.sent(), arrivals.lines, arrivals.misplaced));
    row("web answers", QString::number(web.answered()));
    row("spots in them / received / misplaced", sums(web.spots(), arrivals.spots, arrivals.misplacedSpots));
    const QByteArrayList complaints = complaintsIn(home.log());
    row("complaints in the log", QString::number(complaints.size()));
    row("longest answer of the window, ms", QString::number(window, 'f', 0));
    if (delays.size() >= tenth)
        row("delay from node to logger in the first and the last tenth, ms: median / 99th percentile / "
            "longest",
            shares({delays.begin(), delays.begin() + static_cast<std::ptrdiff_t>(tenth)}),
            shares({delays.end() - static_cast<std::ptrdiff_t>(tenth), delays.end()}));
    printCourses(samples);
    if (!plan.samplesFile.isEmpty()) {
        QFile file(plan.samplesFile);
        if (!file.open(QIODevice::WriteOnly) || file.write(tableOf(samples)) < 0)
            throw std::runtime_error("cannot write the samples");
    }

    for (const QByteArray& complaint : complaints.mid(0, 20))
        std::fprintf(stderr, "%s\n", complaint.constData());
    constexpr double growthAllowed = 4096; // KiB, what the console and the feeds remember included
    const Course anonymous = courseOf(samples, &Sample::anonymous);
    // Where the machine is so busy that the bus is silent for a quarter of a second, a line is lost, and told
    // of.
    const auto told = static_cast<std::uint64_t>(
        std::count_if(complaints.begin(), complaints.end(),
                      [](const QByteArray& line) { return line.contains("not running"); }));
    const bool whole = arrivals.lines + told >= plan.lines && arrivals.spots == web.spots() &&
                       arrivals.misplaced == 0 && arrivals.misplacedSpots == 0;
    return whole && endedInOrder && anonymous.last - anonymous.first < growthAllowed ? 0 : 1;
}

QCommandLineOption option(const char* name, const char* words, const char* value, const char* standard)
{
    return {QString::fromLatin1(name), QString::fromLatin1(words), QString::fromLatin1(value),
            QString::fromLatin1(standard)};
}

} // namespace

int main(int argc, char** argv)
{
    (void)std::signal(SIGPIPE, SIG_IGN);
    const QCoreApplication application(argc, argv);
    QCommandLineParser options;
    options.addHelpOption();
    options.addOption(option("lines", "Spot lines of the node.", "count", "1000000"));
    options.addOption(option("rate", "Spot lines a second.", "rate", "1000"));
    options.addOption(
        option("answers", "Answers of the web services, all three together.", "count", "10000"));
    options.addOption(
        option("rush", "How much faster than real ones the program's timers run.", "factor", "4"));
    options.addOption(option("samples", "Also writes every sample to this file.", "file", ""));
    options.process(application);
    const auto value = [&options](const char* name) { return options.value(QString::fromLatin1(name)); };
    try {
        if (const auto reason = PrivateNetwork::refusal()) {
            std::printf("NOT TESTED: this machine permits no network of a process's own: %s\n",
                        qUtf8Printable(*reason));
            return 0;
        }
        return soak({value("lines").toULongLong(), std::max(1.0, value("rate").toDouble()),
                     value("answers").toULongLong(), std::max(1.0, value("rush").toDouble()),
                     value("samples")});
    } catch (const std::exception& problem) {
        std::fprintf(stderr, "spotwell-bench-soak: %s\n", problem.what());
        return 1;
    }
}
