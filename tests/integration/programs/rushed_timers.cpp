// SPDX-FileCopyrightText: 2026 the spotwell developers
// SPDX-License-Identifier: MIT

// Timers of the toolkit that fire sooner, and a wall clock that runs faster, for the program to be started
// with: RUSHED_TIMERS="TIMERS WALL" says how many times. What waits for the bus, for a peer or between two
// spots waits as long as ever.

#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <dlfcn.h>
#include <sys/syscall.h>
#include <sys/time.h>
#include <unistd.h>

namespace
{

constexpr std::int64_t second = 1'000'000'000;

/// Past the functions of this file.
std::int64_t realNow(clockid_t clock)
{
    timespec time{};
    ::syscall(SYS_clock_gettime, clock, &time);
    return time.tv_sec * second + time.tv_nsec;
}

struct Rush {
    double timers = 1;
    double wall = 1;
    std::int64_t monotonicStart = realNow(CLOCK_MONOTONIC);
    std::int64_t wallStart = realNow(CLOCK_REALTIME);

    Rush()
    {
        const char* const factors = std::getenv("RUSHED_TIMERS");
        if (factors != nullptr && std::sscanf(factors, "%lf %lf", &timers, &wall) != 2)
            std::abort();
    }
    [[nodiscard]] std::int64_t wallNow() const
    {
        const auto passed = static_cast<double>(realNow(CLOCK_MONOTONIC) - monotonicStart);
        return wallStart + static_cast<std::int64_t>(passed * wall);
    }
    [[nodiscard]] int shortened(int milliseconds) const
    {
        return milliseconds <= 0 ? milliseconds : std::max(1, static_cast<int>(milliseconds / timers));
    }
};

const Rush& rush()
{
    static const Rush the;
    return the;
}

template <typename Function>
Function next(const char* name)
{
    return reinterpret_cast<Function>(::dlsym(RTLD_NEXT, name));
}

} // namespace

extern "C" int clock_gettime(clockid_t clock, timespec* time) noexcept
{
    if (clock != CLOCK_REALTIME && clock != CLOCK_REALTIME_COARSE)
        return static_cast<int>(::syscall(SYS_clock_gettime, clock, time));
    const std::int64_t now = rush().wallNow();
    *time = {now / second, now % second};
    return 0;
}

extern "C" int gettimeofday(timeval* time, void*) noexcept
{
    const std::int64_t now = rush().wallNow();
    *time = {now / second, now % second / 1000};
    return 0;
}

extern "C" time_t time(time_t* time) noexcept
{
    const time_t now = rush().wallNow() / second;
    if (time != nullptr)
        *time = now;
    return now;
}

// QTimer::start(int) and QTimer::singleShotImpl(int, Qt::TimerType, const QObject*,
// QtPrivate::QSlotObjectBase*).

extern "C" void _ZN6QTimer5startEi(void* timer, int milliseconds)
{
    static const auto real = next<void (*)(void*, int)>("_ZN6QTimer5startEi");
    real(timer, rush().shortened(milliseconds));
}

extern "C" void _ZN6QTimer14singleShotImplEiN2Qt9TimerTypeEPK7QObjectPN9QtPrivate15QSlotObjectBaseE(
    int milliseconds, int type, const void* receiver, void* slot)
{
    static const auto real = next<void (*)(int, int, const void*, void*)>(
        "_ZN6QTimer14singleShotImplEiN2Qt9TimerTypeEPK7QObjectPN9QtPrivate15QSlotObjectBaseE");
    real(rush().shortened(milliseconds), type, receiver, slot);
}
