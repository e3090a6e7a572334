// SPDX-FileCopyrightText: 2026 the spotwell developers
// SPDX-License-Identifier: MIT

#include "bench/compare/Session.h"

#include "bench/compare/MemoryText.h"

#include <QThread>

#include <stdexcept>
#include <utility>

namespace spotwell::bench
{

namespace
{

using namespace std::chrono_literals;
using SteadyClock = std::chrono::steady_clock;

constexpr auto patience = 120s;
// So much of the screen is no splash screen: the largest has 512 x 512.
constexpr qint64 pixelsOfWindow = 300'000;

// The columns of a stamped spot line (docs/scenarios.md).
constexpr std::size_t stampColumn = 48;
constexpr std::size_t stampDigits = 16;

} // namespace

Session::Session(const Contender& contender) : contender_(contender) {}

Session::~Session()
{
    end(process_);
}

double Session::start()
{
    desktop_.startBus();
    desktop_.startDisplay();
    if (contender_.prepare)
        contender_.prepare(desktop_, node_.port());
    if (contender_.delivers) {
        logger_ = std::make_unique<LineReceiver>(desktop_.busAddress(), [this](std::string_view line) {
            const auto now = std::chrono::duration_cast<std::chrono::microseconds>(
                std::chrono::system_clock::now().time_since_epoch());
            if (line.size() < stampColumn + stampDigits)
                return;
            const auto stamp = std::stoll(std::string(line.substr(stampColumn, stampDigits)));
            const std::lock_guard lock(mutex_);
            latencies_.push_back(static_cast<double>(now.count() - stamp));
        });
        logger_->start();
    }
    process_.setProcessEnvironment(environmentOn(desktop_));
    process_.setStandardOutputFile(QProcess::nullDevice());
    process_.setStandardErrorFile(QProcess::nullDevice());
    QStringList command = contender_.command(node_.port());
    const QString program = command.takeFirst();
    const auto begin = SteadyClock::now();
    process_.start(program, command);
    if (!process_.waitForStarted())
        throw std::runtime_error("cannot start " + program.toStdString());
    while (desktop_.litPixels() < pixelsOfWindow) {
        if (SteadyClock::now() > begin + patience)
            throw std::runtime_error("no window of " + program.toStdString());
        QThread::usleep(500);
    }
    return std::chrono::duration<double>(SteadyClock::now() - begin).count();
}

void Session::logIn()
{
    const Hands hands(environmentOn(desktop_));
    if (contender_.connect)
        contender_.connect(hands);
    if (contender_.connects) {
        node_.welcome(patience);
        if (contender_.giveCallsign)
            contender_.giveCallsign(hands);
        node_.logIn(patience);
    }
    hands.place(hands.window(contender_.title), windowWidth, windowHeight);
    hands.letGo();
}

bool Session::waitForRest(std::chrono::milliseconds limit) const
{
    constexpr auto look = 100ms;
    constexpr double restingSeconds = 0.01;
    const auto deadline = SteadyClock::now() + limit;
    while (SteadyClock::now() < deadline) {
        const double before = cpuSeconds();
        QThread::msleep(static_cast<unsigned long>(look.count()));
        if (cpuSeconds() - before < restingSeconds && (!contender_.connects || node_.unread() == 0))
            return true;
    }
    return false;
}

double Session::cpuSeconds() const
{
    double seconds = 0;
    for (const qint64 process : familyOf(process_.processId()))
        seconds += cpuSecondsOf(process);
    return seconds;
}

SessionMemory Session::memory() const
{
    SessionMemory sum;
    for (const qint64 process : familyOf(process_.processId())) {
        const MemoryFigures figures = memoryOf(process);
        sum.proportional += figures.proportional;
        sum.unshared += figures.unshared;
        sum.resident += figures.resident;
    }
    return sum;
}

bool Session::hasInMemory(std::string_view text) const
{
    return bench::hasInMemory(process_.processId(), text);
}

SessionSwitches Session::switches() const
{
    SessionSwitches all;
    for (const qint64 process : familyOf(process_.processId())) {
        all.wakeUps.merge(wakeUpsOf(process));
        all.preemptions.merge(preemptionsOf(process));
    }
    return all;
}

std::uint64_t Session::delivered() const
{
    return logger_ ? logger_->received() : 0;
}

std::vector<double> Session::takeLatencies()
{
    const std::lock_guard lock(mutex_);
    return std::exchange(latencies_, {});
}

} // namespace spotwell::bench
