// SPDX-FileCopyrightText: 2026 the spotwell developers
// SPDX-License-Identifier: MIT

#include "bench/FeedAnswers.h"
#include "bench/Floor.h"
#include "bench/StandIns.h"
#include "feeds/DxSummitFeed.h"
#include "feeds/PotaFeed.h"
#include "feeds/WsprnetFeed.h"

#include <QJsonDocument>
#include <benchmark/benchmark.h>

namespace spotwell::bench
{

namespace
{

/// Takes each spot and does not pause.
class TakingHost final : public FeedHost
{
public:
    void forward(const Spot& spot) override { last_ = spot; }
    bool pause(Seconds) override { return true; }

private:
    Spot last_;
};

/// Makes a task of each spot as the program does, and does not pause.
class PostingHost final : public FeedHost
{
public:
    void forward(const Spot& spot) override
    {
        mainQueue_.async([this, spot] { host_.forward(spot); });
    }
    bool pause(Seconds) override { return true; }

private:
    TakingHost host_;
    NoMainQueue mainQueue_;
};

/// A time on the day after the answers'.
class FixedClock final : public Clock
{
public:
    [[nodiscard]] TimePoint now() const override
    {
        return std::chrono::sys_days{std::chrono::year{2027} / 2 / 3};
    }
};

/// A feed with all that it needs, and what its parser is measured against: the least that reads or finds the
/// same spots.
template <typename Host>
struct Pota {
    static QByteArray answer(int spots) { return potaAnswer(spots); }
    static void bare(const QByteArray& body) { benchmark::DoNotOptimize(QJsonDocument::fromJson(body)); }
    void parse(const QByteArray& body) { feed.parsePotaData(body, true); }

    Host host;
    NoLog log;
    PotaFeed feed{host, log};
};

template <typename Host>
struct DxSummit {
    static QByteArray answer(int spots) { return dxSummitAnswer(spots); }
    static void bare(const QByteArray& body) { benchmark::DoNotOptimize(QJsonDocument::fromJson(body)); }
    void parse(const QByteArray& body) { feed.parseDxSummitData(body, false); }

    Host host;
    NoLog log;
    DxSummitFeed feed{host, log};
};

template <typename Host>
struct Wsprnet {
    static QByteArray answer(int spots) { return wsprnetPage(spots); }
    static void bare(const QByteArray& body)
    {
        constexpr QByteArrayView marker = "<tr>";
        qsizetype rows = 0;
        for (qsizetype at = body.indexOf(marker); at >= 0; at = body.indexOf(marker, at + marker.size()))
            ++rows;
        benchmark::DoNotOptimize(rows);
    }
    void parse(const QByteArray& body) { feed.parseWsprnetData(body); }

    Host host;
    FixedClock clock;
    NoLog log;
    WsprnetFeed feed{host, clock, log};
};

/// Which of an answer's spots the feed knows beforehand.
enum class Known { none, all };

/// Parses an answer of range(0) spots, and reads it barely right after it, in turns, so that both see the
/// same machine. Counters: `ns_per_row`, and `times_bare`, the parser's time by the bare reading's.
template <typename Feed, Known known>
void parseAnswer(benchmark::State& state)
{
    const auto spots = static_cast<int>(state.range(0));
    const QByteArray body = Feed::answer(spots);
    double parsing = 0.0;
    double reading = 0.0;
    for ([[maybe_unused]] auto iteration : state) {
        Feed feed;
        if (known == Known::all)
            feed.parse(body);
        const Stopwatch parserWatch;
        feed.parse(body);
        const double seconds = parserWatch.seconds();
        const Stopwatch bareWatch;
        Feed::bare(body);
        reading += bareWatch.seconds();
        parsing += seconds;
        state.SetIterationTime(seconds);
    }
    state.counters["ns_per_row"] = parsing * 1e9 / static_cast<double>(state.iterations()) / spots;
    state.counters["times_bare"] = parsing / reading;
}

void answersOfNewSpots(benchmark::internal::Benchmark* benchmark)
{
    benchmark->Arg(60)->Arg(1000)->Arg(10000)->UseManualTime();
}

/// An answer of more than 5,000 spots is never known: the feed forgets them before the next one.
void answersOfKnownSpots(benchmark::internal::Benchmark* benchmark)
{
    benchmark->Arg(60)->Arg(1000)->Arg(5000)->UseManualTime();
}

BENCHMARK_TEMPLATE(parseAnswer, Pota<TakingHost>, Known::none)
    ->Name("parsePotaData/new")
    ->Apply(answersOfNewSpots);
BENCHMARK_TEMPLATE(parseAnswer, Pota<PostingHost>, Known::none)
    ->Name("parsePotaData/posted")
    ->Apply(answersOfNewSpots);
BENCHMARK_TEMPLATE(parseAnswer, Pota<TakingHost>, Known::all)
    ->Name("parsePotaData/known")
    ->Apply(answersOfKnownSpots);
BENCHMARK_TEMPLATE(parseAnswer, DxSummit<TakingHost>, Known::none)
    ->Name("parseDxSummitData/new")
    ->Apply(answersOfNewSpots);
BENCHMARK_TEMPLATE(parseAnswer, DxSummit<PostingHost>, Known::none)
    ->Name("parseDxSummitData/posted")
    ->Apply(answersOfNewSpots);
BENCHMARK_TEMPLATE(parseAnswer, DxSummit<TakingHost>, Known::all)
    ->Name("parseDxSummitData/known")
    ->Apply(answersOfKnownSpots);
BENCHMARK_TEMPLATE(parseAnswer, Wsprnet<TakingHost>, Known::none)
    ->Name("parseWsprnetData/new")
    ->Apply(answersOfNewSpots);
BENCHMARK_TEMPLATE(parseAnswer, Wsprnet<PostingHost>, Known::none)
    ->Name("parseWsprnetData/posted")
    ->Apply(answersOfNewSpots);
BENCHMARK_TEMPLATE(parseAnswer, Wsprnet<TakingHost>, Known::all)
    ->Name("parseWsprnetData/known")
    ->Apply(answersOfKnownSpots);

} // namespace

} // namespace spotwell::bench
