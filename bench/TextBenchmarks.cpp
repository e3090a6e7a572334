// SPDX-FileCopyrightText: 2026 the spotwell developers
// SPDX-License-Identifier: MIT

#include "bench/Floor.h"
#include "bench/NodeLines.h"
#include "bench/StandIns.h"
#include "cluster/LineAssembly.h"
#include "cluster/TextDecoding.h"
#include "delivery/LineDelivery.h"
#include "delivery/SpotNotification.h"
#include "platform/linux/IcuTextConverter.h"
#include "platform/linux/StandardErrorLog.h"
#include "util/TimeFormats.h"

#include <benchmark/benchmark.h>

namespace spotwell::bench
{

namespace
{

constexpr TimePoint someTime = std::chrono::sys_days{std::chrono::year{2024} / 3 / 19} +
                               std::chrono::hours{14} + std::chrono::minutes{28};

Spot parkSpot()
{
    Spot spot;
    spot.call = QStringLiteral("DL1ABC/P");
    spot.dxde = QStringLiteral("W3XYZ");
    spot.source = QStringLiteral("POTA");
    spot.timestamp = someTime;
    spot.megahertz = 14.0251;
    spot.mode = QStringLiteral("CW");
    spot.dxgrid = QStringLiteral("JO62");
    spot.dxlatitude = 52.5;
    spot.dxlongitude = 13.4;
    spot.delatitude = 40.1;
    spot.delongitude = -75.2;
    spot.pota = QStringLiteral("DE-0123");
    spot.comment = QStringLiteral("24 dB 21 WPM CQ");
    spot.service = QStringLiteral("pota");
    return spot;
}

void decodeAndSplit(benchmark::State& state, NodeText text)
{
    const IcuTextConverter converter;
    NoLog log;
    const QByteArray chunk = nodeChunk(text);
    const Stopwatch watch;
    for ([[maybe_unused]] auto iteration : state)
        benchmark::DoNotOptimize(linesOfChunk(decodeClusterLine(chunk.constData(), converter, log)));
    countLines(state, watch.seconds(), static_cast<std::size_t>(chunk.count('\n')),
               static_cast<std::size_t>(chunk.size()));
}
BENCHMARK_CAPTURE(decodeAndSplit, ascii, NodeText::spots);
BENCHMARK_CAPTURE(decodeAndSplit, latin1, NodeText::latin1Spots);

void treatLines(benchmark::State& state, NodeText text)
{
    NoHost host;
    ArmedLine connection;
    NoMainQueue mainQueue;
    NoLog log;
    LineAssembly assembly(host, connection, mainQueue, log);
    const QStringList lines = nodeLines(text);
    const QString node = QStringLiteral("dxc.example.org");
    const Stopwatch watch;
    for ([[maybe_unused]] auto iteration : state)
        assembly.processInputStream(lines, node);
    benchmark::DoNotOptimize(host.spots);
    countLines(state, watch.seconds(), static_cast<std::size_t>(lines.size()), sizeOf(lines));
}
BENCHMARK_CAPTURE(treatLines, spots, NodeText::spots);
BENCHMARK_CAPTURE(treatLines, chatter, NodeText::chatter);

void deliverLine(benchmark::State& state)
{
    OneLogger applications;
    NoLog log;
    LoggerPresence presence(applications, log);
    NoNotificationCenter center;
    NoScriptRunner scripts;
    NoMainQueue mainQueue;
    LineDelivery delivery(presence, center, scripts, log, {[](bool) {}, [](const QString&) {}});
    const QString line = nodeLines(NodeText::spots).constFirst();
    const QString node = QStringLiteral("dxc.example.org");
    const Stopwatch watch;
    for ([[maybe_unused]] auto iteration : state)
        delivery.sendSpotLineToLogwright(line, node);
    countLines(state, watch.seconds(), 1, static_cast<std::size_t>(line.size()));
}
BENCHMARK(deliverLine);

void showSpot(benchmark::State& state)
{
    const Spot spot = parkSpot();
    const auto size = static_cast<std::size_t>(spotConsoleLine(spot).size());
    const Stopwatch watch;
    for ([[maybe_unused]] auto iteration : state)
        benchmark::DoNotOptimize(spotConsoleLine(spot));
    countLines(state, watch.seconds(), 1, size);
}
BENCHMARK(showSpot)->Name("spotConsoleLine");

void describeSpot(benchmark::State& state)
{
    const Spot spot = parkSpot();
    const auto size = static_cast<std::size_t>(spotConsoleLine(spot).size());
    const Stopwatch watch;
    for ([[maybe_unused]] auto iteration : state)
        benchmark::DoNotOptimize(spotUserInfo(spot));
    countLines(state, watch.seconds(), 1, size);
}
BENCHMARK(describeSpot)->Name("spotUserInfo");

void formatLogEntry(benchmark::State& state)
{
    const LogOrigin origin{QByteArrayLiteral("spotwell"), 4711, 4712};
    const QString text = nodeLines(NodeText::spots).constFirst();
    const Stopwatch watch;
    for ([[maybe_unused]] auto iteration : state)
        benchmark::DoNotOptimize(logEntry(text, someTime, origin));
    countLines(state, watch.seconds(), 1, static_cast<std::size_t>(text.size()));
}
BENCHMARK(formatLogEntry)->Name("logEntry");

template <typename Function>
void readTime(benchmark::State& state, Function read, const char* text)
{
    const QString given = QString::fromLatin1(text);
    const Stopwatch watch;
    for ([[maybe_unused]] auto iteration : state)
        benchmark::DoNotOptimize(read(given));
    countLines(state, watch.seconds(), 1, static_cast<std::size_t>(given.size()));
}
BENCHMARK_CAPTURE(readTime, jsonDateAndTime, jsonDateAndTime, "2024-03-19T14:28:07");
BENCHMARK_CAPTURE(readTime, wsprnetDateAndTime, wsprnetDateAndTime, "2024-03-19 14:28");

void writeTime(benchmark::State& state)
{
    const Stopwatch watch;
    for ([[maybe_unused]] auto iteration : state)
        benchmark::DoNotOptimize(spotTime(someTime));
    countLines(state, watch.seconds(), 1, static_cast<std::size_t>(spotTime(someTime).size()));
}
BENCHMARK(writeTime)->Name("spotTime");

} // namespace

} // namespace spotwell::bench
