// SPDX-FileCopyrightText: 2026 the spotwell developers
// SPDX-License-Identifier: MIT

#include "platform/linux/TerminationSignals.h"

#include <array>
#include <atomic>
#include <cerrno>
#include <csignal>
#include <fcntl.h>
#include <unistd.h>
#include <utility>

namespace spotwell
{

namespace
{

constexpr std::array<int, 3> terminationSignals{SIGTERM, SIGINT, SIGHUP};

// A signal handler reaches nothing but the process itself: the two ends of its pipe.
std::atomic<int> writeEnd = -1;
int readEnd = -1;
std::atomic<bool> isPending = false;

void handleSignal(int)
{
    const int error = errno;
    const char byte = 0;
    if (!isPending.exchange(true))
        (void)::alarm(TerminationSignals::bound);
    (void)!::write(writeEnd.load(), &byte, 1);
    errno = error;
}

// For what comes while the process ends already. Not SIG_IGN, which would look like the parent's.
void handleLate(int) {}

void setHandler(void (*handler)(int))
{
    struct sigaction action = {};
    action.sa_handler = handler;
    action.sa_flags = SA_RESTART;
    sigemptyset(&action.sa_mask);
    for (const int signal : terminationSignals) {
        struct sigaction before = {};
        // A signal that the parent has switched off (nohup) stays off.
        if (::sigaction(signal, nullptr, &before) == 0 && before.sa_handler != SIG_IGN)
            ::sigaction(signal, &action, nullptr);
    }
}

} // namespace

TerminationSignals::TerminationSignals(std::function<void()> requested) : requested_(std::move(requested))
{
    std::array<int, 2> ends{};
    if (::pipe2(ends.data(), O_CLOEXEC | O_NONBLOCK) != 0)
        return;
    readEnd = ends[0];
    writeEnd = ends[1];
    notifier_ = std::make_unique<QSocketNotifier>(readEnd, QSocketNotifier::Read);
    QObject::connect(notifier_.get(), &QSocketNotifier::activated, notifier_.get(), [this] {
        char byte = 0;
        while (::read(readEnd, &byte, 1) == 1) {
        }
        requested_();
    });
    isPending = false;
    (void)std::signal(SIGALRM, SIG_DFL);
    setHandler(handleSignal);
}

void TerminationSignals::liftBound()
{
    isPending = true; // no later one sets it again
    (void)::alarm(0);
}

TerminationSignals::~TerminationSignals()
{
    if (!notifier_)
        return;
    setHandler(handleLate);
    notifier_.reset();
    ::close(writeEnd.exchange(-1));
    ::close(std::exchange(readEnd, -1));
}

} // namespace spotwell
