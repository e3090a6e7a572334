// SPDX-FileCopyrightText: 2026 the spotwell developers
// SPDX-License-Identifier: MIT

// A wall clock that moves only when a test steps it, for the program to be started with. The file named by
// STEPPED_CLOCK says what it says. The monotonic clock goes on as it is, as it does when a real clock is set.
// The program can also be stopped where its event loop waits.

#include "tests/integration/support/SteppedClockPage.h"

#include <csignal>
#include <cstdlib>
#include <ctime>
#include <dlfcn.h>
#include <fcntl.h>
#include <poll.h>
#include <sys/auxv.h>
#include <sys/mman.h>
#include <sys/syscall.h>
#include <sys/time.h>
#include <unistd.h>

namespace
{

constexpr std::int64_t second = 1'000'000'000;

spotwell::SteppedClockPage* openPage()
{
    const char* const path = std::getenv("STEPPED_CLOCK");
    if (path == nullptr)
        return nullptr;
    const int descriptor = ::open(path, O_RDWR | O_CLOEXEC);
    if (descriptor < 0)
        return nullptr;
    void* const page = ::mmap(nullptr, sizeof(spotwell::SteppedClockPage), PROT_READ | PROT_WRITE, MAP_SHARED,
                              descriptor, 0);
    ::close(descriptor);
    return page == MAP_FAILED ? nullptr : static_cast<spotwell::SteppedClockPage*>(page);
}

spotwell::SteppedClockPage* page()
{
    // The clock is read before constructors run, and by several threads.
    static spotwell::SteppedClockPage* const opened = openPage();
    return opened;
}

/// Past everything that a sanitizer puts in between.
long readReal(clockid_t clock, timespec* time)
{
    return ::syscall(SYS_clock_gettime, clock, time);
}

void noteReturn(spotwell::SteppedClockPage& shared)
{
    // Only the main thread comes here.
    static std::int64_t last = 0;
    timespec now{};
    readReal(CLOCK_MONOTONIC, &now);
    const std::int64_t nanoseconds = now.tv_sec * second + now.tv_nsec;
    if (nanoseconds - last >= second / 2)
        ++shared.returns;
    last = nanoseconds;
}

int read(clockid_t clock, timespec* time)
{
    if (readReal(clock, time) != 0)
        return -1;
    spotwell::SteppedClockPage* const shared = page();
    if (shared == nullptr || (clock != CLOCK_REALTIME && clock != CLOCK_REALTIME_COARSE))
        return 0;
    const std::int64_t nanoseconds = shared->nanoseconds;
    time->tv_sec = nanoseconds / second;
    time->tv_nsec = nanoseconds % second;
    if (::getpid() == ::gettid())
        noteReturn(*shared);
    return 0;
}

/// Whether a call comes from the program's own code and not from its event loop, which is the toolkit's.
bool isFromTheProgram(const void* caller)
{
    Dl_info library{};
    Dl_info program{};
    return ::dladdr(caller, &library) != 0 &&
           ::dladdr(reinterpret_cast<const void*>(::getauxval(AT_ENTRY)), &program) != 0 &&
           library.dli_fbase == program.dli_fbase;
}

} // namespace

extern "C" int clock_gettime(clockid_t clock, timespec* time) noexcept
{
    return read(clock, time);
}

extern "C" int gettimeofday(timeval* time, void*) noexcept
{
    timespec now{};
    if (read(CLOCK_REALTIME, &now) == 0)
        *time = {now.tv_sec, now.tv_nsec / 1000};
    return 0;
}

extern "C" time_t time(time_t* time) noexcept
{
    timespec now{};
    read(CLOCK_REALTIME, &now);
    if (time != nullptr)
        *time = now.tv_sec;
    return now.tv_sec;
}

extern "C" int timespec_get(timespec* time, int base) noexcept
{
    return base == TIME_UTC && read(CLOCK_REALTIME, time) == 0 ? base : 0;
}

extern "C" int ppoll(pollfd* descriptors, nfds_t count, const timespec* timeout, const sigset_t* signals)
{
    static const auto real = reinterpret_cast<decltype(&::ppoll)>(::dlsym(RTLD_NEXT, "ppoll"));
    // Not where a timer's task waits for the bus: the other timers' would run before what came meanwhile.
    if (::getpid() == ::gettid() && page() != nullptr && page()->stopsAtWait &&
        !isFromTheProgram(__builtin_return_address(0)) && page()->stopsAtWait.exchange(false))
        ::raise(SIGSTOP);
    return real(descriptors, count, timeout, signals);
}
