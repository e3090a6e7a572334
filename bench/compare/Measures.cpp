// SPDX-FileCopyrightText: 2026 the spotwell developers
// SPDX-License-Identifier: MIT

#include "bench/compare/Measures.h"

#include "bench/Report.h"
#include "bench/compare/Search.h"
#include "bench/compare/Session.h"

#include <QDir>
#include <QThread>

#include <cstdio>
#include <memory>
#include <stdexcept>
#include <string>

namespace spotwell::bench
{

namespace
{

using namespace std::chrono_literals;

constexpr double millisecondsPerSecond = 1e3;
constexpr double microsecondsPerMillisecond = 1e3;
constexpr double secondsPerMinute = 60;
constexpr int firstLines = 400; // fill lists and consoles
constexpr auto restLimit = 60s;
constexpr int mostSecondsBehind = 60; // where it is not the rate that is measured

double mib(qint64 kib)
{
    return static_cast<double>(kib) / 1024;
}

void settle(const Session& session)
{
    QThread::sleep(2);
    if (!session.waitForRest(restLimit))
        throw std::runtime_error("it does not come to rest");
}

/// Sends the lines; throws when the program cannot cope. Gives how often the screen was seen to have changed,
/// of the looks at it.
double sendAll(Session& session, int rate, int count)
{
    int looks = 0;
    int changes = 0;
    quint64 last = 0;
    const Sending sending = session.node().send(rate, count, mostSecondsBehind, [&] {
        const quint64 sum = session.desktop().screenSum();
        ++looks;
        changes += sum != last ? 1 : 0;
        last = sum;
    });
    if (sending.sent != count || sending.clientLeft)
        throw std::runtime_error("it does not take the lines");
    return static_cast<double>(changes) / looks;
}

/// Throws when the window cannot have shown the lines.
void demandShown(const Session& session, double changes, int lines)
{
    constexpr double leastChanges = 0.2; // twice a second
    if (changes < leastChanges)
        throw std::runtime_error("the screen does not follow the lines");
    if (!session.hasInMemory(QStringLiteral("#%1").arg(lines, 7, 10, QLatin1Char('0')).toStdString()))
        throw std::runtime_error("it does not know the last line");
}

} // namespace

void measureStart(const Contender& contender, const Extent& extent, Figures& figures)
{
    for (int i = 0; i < extent.starts; ++i) {
        Session session(contender);
        figures[Figure::startMilliseconds].push_back(session.start() * millisecondsPerSecond);
    }
}

void measureLines(const Contender& contender, const Extent& extent, Figures& figures)
{
    Session session(contender);
    (void)session.start();
    session.logIn();
    settle(session);
    const SessionMemory memory = session.memory();
    figures[Figure::proportionalMib].push_back(mib(memory.proportional));
    figures[Figure::unsharedMib].push_back(mib(memory.unshared));
    figures[Figure::residentMib].push_back(mib(memory.resident));
    if (!contender.connects)
        return;

    (void)sendAll(session, extent.rate, firstLines);
    settle(session);
    (void)session.takeLatencies();
    const double cpu = session.cpuSeconds();
    const double display = session.displayCpuSeconds();
    const double bus = session.busCpuSeconds();
    const int lines = extent.rate * extent.lineSeconds;
    const double changes = sendAll(session, extent.rate, lines);
    settle(session);
    const double thousands = lines / 1e3;
    const auto add = [&](Figure figure, double seconds) {
        figures[figure].push_back(seconds * millisecondsPerSecond / thousands);
    };
    add(Figure::cpuMilliseconds, session.cpuSeconds() - cpu);
    add(Figure::displayMilliseconds, session.displayCpuSeconds() - display);
    const SessionMemory after = session.memory();
    figures[Figure::proportionalAfterMib].push_back(mib(after.proportional));
    figures[Figure::residentAfterMib].push_back(mib(after.resident));
    demandShown(session, changes, firstLines + lines);
    if (contender.delivers) {
        add(Figure::busMilliseconds, session.busCpuSeconds() - bus);
        const std::vector<double> latencies = session.takeLatencies();
        if (latencies.size() != static_cast<std::size_t>(lines))
            throw std::runtime_error("the logger misses lines");
        const auto latency = [&](Figure figure, double share) {
            figures[figure].push_back(quantile(latencies, share) / microsecondsPerMillisecond);
        };
        latency(Figure::latencyMedian, 0.5);
        latency(Figure::latency99th, 0.99);
        latency(Figure::latencyLongest, 1);
    }
    if (!extent.pictures.isEmpty())
        session.desktop().keepPicture(
            QDir(extent.pictures).filePath(contender.name + QStringLiteral(".xwd")));
}

std::unique_ptr<Session> makeIdleSession(const Contender& contender, const Extent& extent)
{
    auto session = std::make_unique<Session>(contender);
    (void)session->start();
    session->logIn();
    if (contender.connects)
        (void)sendAll(*session, extent.rate, firstLines);
    settle(*session);
    return session;
}

void measureIdle(const std::vector<std::unique_ptr<Session>>& sessions, const Extent& extent,
                 std::vector<Figures>& figures)
{
    std::vector<double> cpu;
    std::vector<SessionSwitches> switches;
    for (const auto& session : sessions) {
        cpu.push_back(session ? session->cpuSeconds() : 0);
        switches.push_back(session ? session->switches() : SessionSwitches());
    }
    QThread::sleep(static_cast<unsigned long>(extent.idleSeconds));
    const double minutes = extent.idleSeconds / secondsPerMinute;
    for (std::size_t i = 0; i < sessions.size(); ++i) {
        if (!sessions[i])
            continue;
        const double used = sessions[i]->cpuSeconds() - cpu[i];
        const SessionSwitches now = sessions[i]->switches();
        const auto aMinute = [minutes](qint64 count) { return static_cast<double>(count) / minutes; };
        figures[i][Figure::idleMilliseconds].push_back(used * millisecondsPerSecond / minutes);
        figures[i][Figure::idleWakeUps].push_back(aMinute(now.wakeUps - switches[i].wakeUps));
        figures[i][Figure::idlePreemptions].push_back(aMinute(now.preemptions - switches[i].preemptions));
    }
}

QString measureHighestRate(const Contender& contender, const Extent& extent, Figures& figures)
{
    QString failure;
    const auto holds = [&](int rate) {
        Session session(contender);
        (void)session.start();
        session.logIn();
        settle(session);
        const int lines = rate * extent.searchSeconds;
        const Sending sending = session.node().send(rate, lines, 1, [] {});
        QString problem;
        if (sending.clientLeft)
            problem = QStringLiteral("it ends the connection");
        else if (sending.fellBehind)
            problem = QStringLiteral("more than a second's lines are unread");
        else if (!session.waitForRest(1s))
            problem = QStringLiteral("it is not done a second later");
        else if (contender.delivers && session.delivered() != static_cast<std::uint64_t>(lines))
            problem = QStringLiteral("the logger misses lines");
        std::fprintf(stderr, "  %d lines a second: %s\n", rate,
                     problem.isEmpty() ? "held" : qUtf8Printable(problem));
        if (!problem.isEmpty())
            failure = problem;
        return problem.isEmpty();
    };
    figures[Figure::highestRate].push_back(
        greatestThatHolds({extent.rate, extent.highestRate, extent.searchExactness}, holds));
    return failure;
}

} // namespace spotwell::bench
