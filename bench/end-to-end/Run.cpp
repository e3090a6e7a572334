// SPDX-FileCopyrightText: 2026 the spotwell developers
// SPDX-License-Identifier: MIT

#include "bench/end-to-end/Run.h"

#include "bench/LineReceiver.h"
#include "bench/PrivateDesktop.h"

#include <QJsonDocument>
#include <QJsonObject>
#include <QThread>

#include <chrono>
#include <functional>
#include <stdexcept>

namespace spotwell::bench
{

namespace
{

using SteadyClock = std::chrono::steady_clock;
using namespace std::chrono_literals;

// The columns of a stamped spot line (docs/scenarios.md).
constexpr std::size_t numberColumn = 40;
constexpr std::size_t numberDigits = 7;
constexpr std::size_t stampColumn = 48;
constexpr std::size_t stampDigits = 16;

/// Keeps what the lines say of their way. Filled on the receiver's thread, read when that has ended.
class Arrivals
{
public:
    explicit Arrivals(int expected) { latencies.reserve(static_cast<std::size_t>(expected)); }

    void take(std::string_view line)
    {
        const auto now = std::chrono::duration_cast<std::chrono::microseconds>(
            std::chrono::system_clock::now().time_since_epoch());
        if (line.size() < stampColumn + stampDigits)
            return;
        const auto field = [&](std::size_t column, std::size_t digits) {
            return std::stoll(std::string(line.substr(column, digits)));
        };
        const auto number = field(numberColumn, numberDigits);
        misplaced += number <= last_ ? 1 : 0;
        last_ = std::max(last_, number);
        latencies.push_back(static_cast<double>(now.count() - field(stampColumn, stampDigits)));
    }

    std::vector<double> latencies;
    int misplaced = 0;

private:
    long long last_ = 0;
};

void start(QProcess& process, const QString& program, const QStringList& arguments)
{
    process.start(program, arguments);
    if (!process.waitForStarted())
        throw std::runtime_error("cannot start " + program.toStdString());
}

/// Looks every `interval` until `condition` holds; throws when it does not within `limit`.
void waitUntil(const char* what, const std::function<bool()>& condition, std::chrono::microseconds interval,
               std::chrono::seconds limit)
{
    const auto end = SteadyClock::now() + limit;
    while (!condition()) {
        if (SteadyClock::now() > end)
            throw std::runtime_error(std::string("never happened: ") + what);
        QThread::usleep(static_cast<unsigned long>(interval.count()));
    }
}

double steadySeconds()
{
    return std::chrono::duration<double>(SteadyClock::now().time_since_epoch()).count();
}

/// The next event of that kind in the simulator's report.
QJsonObject nextEvent(QProcess& simulator, const char* kind)
{
    while (true) {
        const QByteArray line = lineOf(simulator);
        if (line.isEmpty())
            throw std::runtime_error("the simulator says nothing more");
        const QJsonObject event = QJsonDocument::fromJson(line).object();
        if (event.value(QStringLiteral("event")).toString() == QLatin1String(kind))
            return event;
    }
}

int linesSent(QProcess& simulator, int expected)
{
    while (true) {
        const int lines = nextEvent(simulator, "sent").value(QStringLiteral("lines")).toInt();
        if (lines >= expected)
            return lines;
    }
}

} // namespace

RunFigures runSpotwell(const RunSettings& settings)
{
    const int expected = settings.rate * settings.seconds;
    RunFigures figures;
    Arrivals arrivals(expected);
    PrivateDesktop desktop;
    desktop.startBus();
    desktop.startDisplay();
    QProcess simulator;
    start(simulator, settings.programs + QStringLiteral("/spotwell-simulator"),
          {QStringLiteral("--set"), QStringLiteral("rate=%1").arg(settings.rate), QStringLiteral("--set"),
           QStringLiteral("count=%1").arg(expected), QStringLiteral("contest")});
    desktop.writeSettings(nextEvent(simulator, "listening").value(QStringLiteral("port")).toInt());
    {
        LineReceiver receiver(desktop.busAddress(), [&](std::string_view line) { arrivals.take(line); });
        receiver.start();

        QProcess spotwell;
        spotwell.setProcessEnvironment(desktop.environment());
        const quint64 emptyScreen = desktop.screenSum();
        const double started = steadySeconds();
        start(spotwell, settings.programs + QStringLiteral("/spotwell"), {});
        waitUntil(
            "the first paint", [&] { return desktop.screenSum() != emptyScreen; }, 500us, 20s);
        figures.startToPaintSeconds = steadySeconds() - started;
        figures.startToConnectSeconds =
            nextEvent(simulator, "connect").value(QStringLiteral("t")).toDouble() - started;

        waitUntil(
            "the first line", [&] { return receiver.received() > 0; }, 1ms, 20s);
        const CpuFigures spotwellBefore = cpuOf(spotwell.processId());
        const CpuFigures busBefore = cpuOf(desktop.busProcess());
        const CpuFigures displayBefore = cpuOf(desktop.displayProcess());
        const ThreadWakeUps wakeUpsBefore = wakeUpsOf(spotwell.processId());
        figures.sent = linesSent(simulator, expected);
        // What is still on its way when the node has sent its last line.
        const auto deadline = SteadyClock::now() + std::chrono::seconds{10};
        while (receiver.received() < static_cast<std::uint64_t>(expected) && SteadyClock::now() < deadline)
            QThread::msleep(1);
        QThread::msleep(200); // and on the screen
        figures.wakeUps = wakeUpsOf(spotwell.processId()) - wakeUpsBefore;
        figures.spotwell = cpuOf(spotwell.processId()) - spotwellBefore;
        figures.bus = cpuOf(desktop.busProcess()) - busBefore;
        figures.display = cpuOf(desktop.displayProcess()) - displayBefore;
        figures.memory = memoryOf(spotwell.processId());
        figures.received = static_cast<int>(receiver.received());

        if (settings.idleSeconds > 0) {
            QThread::sleep(2);
            const CpuFigures before = cpuOf(spotwell.processId());
            const ThreadWakeUps wakeUps = wakeUpsOf(spotwell.processId());
            QThread::sleep(static_cast<unsigned long>(settings.idleSeconds));
            figures.idleSeconds = settings.idleSeconds;
            figures.idle = cpuOf(spotwell.processId()) - before;
            figures.idleWakeUps = wakeUpsOf(spotwell.processId()) - wakeUps;
        }
        bench::end(spotwell);
    }
    bench::end(simulator);
    figures.latencies = std::move(arrivals.latencies);
    figures.misplaced = arrivals.misplaced;
    return figures;
}

BareWindowFigures runBareWindow(const RunSettings& settings)
{
    PrivateDesktop desktop;
    desktop.startBus();
    desktop.startDisplay();
    QProcess window;
    window.setProcessEnvironment(desktop.environment());
    start(window, settings.programs + QStringLiteral("/spotwell-bench-bare-window"),
          {QString::number(settings.rate), QString::number(settings.seconds)});
    if (!window.waitForReadyRead((settings.seconds + 30) * 1000))
        throw std::runtime_error("the bare window says nothing");
    BareWindowFigures figures;
    figures.cpuSecondsPerLine = lineOf(window).toDouble();
    figures.memory = memoryOf(window.processId());
    bench::end(window);
    return figures;
}

} // namespace spotwell::bench
